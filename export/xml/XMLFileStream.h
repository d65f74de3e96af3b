#pragma once

// Writes an XML document piece by piece: layout, escaping, attributes.

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files/ByteStreams.h"
#include "platform/system/FileTime.h"

namespace Vantrel::XML {

// Bytes that grow in place, without the zeros that a string writes before it is written to.
class TXMLBuffer {
 public:
  // Room for so many bytes behind the last one; what is used of it is told to Advance.
  char* Reserve(size_t pBytes) {
    if (fCapacity - fSize < pBytes) Grow(pBytes);
    return fBytes.get() + fSize;
  }
  void Advance(const char* pEnd) { fSize = static_cast<size_t>(pEnd - fBytes.get()); }
  void Append(std::string_view pBytes) { Advance(std::copy(pBytes.begin(), pBytes.end(), Reserve(pBytes.size()))); }
  void Clear() { fSize = 0; }
  size_t Size() const { return fSize; }
  std::string_view View() const { return {fBytes.get(), fSize}; }

  // The text as UTF-8 with the characters escaped that have a meaning in XML, or that a parser would not give back: CR,
  // and in attributes also tab, line feed and the double quote. What XML cannot hold becomes U+FFFD; returns false when
  // there was such a unit.
  bool AppendEscaped(std::u16string_view pText, bool pInAttribute);
  // Well-formed UTF-8 without control characters other than these.
  void AppendEscaped(std::string_view pText, bool pInAttribute);
  template <std::integral TNumber>
  void AppendNumber(TNumber pNumber) {
    char* room = Reserve(24);
    Advance(std::to_chars(room, room + 24, pNumber).ptr);
  }

 private:
  void Grow(size_t pBytes);

  std::unique_ptr<char[]> fBytes;
  size_t fSize = 0;
  size_t fCapacity = 0;
};

// The attributes of an element, in the form in which they are written. Made once and cleared for each element, so that
// nothing is allocated. Names are ASCII and used as they are.
class TXMLAttributes {
 public:
  void Clear() { fText.Clear(); }
  bool IsEmpty() const { return fText.Size() == 0; }
  // A value that XML cannot hold as it is gets a second attribute beside it, see TXMLUtils::EscapeUnits.
  void Add(std::string_view pName, std::u16string_view pValue);
  // Well-formed UTF-8 without control characters other than tab, line feed and CR.
  void Add(std::string_view pName, std::string_view pValue);
  template <std::integral TNumber>
  void Add(std::string_view pName, TNumber pValue) {
    static_assert(!std::same_as<TNumber, bool>, "booleans have a form of their own");
    Begin(pName);
    fText.AppendNumber(pValue);
    fText.Append("\"");
  }
  // "-1" or "0".
  void AddBoolean(std::string_view pName, bool pValue) { Add(pName, pValue ? -1 : 0); }

  std::string_view Text() const { return fText.View(); }

 private:
  void Begin(std::string_view pName);

  TXMLBuffer fText;
};

// Writes an XML document, UTF-8 with CRLF line breaks, piece by piece to a sink. Each element begins a line, without
// indentation, unless text has been written to its parent: so nothing ever gets white space beside its text, as long as
// an element's text comes before its child elements. An element without content is closed in the short form.
//
// A call that would make the document ill-formed fails with EInvalidOperation or EInvalidArgumentValue; names are taken
// as they are. What the sink throws comes through. The sink gets large pieces, the last one by EndDocument; it belongs
// to the caller and must live as long. For one thread at a time.
class TXMLFileStream {
 public:
  explicit TXMLFileStream(IByteSink& pSink) : fSink(pSink) {}
  // Writes what lies in an element that another stream has begun, for somebody to put there: no document is started or
  // ended, and Flush comes last. The element has other elements in it already, but no text.
  static TXMLFileStream Inside(IByteSink& pSink);

  // The declaration. Other encodings than UTF-8 are refused.
  void StartDocument(std::string_view pVersion = "1.0", std::string_view pEncoding = "UTF-8",
                     std::string_view pStandalone = "no");
  // All elements must be closed.
  void EndDocument();
  // Hands to the sink what it does not have yet. The innermost element must have content.
  void Flush();

  void StartElement(std::string_view pName, const TXMLAttributes& pAttributes = {});
  // Closes the innermost element, whose name it must be.
  void EndElement(std::string_view pName);
  // An element with a text. One that XML cannot hold as it is comes with a second form as an attribute, see
  // TXMLUtils::EscapeUnits.
  void AddElement(std::string_view pName, std::u16string_view pText, const TXMLAttributes& pAttributes = {});
  // The text is well-formed UTF-8 without control characters other than tab, line feed and CR.
  void AddElement(std::string_view pName, std::string_view pText, const TXMLAttributes& pAttributes = {});
  template <std::integral TNumber>
  void AddElement(std::string_view pName, TNumber pNumber, const TXMLAttributes& pAttributes = {}) {
    static_assert(!std::same_as<TNumber, bool>, "booleans have a form of their own");
    BeginTag(pName, pAttributes.Text());
    CloseStartTag();
    fBuffer.AppendNumber(pNumber);
    EndTag(pName);
  }
  // An empty element.
  void AddElement(std::string_view pName, const TXMLAttributes& pAttributes);
  // "-1" or "0".
  void AddBooleanElement(std::string_view pName, bool pValue, const TXMLAttributes& pAttributes = {}) {
    AddElement(pName, pValue ? -1 : 0, pAttributes);
  }
  // Text of the innermost element. What XML cannot hold becomes U+FFFD.
  void Characters(std::u16string_view pText);
  // The data must not hold "?>".
  void ProcessingInstruction(std::string_view pTarget, std::string_view pData);
  // An empty element with the halves of the time as attributes Low and High.
  void WriteFileTimeToXMLFile(std::string_view pName, TKivFileTime pTime);

 private:
  struct TOpenElement {
    size_t fNameStart;  // in fNames
    bool fHasText;
  };

  void BeginTag(std::string_view pName, std::string_view pAttributes);
  void CloseStartTag() {
    if (fTagOpen) fBuffer.Append(">");
    fTagOpen = false;
  }
  void EndTag(std::string_view pName);
  void FlushWhenFull();

  IByteSink& fSink;
  TXMLBuffer fBuffer;
  std::string fNames;  // of the open elements, one behind the other
  std::vector<TOpenElement> fOpen;
  bool fTagOpen = false;   // the ">" of the last start tag is still to come
  bool fAnything = false;  // the next line is not the first one
  bool fRootWritten = false;
  TXMLAttributes fAttributes;
};

}  // namespace Vantrel::XML

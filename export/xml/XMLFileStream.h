#pragma once

// Writes an XML document piece by piece, with layout, escapes and attributes.

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

// A buffer of bytes that grows in place. Unlike a string, it does not fill new bytes with zeros first.
class TXMLBuffer {
 public:
  // Returns room for pBytes after the last byte. The caller passes the number of bytes used to Advance.
  char* Reserve(size_t pBytes) {
    if (fCapacity - fSize < pBytes) Grow(pBytes);
    return fBytes.get() + fSize;
  }
  void Advance(const char* pEnd) { fSize = static_cast<size_t>(pEnd - fBytes.get()); }
  void Append(std::string_view pBytes) { Advance(std::copy(pBytes.begin(), pBytes.end(), Reserve(pBytes.size()))); }
  void Clear() { fSize = 0; }
  size_t Size() const { return fSize; }
  std::string_view View() const { return {fBytes.get(), fSize}; }

  // Appends the text as UTF-8. Characters that have a meaning in XML are escaped. So are those that a parser would not
  // return unchanged: CR and, in attributes, also tab, line feed and the double quote. A unit that XML cannot hold
  // becomes U+FFFD; the call then returns false.
  bool AppendEscaped(std::u16string_view pText, bool pInAttribute);
  // pText must be well-formed UTF-8 without control characters, except tab, line feed and CR.
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

// The attributes of an element, in the form in which they are written. One object is cleared and reused for each
// element, so nothing is allocated. Names are ASCII and written unchanged.
class TXMLAttributes {
 public:
  void Clear() { fText.Clear(); }
  bool IsEmpty() const { return fText.Size() == 0; }
  // A value that XML cannot hold unchanged gets a second attribute. See TXMLUtils::EscapeUnits.
  void Add(std::string_view pName, std::u16string_view pValue);
  // pValue must be well-formed UTF-8 without control characters, except tab, line feed and CR.
  void Add(std::string_view pName, std::string_view pValue);
  template <std::integral TNumber>
  void Add(std::string_view pName, TNumber pValue) {
    static_assert(!std::same_as<TNumber, bool>, "booleans have a form of their own");
    Begin(pName);
    fText.AppendNumber(pValue);
    fText.Append("\"");
  }
  // Writes "-1" or "0".
  void AddBoolean(std::string_view pName, bool pValue) { Add(pName, pValue ? -1 : 0); }

  std::string_view Text() const { return fText.View(); }

 private:
  void Begin(std::string_view pName);

  TXMLBuffer fText;
};

// Writes an XML document to a sink, piece by piece, in UTF-8 with CRLF line breaks. Each element begins a line, without
// indentation, unless its parent has text. So texts never get white space around them, if an element's text is written
// before its child elements. An empty element is written in the short form.
//
// A call that would make the document ill-formed throws EInvalidOperation or EInvalidArgumentValue. Names are not
// checked. Exceptions of the sink are passed on. The sink gets large pieces, the last one from EndDocument. The caller
// owns the sink and keeps it alive. One thread at a time.
class TXMLFileStream {
 public:
  explicit TXMLFileStream(IByteSink& pSink) : fSink(pSink) {}
  // Makes a stream that writes contents for an element that another stream has begun. The caller inserts the result
  // there. The stream starts and ends no document, and Flush must come last. The element must already have child
  // elements and no text.
  static TXMLFileStream Inside(IByteSink& pSink);

  // Writes the declaration. Only UTF-8 is accepted as encoding.
  void StartDocument(std::string_view pVersion = "1.0", std::string_view pEncoding = "UTF-8",
                     std::string_view pStandalone = "no");
  // Ends the document. All elements must be closed.
  void EndDocument();
  // Passes all remaining bytes to the sink. The innermost element must have content.
  void Flush();

  void StartElement(std::string_view pName, const TXMLAttributes& pAttributes = {});
  // Closes the innermost element, which must have this name.
  void EndElement(std::string_view pName);
  // Writes an element with a text. If XML cannot hold the text, an attribute holds its exact form. See
  // TXMLUtils::EscapeUnits.
  void AddElement(std::string_view pName, std::u16string_view pText, const TXMLAttributes& pAttributes = {});
  // The text must be well-formed UTF-8 without control characters, except tab, line feed and CR.
  void AddElement(std::string_view pName, std::string_view pText, const TXMLAttributes& pAttributes = {});
  template <std::integral TNumber>
  void AddElement(std::string_view pName, TNumber pNumber, const TXMLAttributes& pAttributes = {}) {
    static_assert(!std::same_as<TNumber, bool>, "booleans have a form of their own");
    BeginTag(pName, pAttributes.Text());
    CloseStartTag();
    fBuffer.AppendNumber(pNumber);
    EndTag(pName);
  }
  // Writes an empty element.
  void AddElement(std::string_view pName, const TXMLAttributes& pAttributes);
  // Writes "-1" or "0".
  void AddBooleanElement(std::string_view pName, bool pValue, const TXMLAttributes& pAttributes = {}) {
    AddElement(pName, pValue ? -1 : 0, pAttributes);
  }
  // Writes text into the innermost element. Units that XML cannot hold become U+FFFD.
  void Characters(std::u16string_view pText);
  // pData must not contain "?>".
  void ProcessingInstruction(std::string_view pTarget, std::string_view pData);
  // Writes an empty element with the halves of the time in the attributes Low and High.
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
  std::string fNames;  // names of the open elements, one after the other
  std::vector<TOpenElement> fOpen;
  bool fTagOpen = false;   // the ">" of the last start tag is not written yet
  bool fAnything = false;  // the next line is not the first one
  bool fRootWritten = false;
  TXMLAttributes fAttributes;
};

}  // namespace Vantrel::XML

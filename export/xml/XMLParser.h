#pragma once

// The events of an XML document, and the limits to what it may cost.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "export/xml/XMLUtils.h"
#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel::XML {

// What is wrong with a document, and where. The text is "Line 3, column 7: " and the message.
class EXMLError : public EException {
 public:
  EXMLError(std::string_view pMessage, uint64_t pLine, uint64_t pColumn);
  const std::string& Message() const { return fMessage; }
  // Both count from 1.
  uint64_t Line() const { return fLine; }
  uint64_t Column() const { return fColumn; }

 private:
  std::string fMessage;
  uint64_t fLine;
  uint64_t fColumn;
};

// Takes the events of a document. The texts are good during the call. What it throws ends the parsing and comes
// through.
class IXMLHandler {
 public:
  virtual ~IXMLHandler() = default;
  virtual void StartElement(std::u16string_view pName, XML::TXMLAttributeSpan pAttributes) = 0;
  virtual void EndElement(std::u16string_view pName) = 0;
  // Everything between two tags in one piece, white space included; never empty.
  virtual void Characters(std::u16string_view pText) = 0;
};

// Is told how many bytes have been read, before each piece of the source; false cancels.
using TXMLProgress = std::function<bool(uint64_t pBytesRead)>;

// Nothing in a document may make the parser take more memory or time than its size is worth: the limits are these, and
// all parsers of the process together get kMostParserMemory.
constexpr size_t kDeepestNesting = 100'000;
constexpr size_t kLongestToken = 64 << 20;  // bytes of a tag, and of the text between two tags
constexpr size_t kMostParserMemory = 512 << 20;

// Reads a document, UTF-8 or UTF-16, from a source to its end. Nothing beyond the source is ever read. Refuses document
// type declarations, and with them all entities but the five that XML knows by itself.
//
// A parser is for one document and one thread.
class TXMLParser {
 public:
  explicit TXMLParser(IXMLHandler& pHandler) : fHandler(pHandler) {}

  // False when it was cancelled. Throws EXMLError for what is wrong in the document, and lets through what the source
  // or the handler throw.
  bool Parse(IByteSource& pSource, const TXMLProgress& pProgress = {});

  // For the handler: an EXMLError with the place of the current event.
  EXMLError ErrorHere(std::string_view pMessage) const;

 private:
  class TRun;
  IXMLHandler& fHandler;
  TRun* fRun = nullptr;  // while Parse is running
};

}  // namespace Vantrel::XML

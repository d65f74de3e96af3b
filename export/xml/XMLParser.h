#pragma once

// Parses an XML document into events, with limits on memory and size.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "export/xml/XMLUtils.h"
#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel::XML {

// Reports what is wrong with a document, and where. The text is "Line 3, column 7: " and the message.
class EXMLError : public EException {
 public:
  EXMLError(std::string_view pMessage, uint64_t pLine, uint64_t pColumn);
  const std::string& Message() const { return fMessage; }
  // Line and column count from 1.
  uint64_t Line() const { return fLine; }
  uint64_t Column() const { return fColumn; }

 private:
  std::string fMessage;
  uint64_t fLine;
  uint64_t fColumn;
};

// Receives the events of a document. The texts are valid during the call. An exception ends the parsing and is passed
// on.
class IXMLHandler {
 public:
  virtual ~IXMLHandler() = default;
  virtual void StartElement(std::u16string_view pName, XML::TXMLAttributeSpan pAttributes) = 0;
  virtual void EndElement(std::u16string_view pName) = 0;
  // The whole text between two tags in one call, white space included. Never empty.
  virtual void Characters(std::u16string_view pText) = 0;
};

// Called before each piece of the source, with the number of bytes read. A result of false cancels.
using TXMLProgress = std::function<bool(uint64_t pBytesRead)>;

// These limits keep a document from costing more memory or time than its size justifies. All parsers of the process
// share kMostParserMemory.
constexpr size_t kDeepestNesting = 100'000;
constexpr size_t kLongestToken = 64 << 20;  // bytes of a tag, or of the text between two tags
constexpr size_t kMostParserMemory = 512 << 20;

// Reads a document in UTF-8 or UTF-16 from a source to its end. It never reads anything but the source. Document type
// declarations are refused, and so are all entities except XML's own five.
//
// A parser serves one document and one thread.
class TXMLParser {
 public:
  explicit TXMLParser(IXMLHandler& pHandler) : fHandler(pHandler) {}

  // False when cancelled. EXMLError when the document is wrong. Exceptions of the source and the handler are passed on.
  bool Parse(IByteSource& pSource, const TXMLProgress& pProgress = {});

  // For the handler: makes an EXMLError with the position of the current event.
  EXMLError ErrorHere(std::string_view pMessage) const;

 private:
  class TRun;
  IXMLHandler& fHandler;
  TRun* fRun = nullptr;  // while Parse is running
};

}  // namespace Vantrel::XML

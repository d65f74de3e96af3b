#include "export/xml/XMLParser.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <vector>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::XML {

// Expat parses on every platform. Windows has its own parser, but it would give other messages and accept other files.

using XML::TXMLAttribute;

namespace {

static_assert(sizeof(XML_Char) == 1, "Expat has to be the one that speaks UTF-8");

constexpr size_t kPieceOfSource = 256 * 1024;

// The memory that Expat uses. Distinct names, nesting and long tags all count here, so one limit bounds them all.
// Expat's allocation functions do not know their parser, so the sum is for the whole process.
std::atomic<size_t> gParserMemory{0};
constexpr size_t kBlockHead = alignof(std::max_align_t);

bool TakeMemory(size_t pBytes) {
  if (gParserMemory.fetch_add(pBytes, std::memory_order_relaxed) + pBytes <= kMostParserMemory) return true;
  gParserMemory.fetch_sub(pBytes, std::memory_order_relaxed);
  return false;
}

void* BlockWithSize(void* pHead, size_t pSize) {
  if (pHead == nullptr) return nullptr;
  std::memcpy(pHead, &pSize, sizeof pSize);
  return static_cast<char*>(pHead) + kBlockHead;
}

size_t BlockSize(const void* pBlock) {
  size_t size;
  std::memcpy(&size, static_cast<const char*>(pBlock) - kBlockHead, sizeof size);
  return size;
}

extern "C" {

void* CountedAllocate(size_t pSize) {
  if (pSize > kMostParserMemory || !TakeMemory(pSize)) return nullptr;
  void* block = BlockWithSize(std::malloc(pSize + kBlockHead), pSize);
  if (block == nullptr) gParserMemory.fetch_sub(pSize, std::memory_order_relaxed);
  return block;
}

void CountedFree(void* pBlock) {
  if (pBlock == nullptr) return;
  gParserMemory.fetch_sub(BlockSize(pBlock), std::memory_order_relaxed);
  std::free(static_cast<char*>(pBlock) - kBlockHead);
}

void* CountedReallocate(void* pBlock, size_t pSize) {
  if (pBlock == nullptr) return CountedAllocate(pSize);
  const size_t earlier = BlockSize(pBlock);
  if (pSize > kMostParserMemory || !TakeMemory(pSize)) return nullptr;
  void* block = BlockWithSize(std::realloc(static_cast<char*>(pBlock) - kBlockHead, pSize + kBlockHead), pSize);
  gParserMemory.fetch_sub(block == nullptr ? pSize : earlier, std::memory_order_relaxed);
  return block;
}

}  // extern "C"

constexpr XML_Memory_Handling_Suite kCountedMemory = {CountedAllocate, CountedReallocate, CountedFree};

// Widens eight bytes if all of them are ASCII.
bool WidenEightAscii(const char* pSource, char16_t* pTarget) {
  uint64_t word;
  std::memcpy(&word, pSource, sizeof word);
  if ((word & 0x8080808080808080u) != 0) return false;
  for (size_t i = 0; i < sizeof word; ++i) pTarget[i] = static_cast<unsigned char>(pSource[i]);
  return true;
}

// Widens UTF-8 that Expat has checked. pTarget needs as many units as there are bytes. Returns the end of the result.
char16_t* Widen(std::string_view pText, char16_t* pTarget) {
  size_t at = 0;
  while (at < pText.size()) {
    while (at + 8 <= pText.size() && WidenEightAscii(pText.data() + at, pTarget)) {
      at += 8;
      pTarget += 8;
    }
    // Goes one by one to the end of the non-ASCII characters, or of the text.
    while (at < pText.size() && (pText[at] & 0x80) == 0) *pTarget++ = static_cast<char16_t>(pText[at++]);
    while (at < pText.size() && (pText[at] & 0x80) != 0) {
      const TDecoded decoded = DecodeUtf8(pText.substr(at));
      if (decoded.fCode < 0x10000) {
        *pTarget++ = static_cast<char16_t>(decoded.fCode);
      } else {
        *pTarget++ = static_cast<char16_t>(0xD7C0 + (decoded.fCode >> 10));
        *pTarget++ = static_cast<char16_t>(0xDC00 + (decoded.fCode & 0x3FF));
      }
      at += std::max<uint32_t>(decoded.fLength, 1);
    }
  }
  return pTarget;
}

// An array of units that grows like a vector, but does not fill new units with zeros first.
class TUnits {
 public:
  char16_t* Reserve(size_t pMore) {
    if (fCapacity - fSize < pMore) {
      const size_t capacity = std::max({fCapacity * 2, fSize + pMore, size_t{1024}});
      std::unique_ptr<char16_t[]> units(new char16_t[capacity]);
      std::copy_n(fUnits.get(), fSize, units.get());
      fUnits = std::move(units);
      fCapacity = capacity;
    }
    return fUnits.get() + fSize;
  }
  std::u16string_view Append(std::string_view pText) {
    char16_t* begin = Reserve(pText.size());
    const auto length = static_cast<size_t>(Widen(pText, begin) - begin);
    fSize += length;
    return {begin, length};
  }
  void Clear() { fSize = 0; }
  std::u16string_view View() const { return {fUnits.get(), fSize}; }

 private:
  std::unique_ptr<char16_t[]> fUnits;
  size_t fSize = 0;
  size_t fCapacity = 0;
};

struct TFreeParser {
  void operator()(XML_Parser pParser) const { XML_ParserFree(pParser); }
};

std::string Megabytes(size_t pBytes) {
  return fmt::format("{} MB", pBytes >> 20);
}

}  // namespace

EXMLError::EXMLError(std::string_view pMessage, uint64_t pLine, uint64_t pColumn)
    : EException(fmt::format("Line {}, column {}: {}", pLine, pColumn, pMessage)),
      fMessage(pMessage),
      fLine(pLine),
      fColumn(pColumn) {}

// One call of Parse. Expat is written in C, so no exception may pass through it. Each is kept until Expat returns.
class TXMLParser::TRun {
 public:
  explicit TRun(IXMLHandler& pHandler);
  bool Run(IByteSource& pSource, const TXMLProgress& pProgress);
  EXMLError ErrorHere(std::string_view pMessage) const;

 private:
  static void XMLCALL OnStart(void* pRun, const XML_Char* pName, const XML_Char** pAttributes);
  static void XMLCALL OnEnd(void* pRun, const XML_Char* pName);
  static void XMLCALL OnText(void* pRun, const XML_Char* pText, int pLength);
  static void XMLCALL OnDoctype(void* pRun, const XML_Char*, const XML_Char*, const XML_Char*, int);
  static void XMLCALL OnDeclaration(void* pRun, const XML_Char*, const XML_Char* pEncoding, int);

  // Handles an event and keeps any exception. Expat may still send one or two events after that.
  template <class TWork>
  void Guard(TWork pWork) noexcept;
  void Start(const XML_Char* pName, const XML_Char** pAttributes);
  void Text(std::string_view pText);
  void DeliverText();
  size_t Unfinished();
  EXMLError ExpatError() const;

  std::unique_ptr<XML_ParserStruct, TFreeParser> fParser;
  IXMLHandler& fHandler;
  std::exception_ptr fFailure;
  uint64_t fBytesFed = 0;
  uint64_t fTokenStart = 0;
  size_t fDepth = 0;
  TUnits fText;  // the text since the last tag
  TUnits fTag;   // the name, the attributes and their values
  std::vector<TXMLAttribute> fAttributes;
};

TXMLParser::TRun::TRun(IXMLHandler& pHandler)
    : fParser(XML_ParserCreate_MM(nullptr, &kCountedMemory, nullptr)), fHandler(pHandler) {
  if (!fParser) throw EXMLError("There is not enough memory for a parser", 1, 1);
  XML_SetUserData(fParser.get(), this);
  XML_SetElementHandler(fParser.get(), OnStart, OnEnd);
  XML_SetCharacterDataHandler(fParser.get(), OnText);
  XML_SetStartDoctypeDeclHandler(fParser.get(), OnDoctype);
  XML_SetXmlDeclHandler(fParser.get(), OnDeclaration);
}

template <class TWork>
void TXMLParser::TRun::Guard(TWork pWork) noexcept {
  if (fFailure) return;
  try {
    pWork();
  } catch (...) {
    fFailure = std::current_exception();
    XML_StopParser(fParser.get(), XML_FALSE);
  }
}

void TXMLParser::TRun::OnStart(void* pRun, const XML_Char* pName, const XML_Char** pAttributes) {
  auto* run = static_cast<TRun*>(pRun);
  run->Guard([&] { run->Start(pName, pAttributes); });
}

void TXMLParser::TRun::OnEnd(void* pRun, const XML_Char* pName) {
  auto* run = static_cast<TRun*>(pRun);
  run->Guard([&] {
    run->DeliverText();
    --run->fDepth;
    run->fTag.Clear();
    run->fHandler.EndElement(run->fTag.Append(pName));
  });
}

void TXMLParser::TRun::OnText(void* pRun, const XML_Char* pText, int pLength) {
  auto* run = static_cast<TRun*>(pRun);
  run->Guard([&] { run->Text({pText, static_cast<size_t>(pLength)}); });
}

// Document types are refused. Entities can be declared only there, so none are.
void TXMLParser::TRun::OnDoctype(void* pRun, const XML_Char*, const XML_Char*, const XML_Char*, int) {
  auto* run = static_cast<TRun*>(pRun);
  run->Guard([&] { throw run->ErrorHere("a document type declaration is not accepted"); });
}

// Expat knows two other encodings, and calls this function before it uses them.
void TXMLParser::TRun::OnDeclaration(void* pRun, const XML_Char*, const XML_Char* pEncoding, int) {
  auto* run = static_cast<TRun*>(pRun);
  run->Guard([&] {
    if (pEncoding == nullptr || SameTextAscii(pEncoding, "UTF-8") || SameTextAscii(pEncoding, "UTF-16")) return;
    throw run->ErrorHere(fmt::format("the encoding \"{}\" is not accepted, only UTF-8 and UTF-16 are",
                                     ToDisplay(FromUtf8(std::string_view(pEncoding).substr(0, 40)))));
  });
}

void TXMLParser::TRun::Start(const XML_Char* pName, const XML_Char** pAttributes) {
  DeliverText();
  if (++fDepth > kDeepestNesting)
    throw ErrorHere(fmt::format("elements are nested more than {} levels deep", kDeepestNesting));
  // Room is reserved first, so that the views stay valid.
  const size_t nameLength = std::strlen(pName);
  size_t length = nameLength;
  for (const XML_Char** text = pAttributes; *text != nullptr; ++text) length += std::strlen(*text);
  fTag.Clear();
  fTag.Reserve(length);
  const std::u16string_view name = fTag.Append({pName, nameLength});
  fAttributes.clear();
  for (const XML_Char** text = pAttributes; *text != nullptr; text += 2)
    fAttributes.push_back({fTag.Append(text[0]), fTag.Append(text[1])});
  fHandler.StartElement(name, fAttributes);
}

void TXMLParser::TRun::Text(std::string_view pText) {
  if (fText.View().size() + pText.size() > kLongestToken)
    throw ErrorHere(fmt::format("a text is longer than {}", Megabytes(kLongestToken)));
  fText.Append(pText);
}

void TXMLParser::TRun::DeliverText() {
  const std::u16string_view text = fText.View();
  if (text.empty()) return;
  fText.Clear();
  fHandler.Characters(text);
}

// The number of bytes passed to Expat that belong to an unfinished token. If Expat has put off looking at the token
// again, it does not report its position. The token then begins where it did before.
size_t TXMLParser::TRun::Unfinished() {
  const XML_Index index = XML_GetCurrentByteIndex(fParser.get());
  if (index >= 0) fTokenStart = static_cast<uint64_t>(index);
  return static_cast<size_t>(fBytesFed - fTokenStart);
}

bool TXMLParser::TRun::Run(IByteSource& pSource, const TXMLProgress& pProgress) {
  for (;;) {
    if (pProgress && !pProgress(fBytesFed)) return false;
    // Expat reads an unfinished token again with every piece. Pieces that grow with the token keep the work
    // proportional to its size.
    const size_t unfinished = Unfinished();
    if (unfinished > kLongestToken) throw ErrorHere(fmt::format("a tag is longer than {}", Megabytes(kLongestToken)));
    const size_t wanted = std::min(std::max(kPieceOfSource, unfinished), kLongestToken - unfinished + kPieceOfSource);
    auto* room = static_cast<char*>(XML_GetBuffer(fParser.get(), static_cast<int>(wanted)));
    if (room == nullptr) throw ExpatError();
    size_t length = 0;
    bool end = false;
    while (length < wanted && !end) {
      const size_t read = pSource.Read(room + length, wanted - length);
      length += read;
      end = read == 0;
    }
    fBytesFed += length;
    const XML_Status status = XML_ParseBuffer(fParser.get(), static_cast<int>(length), end);
    if (fFailure) std::rethrow_exception(fFailure);
    if (status != XML_STATUS_OK) throw ExpatError();
    if (end) return true;
  }
}

EXMLError TXMLParser::TRun::ExpatError() const {
  const XML_Error code = XML_GetErrorCode(fParser.get());
  if (code == XML_ERROR_NO_MEMORY)
    return ErrorHere(fmt::format("reading takes more memory than the {} that it may", Megabytes(kMostParserMemory)));
  return ErrorHere(XML_ErrorString(code));
}

EXMLError TXMLParser::TRun::ErrorHere(std::string_view pMessage) const {
  return {pMessage, XML_GetCurrentLineNumber(fParser.get()), XML_GetCurrentColumnNumber(fParser.get()) + uint64_t{1}};
}

bool TXMLParser::Parse(IByteSource& pSource, const TXMLProgress& pProgress) {
  TRun run(fHandler);
  struct TSet {
    TRun*& fTarget;
    ~TSet() { fTarget = nullptr; }
  } const set{fRun};
  fRun = &run;
  return run.Run(pSource, pProgress);
}

EXMLError TXMLParser::ErrorHere(std::string_view pMessage) const {
  return fRun == nullptr ? EXMLError(pMessage, 1, 1) : fRun->ErrorHere(pMessage);
}

}  // namespace Vantrel::XML

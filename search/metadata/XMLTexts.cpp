#include "search/metadata/XMLTexts.h"

#include <expat.h>

#include <exception>
#include <memory>
#include <vector>

namespace Vantrel::Search {

namespace {

constexpr size_t kDeepest = 32;
constexpr size_t kLongestElement = size_t{1} << 20;

std::string_view WithoutPrefix(std::string_view pName) {
  return pName.substr(pName.rfind(':') + 1);
}

bool IsList(std::string_view pName) {
  return pName == "li" || pName == "Bag" || pName == "Seq" || pName == "Alt";
}

// Expat is written in C, so an exception waits until it has returned.
class TRun {
 public:
  TRun(XML_Parser pParser, const std::function<void(const TXMLText&)>& pText) : fParser(pParser), fTell(pText) {
    XML_SetUserData(pParser, this);
    XML_SetElementHandler(pParser, Start, End);
    XML_SetCharacterDataHandler(pParser, Characters);
    XML_SetStartDoctypeDeclHandler(pParser, Doctype);
  }
  void Rethrow() const {
    if (fFailure) std::rethrow_exception(fFailure);
  }

 private:
  template <typename TWork>
  void Do(const TWork& pWork) {
    if (fFailure) return;
    try {
      pWork();
    } catch (...) {
      fFailure = std::current_exception();
      XML_StopParser(fParser, XML_FALSE);
    }
  }

  std::string_view Holder() const {
    for (size_t i = fNames.size(); i > 0; --i)
      if (!IsList(fNames[i - 1])) return fNames[i - 1];
    return {};
  }

  static void XMLCALL Start(void* pRun, const XML_Char* pName, const XML_Char** pAttributes) {
    auto& run = *static_cast<TRun*>(pRun);
    run.Do([&] {
      if (run.fNames.size() >= kDeepest) {
        XML_StopParser(run.fParser, XML_FALSE);
        return;
      }
      run.fNames.emplace_back(WithoutPrefix(pName));
      run.fText.clear();
      for (; *pAttributes; pAttributes += 2)
        run.fTell({run.fNames.back(), run.Holder(), WithoutPrefix(pAttributes[0]), pAttributes[1]});
    });
  }

  static void XMLCALL End(void* pRun, const XML_Char*) {
    auto& run = *static_cast<TRun*>(pRun);
    run.Do([&] {
      if (!run.fText.empty()) run.fTell({run.fNames.back(), run.Holder(), {}, run.fText});
      run.fText.clear();
      run.fNames.pop_back();
    });
  }

  static void XMLCALL Characters(void* pRun, const XML_Char* pText, int pLength) {
    auto& run = *static_cast<TRun*>(pRun);
    run.Do([&] {
      if (run.fText.size() < kLongestElement) run.fText.append(pText, static_cast<size_t>(pLength));
    });
  }

  static void XMLCALL Doctype(void* pRun, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    XML_StopParser(static_cast<TRun*>(pRun)->fParser, XML_FALSE);
  }

  const XML_Parser fParser;
  const std::function<void(const TXMLText&)>& fTell;
  std::vector<std::string> fNames;  // of the open elements
  std::string fText;
  std::exception_ptr fFailure;
};

}  // namespace

void ReadXMLTexts(std::string_view pDocument, const std::function<void(const TXMLText&)>& pText) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
  if (!parser) throw std::bad_alloc();
  TRun run(parser.get(), pText);
  constexpr size_t kPiece = size_t{1} << 20;
  for (bool isLast = false; !isLast;) {
    isLast = pDocument.size() <= kPiece;
    const std::string_view piece = pDocument.substr(0, kPiece);
    if (XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), isLast) != XML_STATUS_OK) break;
    pDocument.remove_prefix(piece.size());
  }
  run.Rethrow();
}

}  // namespace Vantrel::Search

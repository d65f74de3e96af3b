#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "export/XMLExport.h"
#include "export/XMLParser.h"
#include "export/XMLReader.h"
#include "model/ScanRoots.h"

// Loads whatever the fuzzer makes up. A document that is not refused must hold together: what is written of its tree
// loads again, and is then written to the same bytes.

namespace {

using namespace Kiv;
using namespace Vantrel::XML::Parser;

struct TTextSink : IByteSink {
  std::string fText;
  void Write(std::string_view pBytes) override { fText += pBytes; }
};

struct TTextSource : IByteSource {
  explicit TTextSource(std::string_view pText) : fText(pText) {}
  size_t Read(char* pBuffer, size_t pLength) override {
    const size_t length = fText.copy(pBuffer, pLength);
    fText.remove_prefix(length);
    return length;
  }
  std::string_view fText;
};

std::string Written(IHierarchicalRoot& pRoot) {
  Hierarchical::Exporting::XML::TCustomXMLExport xml({}, "fuzz", "1");
  TTextSink sink;
  xml.Export(pRoot, sink);
  return sink.fText;
}

TRef<IHierarchicalRoot> Load(std::string_view pText, IScanRoots& pRoots) {
  TTextSource source(pText);
  return TQZXMLReader::ReadRoot(source, u"fuzz", pRoots).fRoot;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize) {
  static const TRef<IScanRoots> roots = CreateScanRoots(nullptr, std::make_shared<TGlobalOptions>());
  TRef<IHierarchicalRoot> first;
  try {
    first = Load({reinterpret_cast<const char*>(pData), pSize}, *roots);
  } catch (const Kiv::XML::Parser::EXMLError&) {
    return 0;
  }
  const std::string text = Written(*first);
  first->Dispose();
  const TRef<IHierarchicalRoot> second = Load(text, *roots);
  if (Written(*second) != text) std::abort();
  second->Dispose();
  return 0;
}

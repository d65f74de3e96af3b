// Loads whatever a fuzzer makes up of `seeds/`; what loads must be written and load again.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "export/xml/XMLExport.h"
#include "export/xml/XMLParser.h"
#include "export/xml/XMLReader.h"
#include "model/roots/ScanRoots.h"
#include "tests/support/ByteStrings.h"

// Loads whatever the fuzzer makes up. A document that is not refused must hold together: what is written of its tree
// loads again, and is then written to the same bytes.

namespace {

using namespace Vantrel;
using namespace Vantrel::XML;
using namespace Vantrel::Testing;

std::string Written(IHierarchicalRoot& pRoot) {
  Exporting::TCustomXMLExport xml({}, "fuzz", "1");
  TStringSink sink;
  xml.Export(pRoot, sink);
  return sink.fBytes;
}

TRef<IHierarchicalRoot> Load(std::string_view pText, IScanRoots& pRoots) {
  TStringSource source(pText);
  return TQZXMLReader::ReadRoot(source, u"fuzz", pRoots).fRoot;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize) {
  static const TRef<IScanRoots> roots = CreateScanRoots(nullptr, std::make_shared<TGlobalOptions>());
  TRef<IHierarchicalRoot> first;
  try {
    first = Load({reinterpret_cast<const char*>(pData), pSize}, *roots);
  } catch (const Vantrel::XML::EXMLError&) {
    return 0;
  }
  const std::string text = Written(*first);
  first->Dispose();
  const TRef<IHierarchicalRoot> second = Load(text, *roots);
  if (Written(*second) != text) std::abort();
  second->Dispose();
  return 0;
}

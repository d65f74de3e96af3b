// Opens whatever a fuzzer makes up of `scan_seeds/`: JSON, files of ncdu and QDirStat, and text of du; what opens must
// be written and open again.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "export/json/JSONExport.h"
#include "export/opening/ScanFiles.h"
#include "model/roots/ScanRoots.h"
#include "tests/support/ByteStrings.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Testing;

std::string Written(IHierarchicalRoot& pRoot) {
  Exporting::TMediaSettings settings;
  settings.fIncludedObjectTypes = Exporting::kAllObjectTypes;
  TStringSink sink;
  Exporting::TJSONExport(settings, JSON::TLayout::loObject).Export(pRoot, sink);
  return sink.fBytes;
}

// nullptr if the text is of no kind that is known.
TRef<IHierarchicalRoot> Load(std::string_view pText, IScanRoots& pRoots) {
  TStringSource text(pText);
  Opening::TPeekedSource source(text);
  const std::optional<Opening::TOpenedScan> opened = Opening::TryReadScan(source, pRoots);
  return opened ? opened->fRoot : nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize) {
  static const TRef<IScanRoots> roots = CreateScanRoots(nullptr, std::make_shared<TGlobalOptions>());
  TRef<IHierarchicalRoot> first;
  try {
    first = Load({reinterpret_cast<const char*>(pData), pSize}, *roots);
  } catch (const Opening::EFileError&) {
    return 0;
  }
  if (!first) return 0;
  const std::string text = Written(*first);
  first->Dispose();
  const TRef<IHierarchicalRoot> second = Load(text, *roots);
  if (Written(*second) != text) std::abort();
  second->Dispose();
  return 0;
}

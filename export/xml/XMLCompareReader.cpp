#include "export/xml/XMLCompareReader.h"

#include "export/opening/ScanFiles.h"
#include "model/roots/Comparison.h"
#include "platform/text/Text.h"

namespace Vantrel::XML {

namespace {

void RequireNoScan(const IHierarchicalRoot& pRoot) {
  if (pRoot.GetState() & rsScanning)
    throw EScanFileError("This operation is not allowed during an active scan.\r\n" + ToQuotedDisplay(pRoot.GetPath()) +
                         " currently scanning.\r\nPlease wait until the scan is finished.");
}

}  // namespace

TRef<IHierarchicalRoot> TQZXMLCompareReader::ReadEarlier(const std::u16string& pPath, IScanRoots& pRoots,
                                                         const TLoadProgress& pProgress) {
  if (pPath.empty()) throw EScanFileError("The given file path must not be empty");
  return Opening::ReadScanFile(pPath, pRoots, pProgress, TPurpose::puCompare).fRoot;
}

void TQZXMLCompareReader::AfterCompareRoot(IHierarchicalRoot& pRoot, IHierarchicalRoot& pEarlier) {
  RequireNoScan(pRoot);
  pRoot.SetComparison(MakeRef<TComparison>(pRoot, pEarlier));
}

bool TQZXMLCompareReader::CompareWithXMLFile(const std::u16string& pPath, IHierarchicalRoot& pRoot, IScanRoots& pRoots,
                                             const TLoadProgress& pProgress) {
  RequireNoScan(pRoot);
  const TRef<IHierarchicalRoot> earlier = ReadEarlier(pPath, pRoots, pProgress);
  if (!earlier) return false;
  AfterCompareRoot(pRoot, *earlier);
  earlier->Dispose();
  return true;
}

}  // namespace Vantrel::XML

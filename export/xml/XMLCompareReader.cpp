#include "export/xml/XMLCompareReader.h"

#include "model/roots/Comparison.h"
#include "platform/text/Text.h"

namespace Vantrel::XML {

bool TQZXMLCompareReader::CompareWithXMLFile(const std::u16string& pPath, IHierarchicalRoot& pRoot, IScanRoots& pRoots,
                                             const TLoadProgress& pProgress) {
  if (pPath.empty()) throw EScanFileError("The given file path must not be empty");
  if (pRoot.GetState() & rsScanning)
    throw EScanFileError("This operation is not allowed during an active scan.\r\n" + ToQuotedDisplay(pRoot.GetPath()) +
                         " currently scanning.\r\nPlease wait until the scan is finished.");
  const TLoadedRoot earlier = TQZXMLReader::ReadRootFromXMLFile(pPath, pRoots, pProgress, TPurpose::puCompare);
  if (!earlier.fRoot) return false;
  pRoot.SetComparison(MakeRef<TComparison>(pRoot, *earlier.fRoot));
  earlier.fRoot->Dispose();
  return true;
}

}  // namespace Vantrel::XML

#include "automation/actions/CompareAction.h"

#include "automation/commandline/ExitCodes.h"
#include "export/xml/XMLCompareReader.h"
#include "platform/files/FileStream.h"
#include "platform/files/Folders.h"

namespace Vantrel::PostScanActions {

// A file that is missing is better known before hours of scanning. A pipe can be opened only once.
void TComparePostScanAction::Prepare() {
  if (!SpecialFileExists(fFileName)) TFileStream::OpenForReading(fFileName);
}

void TComparePostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  const bool compared = Vantrel::XML::TQZXMLCompareReader::CompareWithXMLFile(
      fFileName, pRoot, fRoots, [&](const std::u16string&, uint64_t) { return !fIsCancelled(); });
  if (!compared) throw EExportCancelled("Stopped: nothing was compared");
}

int TComparePostScanAction::GetFailureCode() const {
  return Vantrel::ecPathNotFound;
}

}  // namespace Vantrel::PostScanActions

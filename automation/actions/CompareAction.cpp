#include "automation/actions/CompareAction.h"

#include "automation/commandline/ExitCodes.h"
#include "export/xml/XMLCompareReader.h"
#include "platform/files/FileStream.h"
#include "platform/files/Folders.h"

namespace Vantrel::PostScanActions {

// Finds a missing file before hours of scanning. A pipe is not probed, because it can be opened only once.
void TComparePostScanAction::Prepare() {
  if (!SpecialFileExists(fFileName)) TFileStream::OpenForReading(fFileName);
}

void TComparePostScanAction::ReadInput(IHierarchicalRoot&) {
  ForgetEarlier();
  fEarlier = XML::TQZXMLCompareReader::ReadEarlier(fFileName, fRoots,
                                                   [&](const std::u16string&, uint64_t) { return !fIsCancelled(); });
  if (!fEarlier) throw EExportCancelled("Stopped: nothing was compared");
}

void TComparePostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  XML::TQZXMLCompareReader::AfterCompareRoot(pRoot, *fEarlier);
  ForgetEarlier();
}

void TComparePostScanAction::ForgetEarlier() {
  if (fEarlier) fEarlier->Dispose();
  fEarlier = nullptr;
}

int TComparePostScanAction::GetFailureCode() const {
  return Vantrel::ecPathNotFound;
}

}  // namespace Vantrel::PostScanActions

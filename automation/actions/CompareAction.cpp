#include "automation/actions/CompareAction.h"

#include <fmt/format.h>

#include "automation/commandline/ExitCodes.h"
#include "export/history/HistoryDatabase.h"
#include "export/xml/ScanFolder.h"
#include "export/xml/XMLCompareReader.h"
#include "platform/files/FileStream.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::PostScanActions {

namespace {

// When this day began, in local time.
TKivFileTime BeginOfToday() {
  const TKivFileTime now = TKivFileTime::Now();
  int64_t offset = 0;
  LocalOffset(now, offset);
  return {now.fTicks - (now.fTicks + offset * TKivFileTime::kTicksPerSecond) % TKivFileTime::kTicksPerDay};
}

}  // namespace

// Finds a missing file before hours of scanning. A pipe is not probed, because it can be opened only once.
void TComparePostScanAction::Prepare() {
  if (FolderExists(fFileName))
    NamesIn(fFileName);
  else if (!SpecialFileExists(fFileName))
    TFileStream::OpenForReading(fFileName);
}

std::u16string TComparePostScanAction::FileFor(const IHierarchicalRoot& pRoot) const {
  if (!FolderExists(fFileName)) return fFileName;
  const std::u16string newest = XML::NewestScanInFolder(fFileName, pRoot.GetPath(), BeginOfToday());
  if (newest.empty())
    fWriteNote(fmt::format("Nothing is compared: {} holds no whole scan of {} from before today",
                           ToQuotedDisplay(fFileName), ToQuotedDisplay(pRoot.GetPath())));
  return newest;
}

void TComparePostScanAction::ReadInput(IHierarchicalRoot& pRoot) {
  ForgetEarlier();
  const std::u16string file = FileFor(pRoot);
  if (file.empty()) return;
  fEarlier = XML::TQZXMLCompareReader::ReadEarlier(file, fRoots,
                                                   [&](const std::u16string&, uint64_t) { return !fIsCancelled(); });
  if (!fEarlier) throw EExportCancelled("Stopped: nothing was compared");
}

void TComparePostScanAction::WarnOfDifferences(const IHierarchicalRoot& pRoot) const {
  const std::string earlier = "The scan to compare with ";
  if (!SamePath(pRoot.GetPath(), fEarlier->GetPath(), NativePathDelimiter()))
    fWriteNote(earlier + "is of another path: " + ToQuotedDisplay(fEarlier->GetPath()));
  if (History::HistoryPattern(pRoot) != History::HistoryPattern(*fEarlier))
    fWriteNote(earlier + "had other filters, so files may seem to have come or gone");
  const size_t unread = pRoot.GetErrors().size();
  const size_t unreadThen = fEarlier->GetErrors().size();
  if (unread != unreadThen)
    fWriteNote(fmt::format("{}could not read {} folders, and this one {}: their files may seem to have come or gone",
                           earlier, unreadThen, unread));
}

void TComparePostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  if (!fEarlier) return;
  WarnOfDifferences(pRoot);
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

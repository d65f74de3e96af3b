// The part of the roots about unreadable folders, excluded entries and progress.

#include "model/roots/Root.h"
#include "model/roots/Storage.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// How often the folder shown as "being scanned now" changes: often enough for users, too seldom to cost anything.
constexpr int64_t kLastScannedFolderMilliseconds = 50;

}  // namespace

std::vector<TScanError> TCustomRoot::GetErrors() const {
  TCriticalSectionLock lock(fLock);
  return fErrors;
}

void TCustomRoot::RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) {
  TScanError error;
  error.fObject = TRef<IHierarchicalObject>(&pFolder);
  error.fPath = pEnumerator.GetPath();
  error.fCode = pEnumerator.GetErrorCode();
  error.fKind = pEnumerator.GetError();
  error.fPartial = pPartial;
  AddError(error);
}

void TCustomRoot::AddError(TScanError pError) {
  if (pError.fText.empty()) pError.fText = FromUtf8(GetStorage()->ErrorText(pError.fCode));
  {
    TCriticalSectionLock lock(fLock);
    fErrors.push_back(pError);
  }
  fErrorCount.fetch_add(1, std::memory_order_relaxed);
  IncludeState(rsHasErrors);
  fErrorObservers.Notify([&](IScanErrorObserver& pObserver) { pObserver.ErrorRecorded(pError); });
}

template <class TIsMeant>
void TCustomRoot::ForgetErrors(const TIsMeant& pIsMeant) {
  TCriticalSectionLock lock(fLock);
  std::erase_if(fErrors, [&](const TScanError& pError) { return pIsMeant(pError.fObject.get()); });
  fErrorCount = static_cast<int64_t>(fErrors.size());
  if (fErrors.empty()) ExcludeState(rsHasErrors);
}

void TCustomRoot::ForgetBranch(IFolderData& pFolder) {
  const TRef<ITopSizeList> list = GetTopSizeList();
  if (pFolder.IsFileGroup()) {
    const TRef<IHierarchicalElement> folder = pFolder.GetParentFolder();
    if (list && folder && list->RemoveFilesOf(*folder)) fTopSizeListHasGaps = true;
    return;
  }
  ForgetErrors([&](IHierarchicalObject* pObject) {
    return IsSameOrBelow(TRef<IHierarchicalElement>(dynamic_cast<IHierarchicalElement*>(pObject)), pFolder);
  });
  if (list && list->RemoveBelow(pFolder)) fTopSizeListHasGaps = true;
}

void TCustomRoot::ForgetOwnEntries(IFolderData& pFolder) {
  ForgetErrors([&](IHierarchicalObject* pObject) { return pObject == &pFolder; });
  const TRef<ITopSizeList> list = GetTopSizeList();
  if (list && list->RemoveFilesOf(pFolder)) fTopSizeListHasGaps = true;
  const TRef<IFolderData> filesNode = pFolder.GetFilesNode();
  TSizeValues own;
  if (filesNode)
    own = filesNode->GetValues();
  else if (pFolder.GetSubFolderCount() == 0)
    own = pFolder.GetValues();
  CountTree(own);
}

// --- progress ------------------------------------------------------------------------------------------------------

TScanProgress TCustomRoot::GetProgress() const {
  TScanProgress progress;
  progress.fFiles = fTotalFilesFound.load(std::memory_order_relaxed);
  progress.fFolders = fNumFolders.load(std::memory_order_relaxed);
  progress.fBytes = fBytesFound.load(std::memory_order_relaxed);
  progress.fExcludedObjects = fExcludedObjects.load(std::memory_order_relaxed);
  progress.fErrors = fErrorCount.load(std::memory_order_relaxed);
  progress.fPrepared = fPrepared.load(std::memory_order_relaxed);
  progress.fToPrepare = fToPrepare.load(std::memory_order_relaxed);
  if (const TRef<IScanEngine> engine = GetScanEngine()) {
    const TListedFolder listed = engine->GetLongestListed();
    if (listed.fFolder) progress.fLongestListed = listed.fFolder->GetFullPath();
    progress.fLongestListedElapsed = listed.fElapsed;
  }
  TCriticalSectionLock lock(fLock);
  progress.fElapsed = fScanRunning ? Elapsed() : GetScanDuration();
  progress.fLastScannedFolder = fLastScannedFolder;
  return progress;
}

void TCustomRoot::CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                               int64_t pExcluded) {
  fTotalFilesFound.fetch_add(pFiles, std::memory_order_relaxed);
  fNumFolders.fetch_add(pFolders, std::memory_order_relaxed);
  fBytesFound.fetch_add(pBytes, std::memory_order_relaxed);
  if (pExcluded != 0) fExcludedObjects.fetch_add(pExcluded, std::memory_order_relaxed);
  const int64_t now = TickCount64();
  int64_t last = fLastScannedFolderTick.load(std::memory_order_relaxed);
  if (now - last < kLastScannedFolderMilliseconds ||
      !fLastScannedFolderTick.compare_exchange_strong(last, now, std::memory_order_relaxed))
    return;
  std::u16string path = pFolder.GetFullPath();
  TCriticalSectionLock lock(fLock);
  fLastScannedFolder = std::move(path);
}

void TCustomRoot::CountTree(const TSizeValues& pWithout) {
  const TRef<IFolderData> top = GetTopFolder();
  if (!top) return;
  const TSizeValues values = top->GetValues();
  fTotalFilesFound = values.fFiles - pWithout.fFiles;
  fNumFolders = values.fFolders - pWithout.fFolders;
  fBytesFound = values.fSize - pWithout.fSize;
}

// --- what was left out ---------------------------------------------------------------------------------------------

std::vector<TExclusion> TCustomRoot::CurrentExclusions() const {
  std::vector<TExclusion> exclusions;
  if (const TRef<IScanFilter> filter = GetScanFilter()) exclusions = filter->GetExclusions();
  if (const int64_t objects = fRootExclusions.fByFileMask.load(std::memory_order_relaxed); objects > 0)
    exclusions.push_back({u"not named like " + fFileMask, objects});
  if (const int64_t objects = fRootExclusions.fByExpression.load(std::memory_order_relaxed); objects > 0)
    exclusions.push_back({u"not meeting the condition", objects});
  return exclusions;
}

// A refresh counts on the same counters, but its counts are not reported.
std::vector<TExclusion> TCustomRoot::GetExclusions() const {
  {
    TCriticalSectionLock lock(fLock);
    if (!fCountsExclusions) return fExclusions;
  }
  return CurrentExclusions();
}

}  // namespace Vantrel

#include "scan/engine/ScanJob.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <optional>
#include <utility>

#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/system/MemoryReserve.h"
#include "platform/threads/InterruptibleThread.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::ScanEngine {

using Enumerators::TPathNotFoundEnumerator;

namespace {

// A worker keeps its sub-folders to itself once this many items wait for each running thread.
constexpr int32_t kMostQueuedPerThread = 20;
// Cancellation is checked this often, so a folder of a million files does not delay it.
constexpr int64_t kFilesBetweenLooks = 1024;
// A worker passes totals up for views this often: often enough for users. Far from the top it does so more seldom,
// since each folder above takes time. So this costs some percent of a scan at most.
constexpr int64_t kMillisecondsBetweenPasses = 50;
constexpr int64_t kLevelsPerMillisecond = 10;

// When this worker last did so. No value before its first folder.
thread_local std::optional<int64_t> tLastPass;

}  // namespace

TScanJob::TScanJob(TScanEngine& pEngine, TRef<TCustomFolderData> pFromFolder, TRef<IHierarchicalEnumerator> pEnumerator,
                   TScanMode pMode, TRef<TOpenFolder> pParent)
    : TBasicWorkItem(pEngine.fConfiguration->GetCancellationToken()),
      fEngine(pEngine),
      fFromFolder(std::move(pFromFolder)),
      fParent(std::move(pParent)),
      fEnumerator(std::move(pEnumerator)),
      fConfiguration(*pEngine.fConfiguration),
      fThreadPool(*pEngine.fWorkerThreadPool),
      fFolderDateBasedOnFilesOnly(fConfiguration.GetFolderDateBasedOnFilesOnly()),
      fMode(pMode) {}

void TScanJob::Execute() {
  // A call that hangs, on a share whose server is gone, ends when the scan is cancelled.
  TInterruptibleThread thread;
  std::optional<TCancellationWatch> watch;
  try {
    watch.emplace(fCancellationToken, [&thread] { thread.Interrupt(); });
  } catch (const std::bad_alloc&) {  // the job does without
  }
  fPlace = fEngine.fWorkplaces.Take();
  if (Begin()) ScanAll();
  fEngine.fWorkplaces.Give(fPlace);
}

bool TScanJob::Begin() {
  if (!fFromFolder && !OpenFolder()) return false;
  fFromFolder->ExcludeFolderState(fsUpdatePending);
  if (IsCancelled() || !fConfiguration.IsFolderToBeScanned(*fFromFolder)) {
    fFromFolder->ExcludeFolderState(fsScanning);
  } else if (!fOpen) {
    return true;
  } else {
    const TInsideFolder inside(fPlace, *fFromFolder);
    if (OpenFolder()) return true;
  }
  TOpenFolder::EndPart(std::move(fParent));
  return false;
}

void TScanJob::ScanAll() {
  if (!TakeAccumulator()) {
    TakeIn(*fFromFolder, fEnumerator.get(), {}, std::move(fParent));
    return;
  }
  {
    const TInsideFolder inside(fPlace, *fFromFolder);
    if (fMode == TScanMode::smRefresh)
      RefreshFolder();
    else
      ScanFolder(*fFromFolder, fEnumerator.get(), std::move(fParent));
  }
  fEnumerator = nullptr;
  ScanWaiting();
  fEngine.GiveAccumulator(std::move(fFiles));
}

// Opens the folder for listing. False when there is nothing to list.
bool TScanJob::OpenFolder() {
  try {
    TScanStart start = std::exchange(fOpen, nullptr)();
    fFromFolder = static_cast<TCustomFolderData*>(start.fFolder.get());
    fEnumerator = std::move(start.fListing);
  } catch (...) {
    const uint32_t code = CodeOfCaughtException("TScanJob.OpenFolder");
    TReserveUse reserve;
    const TRef<TPathNotFoundEnumerator> failed = MakeRef<TPathNotFoundEnumerator>(fFromFolder->GetFullPath(), code, 0);
    fConfiguration.RecordError(*fFromFolder, *failed, true);
  }
  if (!fEnumerator && fFromFolder) fFromFolder->ExcludeFolderState(fsScanning);
  return fEnumerator != nullptr;
}

bool TScanJob::TakeAccumulator() {
  try {
    fFiles = fEngine.TakeAccumulator();
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.TakeAccumulator");
  }
  return fFiles != nullptr;
}

void TScanJob::ScanWaiting() {
  while (fFirstWaiting < fWaiting.size()) {
    fThreadPool.HoldWhilePaused();
    // The folder nearest to the top probably has the most beneath it, so it is the best one to give away.
    if (ShouldQueue() && Queue(fWaiting[fFirstWaiting])) {
      ++fFirstWaiting;
      continue;
    }
    TWaiting next = std::move(fWaiting.back());
    fWaiting.pop_back();
    if (IsCancelled() || !fConfiguration.IsFolderToBeScanned(*next.fFolder)) {
      next.fFolder->ExcludeFolderState(fsScanning);
      TOpenFolder::EndPart(std::move(next.fParent));
      continue;
    }
    const TInsideFolder inside(fPlace, *next.fFolder);
    const TRef<IHierarchicalEnumerator> enumerator = Open(next);
    // The parent's handle can close once its last child is open.
    next.fListing = nullptr;
    ScanFolder(*next.fFolder, enumerator.get(), std::move(next.fParent));
  }
}

// Opens the waiting folder. On failure it returns nullptr and sets fFailure.
TRef<IHierarchicalEnumerator> TScanJob::Open(const TWaiting& pWaiting) {
  fFailure = 0;
  try {
    return pWaiting.fListing->CreateChildEnumeratorById(pWaiting.fEntryId, pWaiting.fFolder->GetObjectName(),
                                                        pWaiting.fFolder->GetAttributes());
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.Open");
    return nullptr;
  }
}

bool TScanJob::ShouldQueue() const {
  // A job that gave its last folder away would end and look for another one. A chain of folders stays one job.
  if (fWaiting.size() - fFirstWaiting == 1 || IsCancelled()) return false;
  const int32_t queued = fThreadPool.GetQueueLength();
  if (queued <= fThreadPool.GetMaxRunningThreads()) return true;
  return queued <= kMostQueuedPerThread * fThreadPool.GetThreadCount() && fThreadPool.IsCpuUsageBelowMax();
}

// Turns a waiting folder into a job of its own. False when that fails. The folder then still waits and is scanned by
// this job.
bool TScanJob::Queue(TWaiting& pWaiting) {
  TRef<IHierarchicalEnumerator> enumerator;
  {
    const TInsideFolder inside(fPlace, *pWaiting.fFolder);
    enumerator = Open(pWaiting);
  }
  if (!enumerator) return false;
  try {
    fThreadPool.AddWorkItem(
        MakeRef<TScanJob>(fEngine, pWaiting.fFolder, std::move(enumerator), TScanMode::smNew, pWaiting.fParent));
  } catch (...) {
    CodeOfCaughtException("TScanJob.Queue");
    return false;
  }
  pWaiting = {};
  return true;
}

void TScanJob::ScanFolder(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator, TRef<TOpenFolder> pParent) {
  TakeIn(pFolder, pEnumerator, List(pFolder, pEnumerator), std::move(pParent));
}

// --- listing: it may fail anywhere, and it changes nothing in the tree -----------------------------------------------

// An error that ends the listing early is kept in fFailure. What was listed before it still counts.
TFileGroupContents TScanJob::List(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator) {
  fFiles->Begin();
  fChildren.clear();
  fChildIds.clear();
  fOpened = nullptr;
  fExcluded = 0;
  if (!pEnumerator) return {};
  fFailure = 0;
  try {
    ListEntries(pFolder, *pEnumerator);
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.ListEntries");
  }
  if (IEntryFilter* const filter = fFiles->EntryFilter()) filter->EndFolder();
  try {
    MakeRoomToWait(pFolder);
    return fFiles->Finish();
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.List");
    return {};
  }
}

void TScanJob::ListEntries(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  fFiles->SetPathLength(pEnumerator.GetPathLength());
  IEntryFilter* const filter = fFiles->EntryFilter();
  if (filter) filter->BeginFolder(pEnumerator);
  while (pEnumerator.Next()) {
    if (pEnumerator.IsFolder()) {
      if (IsCancelled()) break;
      if (filter && !filter->IsFolderIncluded(pEnumerator))
        ++fExcluded;
      else
        AddFolderEntry(pFolder, pEnumerator);
    } else if (filter && !filter->IsFileIncluded(pEnumerator)) {
      ++fExcluded;
      if (fExcluded % kFilesBetweenLooks == 0 && IsCancelled()) break;
    } else {
      fFiles->AddFile(pEnumerator);
      if (fFiles->FileCount() % kFilesBetweenLooks == 0 && IsCancelled()) break;
    }
  }
}

void TScanJob::AddFolderEntry(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  TRef<TCustomFolderData> child = pFolder.MakeChild(pEnumerator.GetObjectName(), pEnumerator.GetEntryValues(),
                                                    fFiles->OwnerKeyOf(pEnumerator), !fFolderDateBasedOnFilesOnly);
  if (pEnumerator.CanDescend()) {
    child->IncludeFolderState(fsScanning);
    child->BeginScan(1);
  } else {
    child->IncludeFolderState(fsSubFolderScanningFinished);
  }
  fChildIds.push_back(pEnumerator.GetEntryId());
  fChildren.push_back(std::move(child));
}

namespace {

bool IsToBeEntered(const TRef<TCustomFolderData>& pChild) {
  return (pChild->GetFolderState() & fsScanning) != 0;
}

}  // namespace

// Reserves room for the children that must wait to be scanned. Without room for all of them, none enters the tree,
// because a child that cannot wait would never be scanned.
void TScanJob::MakeRoomToWait(TCustomFolderData& pFolder) {
  if (fFirstWaiting == fWaiting.size()) {
    fWaiting.clear();
    fFirstWaiting = 0;
  }
  // This call may fail, so it is made here. The folder later keeps the list as it is.
  fChildren.shrink_to_fit();
  const auto entered = static_cast<size_t>(std::count_if(fChildren.begin(), fChildren.end(), IsToBeEntered));
  if (entered == 0) return;
  const size_t wanted = fWaiting.size() + entered;
  try {
    fOpened = MakeRef<TOpenFolder>(TRef<TCustomFolderData>(&pFolder));
    if (wanted > fWaiting.capacity()) fWaiting.reserve(std::max(wanted, 2 * fWaiting.capacity()));
  } catch (...) {
    fChildren.clear();
    throw;
  }
}

// --- into the tree: all of it or none --------------------------------------------------------------------------------

// An exception here would leave the folder's files in only some of its ancestors, so this function is noexcept. It may
// use the reserve of memory.
void TScanJob::TakeIn(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator,
                      const TFileGroupContents& pFiles, TRef<TOpenFolder> pParent) noexcept {
  TReserveUse reserve;
  const int32_t waiting = LetChildrenWait(pEnumerator);
  const bool hasSubFolders = !fChildren.empty();
  pFolder.BeginScan(1 + waiting);
  ReportListing(pFolder, pEnumerator);
  if (fFiles) fFiles->OfferTopFiles(pFolder);
  pFolder.TakeInListing(std::move(fChildren), pFiles);
  pFolder.ExcludeFolderState(fsScanning);
  if (waiting > 0) {
    fOpened->Open(std::move(pParent), waiting);
    PassUpSometimes(fOpened.get());
  } else {
    // A folder without sub-folders may have no statistics of its own, and its listing holds the same.
    if (hasSubFolders)
      pFolder.PassUp(pFolder.Contribution(), !pParent, true);
    else if (pFiles.fValues.fFiles > 0)
      pFolder.PassUp(pFiles, !pParent, true);
    PassUpSometimes(pParent.get());
    TOpenFolder::EndPart(std::move(pParent));
  }
  // Reported after the totals: what is finished holds all beneath it.
  EndFolder(pFolder);
}

void TScanJob::PassUpSometimes(TOpenFolder* pFolder) {
  if (!pFolder) return;
  const int64_t now = fThreadPool.Now();
  if (!tLastPass) tLastPass = now;
  if (now - *tLastPass < std::max<int64_t>(kMillisecondsBetweenPasses, pFolder->Depth() / kLevelsPerMillisecond))
    return;
  pFolder->PassNewsUp();
  tLastPass = fThreadPool.Now();
}

void TScanJob::EndFolder(TCustomFolderData& pFolder) {
  // A folder that was left early stays unfinished, as do all folders above it.
  if (!IsCancelled()) pFolder.FinishPart();
}

// Adds those of the listed sub-folders that are to be entered to the waiting list. Returns their number.
int32_t TScanJob::LetChildrenWait(IHierarchicalEnumerator* pEnumerator) {
  const size_t before = fWaiting.size();
  // Waiting folders are taken from the back, so adding them in reverse scans the first listed one first.
  for (size_t i = fChildren.size(); i-- > 0;)
    if (IsToBeEntered(fChildren[i]))
      fWaiting.push_back({fChildren[i], fOpened, TRef<IHierarchicalEnumerator>(pEnumerator), fChildIds[i]});
  return static_cast<int32_t>(fWaiting.size() - before);
}

// Reports errors and progress, while the children are not in the tree yet.
void TScanJob::ReportListing(TCustomFolderData& pFolder, const IHierarchicalEnumerator* pEnumerator) {
  const auto folders = static_cast<int64_t>(fChildren.size());
  const TSizeValues values = fFiles ? fFiles->Values() : TSizeValues();
  const bool partial = folders > 0 || values.fFiles > 0;
  if (TInterruptibleThread::IsCurrentInterrupted()) {
    // What the interrupted call says is no fault of the folder.
  } else if (pEnumerator && pEnumerator->GetErrorCode() != 0) {
    fConfiguration.RecordError(pFolder, *pEnumerator, partial);
  } else if (fFailure != 0) {
    const std::u16string path = pEnumerator ? pEnumerator->GetPath() : pFolder.GetFullPath();
    fConfiguration.RecordError(pFolder, *MakeRef<TPathNotFoundEnumerator>(path, fFailure, 0), partial);
  }
  fConfiguration.CountScanned(pFolder, values.fFiles, folders, values.fSize, fExcluded);
}

// --- refresh -------------------------------------------------------------------------------------------------------

void TScanJob::RefreshFolder() {
  TCustomFolderData& folder = *fFromFolder;
  TFileGroupContents files = List(folder, fEnumerator.get());
  std::vector<TRef<IFolderData>> gone;
  try {
    gone = KeepNewChildren();
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.RefreshFolder");
    fChildren.clear();
  }
  TakeInRefresh(files, gone);
}

// Keeps only the new ones of the listed children. Returns the folder's children that were not listed.
std::vector<TRef<IFolderData>> TScanJob::KeepNewChildren() {
  TCustomFolderData& folder = *fFromFolder;
  boost::unordered_flat_map<std::u16string_view, TRef<IFolderData>> gone;
  for (TRef<IFolderData>& child : folder.FindSubFolders())
    if (!child->IsFileGroup()) gone.emplace(child->GetObjectName(), child);
  const auto known = gone;  // keeps the names of children alive
  std::vector<TRef<TCustomFolderData>> added;
  std::vector<uint64_t> addedIds;
  for (size_t i = 0; i < fChildren.size(); ++i) {
    const TRef<TCustomFolderData>& child = fChildren[i];
    if (gone.erase(child->GetObjectName()) > 0) continue;
    if (known.contains(child->GetObjectName())) continue;
    child->IncludeFolderState(fsDetectedDuringRefresh);
    LogDebug(u"TCustomFolderData.RefreshNonRecursive: Found new subfolder \"" + std::u16string(child->GetObjectName()) +
             u"\" in \"" + folder.GetFullPath() + u"\".");
    added.push_back(child);
    addedIds.push_back(fChildIds[i]);
  }
  std::vector<TRef<IFolderData>> left;
  for (auto& [name, child] : gone) left.push_back(child);
  fChildren = std::move(added);
  fChildIds = std::move(addedIds);
  return left;
}

// noexcept for the same reason as TakeIn.
void TScanJob::TakeInRefresh(const TFileGroupContents& pFiles, const std::vector<TRef<IFolderData>>& pGone) noexcept {
  TReserveUse reserve;
  TCustomFolderData& folder = *fFromFolder;
  // A listing that broke off says nothing about the entries it did not reach.
  if (fEnumerator->GetErrorCode() == 0 && fFailure == 0 && !IsCancelled())
    for (const TRef<IFolderData>& child : pGone) child->Remove();
  folder.GetRoot()->ForgetOwnEntries(folder);
  // Children that a cancelled scan left count as well as the new ones.
  const int32_t unfinished = folder.CountUnfinishedChildren();
  const int32_t waiting = LetChildrenWait(fEnumerator.get());
  folder.BeginScan(1 + unfinished + waiting);
  ReportListing(folder, fEnumerator.get());
  folder.AppendChildren(std::move(fChildren));
  fFiles->OfferTopFiles(folder);
  if (!fFiles->AreFilesGivenUp()) folder.ReplaceFiles(pFiles);
  folder.ExcludeFolderState(fsScanning);
  if (waiting > 0) {
    fOpened->SetAllPassed();
    fOpened->Open(nullptr, waiting);
  }
  EndFolder(folder);
}

}  // namespace Vantrel::ScanEngine

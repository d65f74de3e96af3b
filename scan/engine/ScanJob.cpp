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
using ThreadPool::TWorkerThreadPool;

namespace {

// A worker keeps its sub-folders to itself once this many items wait for each running thread.
constexpr int32_t kMostQueuedPerThread = 20;
// Cancellation is checked this often, so a folder of a million files does not delay it.
constexpr int64_t kFilesBetweenLooks = 1024;

}  // namespace

TScanJob::TScanJob(TScanEngine& pEngine, TRef<TCustomFolderData> pFromFolder, TRef<IHierarchicalEnumerator> pEnumerator,
                   TScanMode pMode)
    : TBasicWorkItem(pEngine.fConfiguration->GetCancellationToken()),
      fEngine(pEngine),
      fFromFolder(std::move(pFromFolder)),
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
  fFromFolder->ExcludeFolderState(fsUpdatePending);
  if (IsCancelled() || !fConfiguration.IsFolderToBeScanned(*fFromFolder)) {
    fFromFolder->ExcludeFolderState(fsScanning);
    return;
  }
  if (fOpen && !OpenFolder()) return;
  if (!TakeAccumulator()) {
    TakeIn(*fFromFolder, fEnumerator.get(), {});
    return;
  }
  if (fMode == TScanMode::smRefresh)
    RefreshFolder();
  else
    ScanFolder(*fFromFolder, fEnumerator.get());
  fEnumerator = nullptr;
  ScanWaiting();
  fEngine.GiveAccumulator(std::move(fFiles));
}

// Opens the folder for listing. False when there is nothing to list.
bool TScanJob::OpenFolder() {
  try {
    fEnumerator = std::exchange(fOpen, nullptr)();
  } catch (...) {
    const uint32_t code = CodeOfCaughtException("TScanJob.OpenFolder");
    TReserveUse reserve;
    const TRef<TPathNotFoundEnumerator> failed = MakeRef<TPathNotFoundEnumerator>(fFromFolder->GetFullPath(), code, 0);
    fConfiguration.RecordError(*fFromFolder, *failed, true);
  }
  if (!fEnumerator) fFromFolder->ExcludeFolderState(fsScanning);
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
    // The folder nearest to the top probably has the most beneath it, so it is the best one to give away.
    if (ShouldQueue() && Queue(fWaiting[fFirstWaiting])) {
      ++fFirstWaiting;
      continue;
    }
    TWaiting next = std::move(fWaiting.back());
    fWaiting.pop_back();
    if (IsCancelled() || !fConfiguration.IsFolderToBeScanned(*next.fFolder)) {
      next.fFolder->ExcludeFolderState(fsScanning);
      continue;
    }
    const TRef<IHierarchicalEnumerator> enumerator = Open(next);
    // The parent's handle can close once its last child is open.
    next.fParent = nullptr;
    ScanFolder(*next.fFolder, enumerator.get());
  }
}

// Opens the waiting folder. On failure it returns nullptr and sets fFailure.
TRef<IHierarchicalEnumerator> TScanJob::Open(const TWaiting& pWaiting) {
  fFailure = 0;
  try {
    return pWaiting.fParent->CreateChildEnumerator(pWaiting.fFolder->GetObjectName(),
                                                   pWaiting.fFolder->GetAttributes());
  } catch (...) {
    fFailure = CodeOfCaughtException("TScanJob.Open");
    return nullptr;
  }
}

bool TScanJob::ShouldQueue() const {
  if (IsCancelled()) return false;
  const int32_t queued = fThreadPool.GetQueueLength();
  if (queued <= fThreadPool.GetMaxRunningThreads()) return true;
  return queued <= kMostQueuedPerThread * fThreadPool.GetThreadCount() && fThreadPool.IsCpuUsageBelowMax();
}

// Turns a waiting folder into a job of its own. False when that fails. The folder then still waits and is scanned by
// this job.
bool TScanJob::Queue(TWaiting& pWaiting) {
  TRef<IHierarchicalEnumerator> enumerator = Open(pWaiting);
  if (!enumerator) return false;
  try {
    fThreadPool.AddWorkItem(MakeRef<TScanJob>(fEngine, pWaiting.fFolder, std::move(enumerator), TScanMode::smNew));
  } catch (...) {
    CodeOfCaughtException("TScanJob.Queue");
    return false;
  }
  pWaiting = {};
  return true;
}

void TScanJob::ScanFolder(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator) {
  TakeIn(pFolder, pEnumerator, List(pFolder, pEnumerator));
}

// --- listing: it may fail anywhere, and it changes nothing in the tree -----------------------------------------------

// An error that ends the listing early is kept in fFailure. What was listed before it still counts.
TFileGroupContents TScanJob::List(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator) {
  fFiles->Begin();
  fChildren.clear();
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
    MakeRoomToWait();
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
  fChildren.push_back(std::move(child));
}

namespace {

bool IsToBeEntered(const TRef<TCustomFolderData>& pChild) {
  return (pChild->GetFolderState() & fsScanning) != 0;
}

}  // namespace

// Reserves room for the children that must wait to be scanned. Without room for all of them, none enters the tree,
// because a child that cannot wait would never be scanned.
void TScanJob::MakeRoomToWait() {
  if (fFirstWaiting == fWaiting.size()) {
    fWaiting.clear();
    fFirstWaiting = 0;
  }
  // This call may fail, so it is made here. The folder later keeps the list as it is.
  fChildren.shrink_to_fit();
  const auto entered = static_cast<size_t>(std::count_if(fChildren.begin(), fChildren.end(), IsToBeEntered));
  const size_t wanted = fWaiting.size() + entered;
  if (wanted <= fWaiting.capacity()) return;
  try {
    fWaiting.reserve(std::max(wanted, 2 * fWaiting.capacity()));
  } catch (...) {
    fChildren.clear();
    throw;
  }
}

// --- into the tree: all of it or none --------------------------------------------------------------------------------

// An exception here would leave the folder's files in only some of its ancestors, so this function is noexcept. It may
// use the reserve of memory.
void TScanJob::TakeIn(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator,
                      const TFileGroupContents& pFiles) noexcept {
  TReserveUse reserve;
  EndListing(pFolder, pEnumerator);
  if (fFiles) fFiles->OfferTopFiles(pFolder);
  pFolder.AddFiles(pFiles, true);
  EndFolder(pFolder);
}

void TScanJob::EndFolder(TCustomFolderData& pFolder) {
  pFolder.ExcludeFolderState(fsScanning);
  // A folder that was left early stays unfinished, as do all folders above it.
  if (!IsCancelled()) pFolder.FinishPart();
}

// Adds the children to the tree and the waiting list, and reports errors and progress.
void TScanJob::EndListing(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator) {
  const auto folders = static_cast<int64_t>(fChildren.size());
  const size_t before = fWaiting.size();
  // Waiting folders are taken from the back, so adding them in reverse scans the first listed one first.
  for (auto child = fChildren.rbegin(); child != fChildren.rend(); ++child)
    if (IsToBeEntered(*child)) fWaiting.push_back({*child, TRef<IHierarchicalEnumerator>(pEnumerator)});
  pFolder.BeginScan(1 + static_cast<int32_t>(fWaiting.size() - before));
  pFolder.AppendChildren(std::move(fChildren));
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
  for (TRef<TCustomFolderData>& child : fChildren) {
    if (gone.erase(child->GetObjectName()) > 0) continue;
    if (known.contains(child->GetObjectName())) continue;
    child->IncludeFolderState(fsDetectedDuringRefresh);
    LogDebug(u"TCustomFolderData.RefreshNonRecursive: Found new subfolder \"" + std::u16string(child->GetObjectName()) +
             u"\" in \"" + folder.GetFullPath() + u"\".");
    added.push_back(child);
  }
  std::vector<TRef<IFolderData>> left;
  for (auto& [name, child] : gone) left.push_back(child);
  fChildren = std::move(added);
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
  const int32_t unfinished = folder.CountUnfinishedChildren();
  EndListing(folder, fEnumerator.get());
  folder.AnnounceParts(unfinished);  // children left by a cancelled scan; the new ones are announced already
  fFiles->OfferTopFiles(folder);
  if (!fFiles->AreFilesGivenUp()) folder.ReplaceFiles(pFiles);
  EndFolder(folder);
}

}  // namespace Vantrel::ScanEngine

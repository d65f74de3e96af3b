#include "scan/engine/ScanJob.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <utility>

#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::ScanEngine {

using Enumerators::TPathNotFoundEnumerator;
using ThreadPool::TWorkerThreadPool;

namespace {

// How many items may wait for each running thread before a worker keeps its sub-folders to itself.
constexpr int32_t kMostQueuedPerThread = 20;
// A folder of a million files must not hold up a cancelled scan.
constexpr int64_t kFilesBetweenLooks = 1024;

}  // namespace

TScanJob::TScanJob(TScanEngine& pEngine, TRef<TCustomFolderData> pFromFolder, TRef<IHierarchicalEnumerator> pEnumerator,
                   TScanMode pMode)
    : TBasicWorkItem(pEngine.fConfiguration->GetCancellationToken()),
      fEngine(pEngine),
      fFromFolder(std::move(pFromFolder)),
      fEnumerator(std::move(pEnumerator)),
      fRoot(*pEngine.fConfiguration),
      fThreadPool(*pEngine.fWorkerThreadPool),
      fFolderDateBasedOnFilesOnly(fRoot.GetFolderDateBasedOnFilesOnly()),
      fMode(pMode) {}

void TScanJob::Execute() {
  fFromFolder->ExcludeFolderState(fsUpdatePending);
  if (IsCancelled() || !fRoot.IsFolderToBeScanned(*fFromFolder)) {
    fFromFolder->ExcludeFolderState(fsScanning);
    return;
  }
  if (fOpen && !(fEnumerator = std::exchange(fOpen, nullptr)())) {
    fFromFolder->ExcludeFolderState(fsScanning);
    return;
  }
  fFiles = fEngine.TakeAccumulator();
  if (fMode == TScanMode::smRefresh)
    RefreshFolder();
  else
    ScanFolder(*fFromFolder, *fEnumerator);
  fEnumerator = nullptr;
  ScanWaiting();
  fEngine.GiveAccumulator(std::move(fFiles));
}

void TScanJob::ScanWaiting() {
  while (fFirstWaiting < fWaiting.size()) {
    if (ShouldQueue()) {
      // The folder nearest to the top is likely to have the most beneath it: the best to give away.
      Queue(std::move(fWaiting[fFirstWaiting++]));
      continue;
    }
    TWaiting next = std::move(fWaiting.back());
    fWaiting.pop_back();
    if (IsCancelled() || !fRoot.IsFolderToBeScanned(*next.fFolder)) {
      next.fFolder->ExcludeFolderState(fsScanning);
      continue;
    }
    TRef<IHierarchicalEnumerator> enumerator =
        next.fParent->CreateChildEnumerator(next.fFolder->GetObjectName(), next.fFolder->GetAttributes());
    next.fParent = nullptr;  // with its last child on the way, the parent's handle can go
    ScanFolder(*next.fFolder, *enumerator);
  }
}

bool TScanJob::ShouldQueue() const {
  if (IsCancelled()) return false;
  const int32_t queued = fThreadPool.GetQueueLength();
  if (queued <= fThreadPool.GetMaxRunningThreads()) return true;
  return queued <= kMostQueuedPerThread * fThreadPool.GetThreadCount() && fThreadPool.IsCpuUsageBelowMax();
}

void TScanJob::Queue(TWaiting pWaiting) {
  TRef<IHierarchicalEnumerator> enumerator =
      pWaiting.fParent->CreateChildEnumerator(pWaiting.fFolder->GetObjectName(), pWaiting.fFolder->GetAttributes());
  fThreadPool.AddWorkItem(
      MakeRef<TScanJob>(fEngine, std::move(pWaiting.fFolder), std::move(enumerator), TScanMode::smNew));
}

void TScanJob::ScanFolder(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  ListEntries(pFolder, pEnumerator);
  EndListing(pFolder, pEnumerator);
  const TFileGroupContents contents = fFiles->Finish(pFolder);
  pFolder.AddFiles(contents, true);
  pFolder.ExcludeFolderState(fsScanning);
  if (!IsCancelled()) pFolder.FinishPart();  // a folder that was left early, and all above it, stay unfinished
}

// Some errors are raised instead of told, by a listing that then tells them as well. They end this listing like any
// other; left to run up, they would take all folders with them that wait behind this one.
bool TScanJob::NextEntry(IHierarchicalEnumerator& pEnumerator) {
  try {
    return pEnumerator.Next();
  } catch (const EOSError& error) {
    fRaisedError = error.Code();
    return false;
  }
}

void TScanJob::ListEntries(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  fFiles->Begin(pEnumerator.GetPathLength());
  fChildren.clear();
  fToBeEntered.clear();
  fExcluded = 0;
  fRaisedError = 0;
  IEntryFilter* const filter = fFiles->EntryFilter();
  if (filter) filter->BeginFolder(pEnumerator);
  while (NextEntry(pEnumerator)) {
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
  if (filter) filter->EndFolder();
}

void TScanJob::AddFolderEntry(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  TRef<TCustomFolderData> child = pFolder.MakeChild(pEnumerator.GetObjectName(), pEnumerator.GetEntryValues(),
                                                    fFiles->OwnerKeyOf(pEnumerator), !fFolderDateBasedOnFilesOnly);
  if (pEnumerator.CanDescend()) {
    child->IncludeFolderState(fsScanning);
    child->BeginScan(1);
    fToBeEntered.push_back(child);
  } else {
    child->IncludeFolderState(fsSubFolderScanningFinished);
  }
  fChildren.push_back(std::move(child));
}

// The children enter the tree and the waiting list; errors and progress are told.
void TScanJob::EndListing(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator) {
  const auto folders = static_cast<int64_t>(fChildren.size());
  pFolder.BeginScan(1 + static_cast<int32_t>(fToBeEntered.size()));
  pFolder.AppendChildren(std::move(fChildren));
  if (fFirstWaiting == fWaiting.size()) {
    fWaiting.clear();
    fFirstWaiting = 0;
  }
  // From the back, the first listed comes first.
  for (auto child = fToBeEntered.rbegin(); child != fToBeEntered.rend(); ++child)
    fWaiting.push_back({std::move(*child), TRef<IHierarchicalEnumerator>(&pEnumerator)});
  const bool partial = folders > 0 || fFiles->FileCount() > 0;
  if (pEnumerator.GetErrorCode() != 0)
    fRoot.RecordError(pFolder, pEnumerator, partial);
  else if (fRaisedError != 0)
    fRoot.RecordError(pFolder, *MakeRef<TPathNotFoundEnumerator>(pEnumerator.GetPath(), fRaisedError, 0), partial);
  fRoot.CountScanned(pFolder, fFiles->FileCount(), folders, fFiles->Values().fSize, fExcluded);
}

// --- refresh -------------------------------------------------------------------------------------------------------

void TScanJob::RefreshFolder() {
  TCustomFolderData& folder = *fFromFolder;
  boost::unordered_flat_map<std::u16string_view, TRef<IFolderData>> gone;
  for (TRef<IFolderData>& child : folder.FindSubFolders())
    if (!child->IsFileGroup()) gone.emplace(child->GetObjectName(), child);
  const auto known = gone;  // keeps the names alive
  ListEntries(folder, *fEnumerator);
  std::vector<TRef<TCustomFolderData>> added;
  for (TRef<TCustomFolderData>& child : fChildren) {
    if (gone.erase(child->GetObjectName()) > 0) continue;
    if (known.contains(child->GetObjectName())) continue;
    child->IncludeFolderState(fsDetectedDuringRefresh);
    LogDebug(u"TCustomFolderData.RefreshNonRecursive: Found new subfolder \"" + std::u16string(child->GetObjectName()) +
             u"\" in \"" + folder.GetFullPath() + u"\".");
    added.push_back(child);
  }
  std::erase_if(fToBeEntered, [](const TRef<TCustomFolderData>& pChild) {
    return (pChild->GetFolderState() & fsDetectedDuringRefresh) == 0;
  });
  fChildren = std::move(added);
  // A listing that broke off says nothing of what it did not reach.
  if (fEnumerator->GetErrorCode() == 0 && fRaisedError == 0 && !IsCancelled())
    for (auto& [name, child] : gone) child->Remove();
  folder.GetRoot()->ForgetOwnEntries(folder);
  const int32_t unfinished = folder.CountUnfinishedChildren();
  EndListing(folder, *fEnumerator);
  folder.AnnounceParts(unfinished);  // those that a cancelled scan left; the new ones are announced already
  folder.ReplaceFiles(fFiles->Finish(folder));
  folder.ExcludeFolderState(fsScanning);
  if (!IsCancelled()) folder.FinishPart();
}

}  // namespace Vantrel::ScanEngine

#include "search/duplicates/DuplicateSearchWorkItem.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "scan/engine/ScanEngine.h"
#include "search/duplicates/Candidates.h"
#include "search/duplicates/DuplicateGroups.h"

namespace Vantrel::Search {

namespace {

// How many sub work items wait for each thread, so that no worker is ever without work.
constexpr int32_t kQueuedPerThread = 64;

int64_t BytesOf(const std::vector<TRef<TDuplicateFile>>& pFiles, TChecksumPass pPass,
                const TDuplicateSearchSettings& pSettings) {
  int64_t bytes = 0;
  for (const TRef<TDuplicateFile>& file : pFiles) bytes += TChecksumReader::BytesOf(file->GetSize(), pPass, pSettings);
  return bytes;
}

}  // namespace

TDuplicateSearchWorkItem::TDuplicateSearchWorkItem(TDuplicateSearchSettings pSettings,
                                                   std::vector<TFoundItem> pCandidates, TRef<TCancellationToken> pToken)
    : TBasicWorkItem(TRef<ICancellationIndicator>(pToken.get())),
      fRun(std::move(pSettings), std::move(pToken)),
      fDuplicatesCompareTypes(fRun.Settings().fDuplicatesCompareTypes),
      fSmallChecksumSize(fRun.Settings().fSmallChecksumSize),
      fSearchMode(fRun.Settings().fSearchMode),
      fOriginalCandidatesList(std::move(pCandidates)),
      fOnItemDone([this] {
        fItemsRemaining.fetch_sub(1);
        QueueSome();
      }),
      fChecksumThreadPool(std::make_unique<ThreadPool::TWorkerThreadPool>(fRun.Settings().fPool)) {
  const int32_t threads = fRun.Settings().fReadsInOrder ? 1 : std::max(1, fRun.Settings().fThreads);
  fChecksumThreadPool->SetMaxRunningThreads(threads);
  // Checksums take processor time. So a thread for each processor starts at once.
  fChecksumThreadPool->SetMinWorkerThreads(std::min(threads, ProcessorCount()));
  fChecksumThreadPool->SetPriority(fRun.Settings().fPriority);
  fChecksumThreadPool->SetMaxCpuUsage(ScanEngine::CpuCapOf(ProcessorCount()));
  fChecksumThreadPool->SetOnAllWorkItemsDone([this] { fRun.TellChange(); });
  const TOnNewDuplicate& onNew = fRun.Settings().fOnNewDuplicateAdded;
  const TOnNewDuplicate tell = [this, onNew](const TRef<IHierarchicalObject>& pNew) {
    fRun.CountDuplicate();
    if (onNew) onNew(pNew);
  };
  const bool areFolders = fSearchMode == TDuplicatesSearchMode::DuplicateFolders;
  fDuplicateGroupGenerator = MakeRef<TDuplicatesGroupGenerator>(areFolders ? TOnNewDuplicate() : tell);
  fDuplicateFolderGroups = MakeRef<TDuplicatesGroupGenerator>(tell);
}

TDuplicateSearchWorkItem::~TDuplicateSearchWorkItem() {
  Cancel();
}

void TDuplicateSearchWorkItem::SetPaused(bool pPaused) {
  fRun.SetPaused(pPaused);
  fChecksumThreadPool->SetPaused(pPaused);
}

void TDuplicateSearchWorkItem::Cancel() {
  fRun.Token()->Cancel();
  SetPaused(false);
}

TDuplicateResult TDuplicateSearchWorkItem::TakeResult() {
  fResult.fNotes = fRun.Notes();
  return std::move(fResult);
}

void TDuplicateSearchWorkItem::DoWork() {
  if (fSearchMode == TDuplicatesSearchMode::DuplicateFolders)
    SearchFolders();
  else
    SearchFiles();
}

void TDuplicateSearchWorkItem::SearchFiles() {
  RegroupCandidates();
  CalculateChecksums();
  MakeFileResult();
}

void TDuplicateSearchWorkItem::RegroupCandidates() {
  fRun.BeginPhase(TDuplicatesPhase::dpIdentifying, 0, 0);
  TCandidates candidates = FindCandidates(std::move(fOriginalCandidatesList), fRun.Settings());
  fCandidatesList = std::move(candidates.fFiles);
  fOriginalCandidatesList = std::move(candidates.fAlone);
}

void TDuplicateSearchWorkItem::CalculateChecksums() {
  fRunAgainForLargeChecksums = ComparesContents(fDuplicatesCompareTypes) && fSmallChecksumSize != 0;
  const bool inOrder = fRun.Settings().fReadsInOrder;
  if (inOrder) SortByPlaceOnDisk(fCandidatesList);
  const auto phase = fRunAgainForLargeChecksums ? TDuplicatesPhase::dpSmallChecksums : TDuplicatesPhase::dpBigChecksums;
  TFiles still = RunPass(phase, fCandidatesList, TChecksumPass::cpFirst);
  if (!fRunAgainForLargeChecksums) return;
  // The largest first, so that no worker is left with one at the end.
  if (inOrder)
    SortByPlaceOnDisk(still);
  else
    std::stable_sort(still.begin(), still.end(), [](const TRef<TDuplicateFile>& pA, const TRef<TDuplicateFile>& pB) {
      return pA->GetSize() > pB->GetSize();
    });
  LeaveOutDifferentPieces(still);
  RunPass(TDuplicatesPhase::dpBigChecksums, still, TChecksumPass::cpWhole);
}

void TDuplicateSearchWorkItem::LeaveOutDifferentPieces(TFiles& pFiles) {
  TFiles large;
  std::copy_if(pFiles.begin(), pFiles.end(), std::back_inserter(large), [this](const TRef<TDuplicateFile>& pFile) {
    return TChecksumReader::HasPieces(pFile->GetSize(), fRun.Settings());
  });
  std::unordered_set<const TDuplicateFile*> different;
  for (const TRef<TDuplicateFile>& file : large) different.insert(file.get());
  for (const TRef<TDuplicateFile>& file : RunPass(TDuplicatesPhase::dpSmallChecksums, large, TChecksumPass::cpPieces))
    different.erase(file.get());
  std::erase_if(pFiles, [&](const TRef<TDuplicateFile>& pFile) { return different.contains(pFile.get()); });
}

TDuplicateSearchWorkItem::TFiles TDuplicateSearchWorkItem::RunPass(TDuplicatesPhase pPhase, const TFiles& pFiles,
                                                                   TChecksumPass pPass) {
  if (pFiles.empty() || fRun.IsCanceled()) return {};
  const bool reads = ComparesContents(fDuplicatesCompareTypes);
  fRun.BeginPhase(pPhase, static_cast<int64_t>(pFiles.size()), reads ? BytesOf(pFiles, pPass, fRun.Settings()) : 0);
  const TRef<TDuplicatesGroupGenerator> ofSome = MakeRef<TDuplicatesGroupGenerator>();
  RunSubWorkItems(pFiles.size(), [&](size_t pIndex) {
    return MakeRef<TDuplicateQueryHashWorkItem>(
        fRun, fOnItemDone, TDuplicatesWorkItemParameters{pFiles[pIndex], pPass, fDuplicateGroupGenerator, ofSome});
  });
  TFiles still;
  for (const TRef<TDuplicatesGroup>& group : ofSome->Groups())
    for (const TRef<IHierarchicalObject>& file : group->Files())
      still.emplace_back(static_cast<TDuplicateFile*>(file.get()));
  return still;
}

TVerifyGroupWorkItem::TGroups TDuplicateSearchWorkItem::EqualFiles() {
  TVerifyGroupWorkItem::TGroups groups;
  int64_t bytes = 0;
  for (const TRef<TDuplicatesGroup>& group : fDuplicateGroupGenerator->Groups()) {
    TFiles files;
    for (const TRef<IHierarchicalObject>& file : group->Files())
      if (auto* item = static_cast<TDuplicateFile*>(file.get()); !item->fHasLeft) files.emplace_back(item);
    if (files.size() < 2) continue;
    bytes += static_cast<int64_t>(files.size()) * files.front()->GetSize();
    groups.push_back(std::move(files));
  }
  if (!fRun.Settings().fVerify || !ComparesContents(fDuplicatesCompareTypes)) return groups;
  fRun.BeginPhase(TDuplicatesPhase::dpIdentifying, static_cast<int64_t>(groups.size()), bytes);
  std::vector<TVerifyGroupWorkItem::TGroups> verified(groups.size());
  RunSubWorkItems(groups.size(), [&](size_t pIndex) {
    return MakeRef<TVerifyGroupWorkItem>(fRun, fOnItemDone, std::move(groups[pIndex]), verified[pIndex]);
  });
  groups.clear();
  for (TVerifyGroupWorkItem::TGroups& some : verified) {
    // Files with one checksum and different bytes: from now on their keys differ as well.
    for (size_t i = 1; i < some.size(); ++i)
      for (const TRef<TDuplicateFile>& file : some[i]) file->fHash.fBytes.back() ^= static_cast<uint8_t>(i);
    std::move(some.begin(), some.end(), std::back_inserter(groups));
  }
  return groups;
}

void TDuplicateSearchWorkItem::MakeFileResult() {
  const TVerifyGroupWorkItem::TGroups groups = EqualFiles();
  if (fSearchMode == TDuplicatesSearchMode::UniqueFiles) return MakeUniqueResult(groups);
  for (const TFiles& files : groups) fResult.fGroups.push_back(GroupOfFiles(files));
  SortGroups(fResult.fGroups);
  for (const TDuplicateGroup& group : fResult.fGroups) fResult.fWasted += group.fWasted;
}

void TDuplicateSearchWorkItem::MakeUniqueResult(const TVerifyGroupWorkItem::TGroups& pGroups) {
  fResult.fUnique = std::move(fOriginalCandidatesList);
  // What a stopped search has not read may have duplicates.
  if (fRun.IsCanceled()) return;
  std::unordered_set<const TDuplicateFile*> inGroups;
  for (const TFiles& files : pGroups)
    for (const TRef<TDuplicateFile>& file : files) inGroups.insert(file.get());
  for (const TRef<TDuplicateFile>& file : fCandidatesList) {
    const TDuplicateFile& primary = file->Primary();
    if (!primary.fHasLeft && !file->fHasLeft && !inGroups.contains(&primary)) fResult.fUnique.push_back(file->fItem);
  }
}

void TDuplicateSearchWorkItem::SearchFolders() {
  fRun.BeginPhase(TDuplicatesPhase::dpIdentifying, 0, 0);
  TFolderContents contents(std::move(fOriginalCandidatesList), fRun.Settings());
  std::vector<TFolderNode*> candidates = contents.Candidates(fRun.Settings());
  // Each round leaves out folders, and with them files, whose counterparts are then alone.
  for (size_t before = SIZE_MAX; candidates.size() < before;) {
    before = candidates.size();
    fCandidatesList = contents.FilesOf(candidates);
    candidates = contents.Candidates(fRun.Settings());
  }
  fCandidatesList = contents.FilesOf(candidates);
  std::erase_if(fCandidatesList, [](const TRef<TDuplicateFile>& pFile) {
    if (pFile->GetSize() > 0) return false;
    pFile->fHasHash = true;  // all empty files are equal
    return true;
  });
  CalculateChecksums();
  if (fRun.Settings().fVerify) EqualFiles();
  contents.MarkIncomplete();
  candidates = contents.Candidates(fRun.Settings());
  if (fRun.IsCanceled()) return;
  fRun.BeginPhase(TDuplicatesPhase::dpFolderChecksums, static_cast<int64_t>(candidates.size()), 0);
  TChecksumKnownFolders known;
  fFolderWorkItemsRunning = true;
  RunSubWorkItems(candidates.size(), [&](size_t pIndex) {
    return MakeRef<TDuplicateFolderWorkItem>(
        fRun, fOnItemDone,
        TDuplicatesWorkItemParameters{candidates[pIndex]->fItem, TChecksumPass::cpWhole, fDuplicateFolderGroups},
        *candidates[pIndex], known);
  });
  fFolderWorkItemsRunning = false;
  fResult.fGroups = GroupsOfFolders(fDuplicateFolderGroups->Groups(), contents.ByItem());
  fResult.fWasted = WastedByFolders(fResult.fGroups);
}

// --- sub work items --------------------------------------------------------------------------------------------------

void TDuplicateSearchWorkItem::RunSubWorkItems(size_t pCount, const TCreateItem& pCreate) {
  if (pCount == 0 || fRun.IsCanceled()) return;
  fCreateItem = pCreate;
  fItemsRemaining = static_cast<int32_t>(pCount);
  fSubWorkItemsActive = true;
  {
    TCriticalSectionLock lock(fLock);
    fNextItem = 0;
    fItemCount = pCount;
  }
  // Each call may start a thread.
  for (int32_t i = 0; i < fChecksumThreadPool->GetMaxRunningThreads(); ++i) QueueSome();
  WaitForSubWorkItems();
  fSubWorkItemsActive = false;
}

void TDuplicateSearchWorkItem::QueueSome() {
  std::vector<TRef<ThreadPool::IWorkItem>> items;
  {
    TCriticalSectionLock lock(fLock);
    const int32_t threads = fChecksumThreadPool->GetMaxRunningThreads();
    const size_t most = static_cast<size_t>(kQueuedPerThread);
    if (fRun.IsCanceled() || fChecksumThreadPool->GetQueueLength() > threads * kQueuedPerThread / 2) return;
    for (; fNextItem < fItemCount && items.size() < most; ++fNextItem) items.push_back(fCreateItem(fNextItem));
  }
  if (items.empty()) return;
  try {
    fChecksumThreadPool->AddWorkItems(items);
  } catch (...) {
    // No thread can be had: the work is done here.
    CodeOfCaughtException("TDuplicateSearchWorkItem.QueueSome");
    for (const TRef<ThreadPool::IWorkItem>& item : items) item->Run();
  }
}

// Looks at its own status every 100 ms, or earlier when the pool has no more work.
void TDuplicateSearchWorkItem::WaitForSubWorkItems() {
  for (;;) {
    const uint64_t seen = fRun.CountChanges();
    if (fRun.IsCanceled()) {
      SetStatus(ThreadPool::TTaskStatus::tsCanceled);
      fChecksumThreadPool->TerminateAllWorkItems();
      return;
    }
    SetStatus(fRun.IsPaused() ? ThreadPool::TTaskStatus::tsPaused : ThreadPool::TTaskStatus::tsRunning);
    if (fItemsRemaining.load() <= 0 && fChecksumThreadPool->GetWorkItemsCount() == 0) return;
    fRun.WaitForChange(seen);
  }
}

}  // namespace Vantrel::Search

#pragma once

// The work item that controls a search for duplicates.

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "scan/engine/ThreadPool.h"
#include "search/duplicates/DuplicateWorkItems.h"
#include "search/duplicates/DuplicatesRun.h"

namespace Vantrel::Search {

// Finds the duplicates among the candidates: regroups them by what need not be read, has their checksums computed on a
// pool of its own, and makes the result.
//
// A file is read only if another one shares its size and all else that is compared. Names of one file are read once. A
// large file's first checksum is of some of its bytes, a very large one's second checksum of more, and only what still
// agrees is read as a whole. So a file is opened at most three times, and four times if bytes are compared.
class TDuplicateSearchWorkItem final : public ThreadPool::TBasicWorkItem {
 public:
  TDuplicateSearchWorkItem(TDuplicateSearchSettings pSettings, std::vector<TFoundItem> pCandidates,
                           TRef<TCancellationToken> pToken = MakeRef<TCancellationToken>());
  ~TDuplicateSearchWorkItem() override;

  // Any thread.
  void SetPaused(bool pPaused);
  // What was found stays. May be called again when a worker hangs in the system.
  void Cancel();
  bool WasCancelled() const { return fRun.IsCanceled(); }
  TDuplicateProgress GetProgress() const { return fRun.GetProgress(); }
  // After the end.
  TDuplicateResult TakeResult();

 protected:
  void Execute() override { DoWork(); }

 private:
  using TFiles = std::vector<TRef<TDuplicateFile>>;
  using TCreateItem = std::function<TRef<ThreadPool::IWorkItem>(size_t pIndex)>;

  void DoWork();
  void SearchFiles();
  void SearchFolders();
  // The files that share the compare keys with others. The others stay in fOriginalCandidatesList.
  void RegroupCandidates();
  // All passes over fCandidatesList.
  void CalculateChecksums();
  // Few bytes tell many large files apart that begin and end alike.
  void LeaveOutDifferentPieces(TFiles& pFiles);
  // Returns the files whose checksums of some bytes are those of others.
  TFiles RunPass(TDuplicatesPhase pPhase, const TFiles& pFiles, TChecksumPass pPass);
  // The groups without files that have left, their bytes compared if that is wanted.
  TVerifyGroupWorkItem::TGroups EqualFiles();
  // Runs so many sub work items, and waits for them. Only a few are made at a time.
  void RunSubWorkItems(size_t pCount, const TCreateItem& pCreate);
  void QueueSome();
  void WaitForSubWorkItems();

  void MakeFileResult();
  // What is in no group of files.
  void MakeUniqueResult(const TVerifyGroupWorkItem::TGroups& pGroups);

  TDuplicatesRun fRun;
  const TDuplicatesCompareTypes fDuplicatesCompareTypes;
  const int64_t fSmallChecksumSize;
  const TDuplicatesSearchMode fSearchMode;
  bool fRunAgainForLargeChecksums = false;
  // The files still in play, and all others of those handed in.
  TFiles fCandidatesList;
  std::vector<TFoundItem> fOriginalCandidatesList;
  TRef<IDuplicatesGroupGenerator> fDuplicateGroupGenerator;
  TRef<IDuplicatesGroupGenerator> fDuplicateFolderGroups;
  TDuplicateResult fResult;

  // Of the sub work items that run now.
  TCreateItem fCreateItem;
  const std::function<void()> fOnItemDone;
  std::atomic<bool> fSubWorkItemsActive{false};
  std::atomic<bool> fFolderWorkItemsRunning{false};
  std::atomic<int32_t> fItemsRemaining{0};
  TCriticalSection fLock;
  size_t fNextItem GUARDED_BY(fLock) = 0;
  size_t fItemCount GUARDED_BY(fLock) = 0;
  std::unique_ptr<ThreadPool::TWorkerThreadPool> fChecksumThreadPool;  // ends before all else
};

}  // namespace Vantrel::Search

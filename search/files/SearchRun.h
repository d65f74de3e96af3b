#pragma once

// What the workers of one search share: settings, counters, found items, errors, and the pool.

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/tree/Tokens.h"
#include "platform/threads/CriticalSection.h"
#include "search/files/FileFactsReader.h"
#include "search/files/FileSearch.h"

namespace Vantrel::Search {

// Outlives its jobs. All calls are for any thread.
class TSearchRun final : public IFactErrors {
 public:
  explicit TSearchRun(TFileSearchSettings pSettings);
  ~TSearchRun() override;

  const TFileSearchSettings& Settings() const { return fSettings; }
  const TRef<TCancellationToken>& Token() const { return fToken; }
  int64_t Now() const { return fPool->Now(); }

  // Queues the first jobs. If no thread can be started, it throws what the pool throws.
  void Start(std::vector<TRef<ThreadPool::IWorkItem>> pJobs);
  void EndAll();
  void SetPaused(bool pPaused);
  bool WaitForEnd(int64_t pMilliseconds);
  void FindEnough();
  bool HasFoundEnough() const { return fHasFoundEnough.load(std::memory_order_relaxed); }

  // Cheap, for each folder and for each block of a file.
  bool IsStopped() override;
  void FileFailed(const std::u16string& pPath, uint32_t pCode, std::string_view pText) override;
  void AddError(TSearchError pError);
  // Takes the list and leaves an empty one.
  void HandOver(std::vector<TFoundItem>& pFound);
  // Whether anything has been handed over.
  bool HasFound() const { return fFoundCount.load(std::memory_order_relaxed) > 0; }
  void Count(int64_t pFiles, int64_t pFolders);
  // pFolder is asked for only now and then.
  void ShowFolder(const std::function<std::u16string()>& pFolder);
  void CountGivenUp(int64_t pLines) { fGivenUp.fetch_add(pLines, std::memory_order_relaxed); }
  // Whether a worker with this many waiting pieces of work should give one away.
  bool ShouldShare(size_t pWaiting) const;
  // Whether so few jobs wait that a worker may soon find none.
  bool IsQueueShort() const { return fPool->GetQueueLength() <= fPool->GetMaxRunningThreads(); }
  // False when the job cannot be queued. The worker then does it itself.
  bool Queue(TRef<ThreadPool::IWorkItem> pJob);

  std::vector<TFoundItem> TakeFound();
  TSearchProgress GetProgress() const;
  std::vector<TSearchError> GetErrors() const;
  int64_t GivenUp() const { return fGivenUp.load(std::memory_order_relaxed); }

 private:
  const TFileSearchSettings fSettings;
  const TRef<TCancellationToken> fToken = MakeRef<TCancellationToken>();
  std::atomic<int64_t> fFiles{0};
  std::atomic<int64_t> fFolders{0};
  std::atomic<int64_t> fFoundCount{0};
  std::atomic<int64_t> fGivenUp{0};
  std::atomic<int64_t> fLastShown{0};  // when the folder was last noted, by the pool's clock
  std::atomic<bool> fHasFoundEnough{false};
  std::atomic<bool> fIsPaused{false};
  mutable TCriticalSection fLock;
  std::condition_variable fChanged;
  bool fHasEnded GUARDED_BY(fLock) = false;
  std::vector<std::vector<TFoundItem>> fFound GUARDED_BY(fLock);  // as they were handed over
  std::vector<TSearchError> fErrors GUARDED_BY(fLock);
  std::u16string fLastFolder GUARDED_BY(fLock);
  std::unique_ptr<ThreadPool::TWorkerThreadPool> fPool;  // ends before all else
};

}  // namespace Vantrel::Search

#pragma once

// The thread pool: work items, their queue, worker threads, and the rules that start and end threads.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "platform/system/System.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::ThreadPool {

enum class TTaskStatus : uint8_t {
  tsCreated,
  tsWaitingToRun,
  tsRunning,
  tsPaused,  // the item waits in the middle of its work
  tsCompleted,
  tsCanceled,
  tsFailed
};

// A piece of work that a worker runs once.
class IWorkItem : public IInterface {
 public:
  // Runs the work on the calling worker and calls the completion callback. Throws nothing; a failure is kept as the
  // status.
  virtual void Run() = 0;
  virtual TTaskStatus GetStatus() const = 0;
};

// Passes a completion callback to the user-interface thread. The program sets it once, before any work. Without it,
// callbacks run on the worker.
using TSynchronizer = std::function<void(std::function<void()>)>;
void SetSynchronizer(TSynchronizer pSynchronizer);

class TBasicWorkItem : public TInterfaced<IWorkItem> {
 public:
  using TCallback = std::function<void(TBasicWorkItem&)>;

  void Run() final;
  TTaskStatus GetStatus() const final { return fStatus.load(std::memory_order_acquire); }
  // Call it before the item is queued.
  void SetOnWorkDone(TCallback pCallback, bool pSynchronized) {
    fOnWorkDone = std::move(pCallback);
    fFireOnWorkDoneSynchronized = pSynchronized;
  }

 protected:
  explicit TBasicWorkItem(TRef<ICancellationIndicator> pCancellationToken = nullptr)
      : fCancellationToken(std::move(pCancellationToken)) {}
  virtual void Execute() = 0;
  bool IsCancelled() const { return fCancellationToken && fCancellationToken->IsCancelled(); }
  void SetStatus(TTaskStatus pStatus) { fStatus.store(pStatus, std::memory_order_release); }

  const TRef<ICancellationIndicator> fCancellationToken;

 private:
  TCallback fOnWorkDone;
  std::atomic<TTaskStatus> fStatus{TTaskStatus::tsCreated};
  bool fFireOnWorkDoneSynchronized = false;
};

// Work items that wait for a thread.
class TWorkItemsQueue {
 public:
  void Append(TRef<IWorkItem> pItem) { fItems.push_back(std::move(pItem)); }
  void Prepend(TRef<IWorkItem> pItem) { fItems.push_front(std::move(pItem)); }
  TRef<IWorkItem> TakeFirst();          // nullptr when empty
  bool Remove(const IWorkItem& pItem);  // false when the item is not in the queue
  size_t Count() const { return fItems.size(); }
  std::deque<TRef<IWorkItem>> TakeAll() { return std::exchange(fItems, {}); }

 private:
  std::deque<TRef<IWorkItem>> fItems;
};

class TWorkerThreadPool;

// One thread of a pool.
class TWorkerThread {
 public:
  explicit TWorkerThread(TWorkerThreadPool& pPool) : fThreadPool(pPool) {}
  void Start();  // throws std::system_error when the system grants no thread
  void Join() { fThread.join(); }

 private:
  void Execute() noexcept;

  TWorkerThreadPool& fThreadPool;
  TRef<IWorkItem> fWorkItem;  // the item that the thread runs
  std::thread fThread;
};

// Common to all pools: the number and priority of the threads, and whether the pool works, pauses or ends.
class TCustomThreadPool {
 public:
  virtual ~TCustomThreadPool() = default;
  int32_t GetMaxRunningThreads() const { return FMaxRunningThreads.load(std::memory_order_relaxed); }
  void SetMaxRunningThreads(int32_t pValue) { FMaxRunningThreads = pValue < 1 ? 1 : pValue; }
  void SetPriority(int32_t pStep) { FPriority = pStep; }  // applies to threads started later

 protected:
  std::atomic<int32_t> FMaxRunningThreads{1};
  std::atomic<int32_t> FPriority{3};
  TCriticalSection fLock;
  bool FPaused GUARDED_BY(fLock) = false;
  bool fTerminated GUARDED_BY(fLock) = false;
  bool fDestryoing GUARDED_BY(fLock) = false;
};

// Runs work items on threads. Threads start on demand and end when they have been idle for fMaxIdleTime.
class TWorkerThreadPool : public TCustomThreadPool {
 public:
  struct TSettings {
    bool fInitializeCOM = true;
    bool fUseLIFO = false;
    int32_t fMaxIdleTime = 60'000;  // milliseconds
    int32_t fMinWorkerThreads = 1;
    // These functions replace the machine in tests. They tell whether the system grants a thread, the processor time in
    // use in percent, and the clock in milliseconds.
    std::function<bool()> fGrantsThread;
    std::function<std::optional<int>()> fCpuUsage;  // no value when not measured yet
    std::function<int64_t()> fTickCount;
  };
  explicit TWorkerThreadPool(TSettings pSettings);
  // Waits for the running items and drops those that still wait. Must not run on one of the pool's own workers.
  ~TWorkerThreadPool() override;

  // Queues an item and starts a thread when the thread check allows it.
  //
  // If the system grants no further thread while one runs, that is no error. std::system_error when it grants not even
  // the first; std::bad_alloc when memory runs out. In both cases the items are not queued.
  //
  // EInvalidOperation while the pool is being destroyed. While TerminateAllWorkItems runs, the item is dropped
  // silently.
  void AddWorkItem(TRef<IWorkItem> pItem);
  void AddWorkItems(std::vector<TRef<IWorkItem>> pItems);
  // Drops all waiting items and waits for the running ones. The pool takes new work afterwards.
  void TerminateAllWorkItems();
  // While the pool is paused, no item begins, and items hold where they call HoldWhilePaused.
  void SetPaused(bool pPaused);
  // Called by an item between two pieces of its work. Returns when the pool goes on or ends.
  void HoldWhilePaused();
  // The threads that hold in the middle of an item.
  int32_t GetHeldThreads() const { return fHeldThreads.load(std::memory_order_acquire); }
  // Ends all threads and waits for them. Adding work afterwards is an error.
  void Shutdown();

  void SetMinWorkerThreads(int32_t pValue) { fMinWorkerThreads = pValue; }
  void SetMaxCpuUsage(int32_t pPercent);  // clamped to 0..100
  int32_t GetMaxCpuUsage() const { return fMaxCpuUsage.load(std::memory_order_relaxed); }
  int32_t GetMinWorkerThreads() const { return fMinWorkerThreads.load(std::memory_order_relaxed); }
  // The worker that finished the last item calls it, each time no item is left. Set it before work is added.
  void SetOnAllWorkItemsDone(std::function<void()> pCallback) { fOnAllWorkItemsDone = std::move(pCallback); }

  // Items queued or running.
  int32_t GetWorkItemsCount() const { return fWorkItemsCount.load(std::memory_order_acquire); }
  // The number of items that wait for a thread. It is an estimate, read without a lock.
  int32_t GetQueueLength() const { return fQueueLength.load(std::memory_order_relaxed); }
  int64_t Now() const { return fSettings.fTickCount(); }  // milliseconds
  int32_t GetThreadCount() const { return fThreadCount.load(std::memory_order_relaxed); }
  // Whether the machine has processor time for another thread. Until the first measurement is done, the answer is yes
  // for as many threads as there are processors. Otherwise a short scan would end before it shared its work. More
  // threads than that would only slow each other down.
  bool IsCpuUsageBelowMax();

 private:
  friend class TWorkerThread;

  void Queue(const std::vector<TRef<IWorkItem>>& pItems) REQUIRES(fLock);
  void Unqueue(const std::vector<TRef<IWorkItem>>& pItems) REQUIRES(fLock);
  // If no thread can run the items that were just added, removes them from the queue and throws.
  void CheckAddNewWorkerThread(const std::vector<TRef<IWorkItem>>& pAdded);
  void StartThread(int64_t pNow) REQUIRES(fLock);
  // Waits for an item. On nullptr the thread must end; the pool no longer counts it.
  TRef<IWorkItem> WaitForWorkItem(TWorkerThread& pThread);
  void LetThreadEnd(TWorkerThread& pThread) REQUIRES(fLock);
  void WorkItemDone(int32_t pCount);

  // Once the minimum number of threads runs, a new thread is considered at most this often.
  static constexpr int64_t kThreadCheckMilliseconds = 2;
  // After the system refused a thread, the pool asks again at most this often.
  static constexpr int64_t kRefusedThreadMilliseconds = 100;
  // How long a thread waits for the end of a pause before it looks again.
  static constexpr int64_t kHeldMilliseconds = 60'000;

  TCpuUsageMeter fCpuMeter;
  const TSettings fSettings;
  std::function<void()> fOnAllWorkItemsDone;
  std::atomic<int32_t> fMinWorkerThreads;
  std::atomic<int32_t> fMaxCpuUsage{100};
  std::atomic<int32_t> fWorkItemsCount{0};
  std::atomic<int32_t> fQueueLength{0};
  std::atomic<int32_t> fThreadCount{0};
  std::atomic<int32_t> fHeldThreads{0};
  std::atomic<bool> fHolds{false};  // FPaused, for a look without the lock
  std::atomic<int64_t> fLastCheckAddNewWorkerThread;
  std::atomic<int64_t> fNoThreadBefore{INT64_MIN};  // a tick count: no thread is asked for before it
  std::condition_variable fNewWorkItemEvent;
  std::condition_variable fThreadOrItemEnded;
  std::condition_variable fGoesOn;  // after a pause
  bool fIsTerminatingAllWorkitems GUARDED_BY(fLock) = false;
  int32_t fIdleThreads GUARDED_BY(fLock) = 0;
  TWorkItemsQueue fWorkerItemsQueue GUARDED_BY(fLock);
  std::list<TWorkerThread> fThreads GUARDED_BY(fLock);
  std::list<TWorkerThread> fEndedThreads GUARDED_BY(fLock);  // waiting to be joined
};

}  // namespace Vantrel::ThreadPool

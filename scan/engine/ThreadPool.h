#pragma once

// Work items, the queue, worker threads, and when one is started or ends.

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

enum class TTaskStatus : uint8_t { tsCreated, tsWaiting, tsRunning, tsDone, tsFailed, tsCancelled };

// Something that a worker runs once.
class IWorkItem : public IInterface {
 public:
  // Runs the work on the calling worker and tells the completion callback. Nothing is thrown: a failure is the status.
  virtual void Run() = 0;
  virtual TTaskStatus GetStatus() const = 0;
};

// Hands a completion callback over to the user-interface thread. Set once by the program, before any work; without it
// callbacks run on the worker.
using TSynchronizer = std::function<void(std::function<void()>)>;
void SetSynchronizer(TSynchronizer pSynchronizer);

class TBasicWorkItem : public TInterfaced<IWorkItem> {
 public:
  using TCallback = std::function<void(TBasicWorkItem&)>;

  void Run() final;
  TTaskStatus GetStatus() const final { return fStatus.load(std::memory_order_acquire); }
  // Set before the item is queued.
  void SetOnWorkDone(TCallback pCallback, bool pSynchronized) {
    fOnWorkDone = std::move(pCallback);
    fFireOnWorkDoneSynchronized = pSynchronized;
  }

 protected:
  explicit TBasicWorkItem(TRef<ICancellationIndicator> pCancellationToken = nullptr)
      : fCancellationToken(std::move(pCancellationToken)) {}
  virtual void Execute() = 0;
  bool IsCancelled() const { return fCancellationToken && fCancellationToken->IsCancelled(); }

  const TRef<ICancellationIndicator> fCancellationToken;

 private:
  TCallback fOnWorkDone;
  std::atomic<TTaskStatus> fStatus{TTaskStatus::tsCreated};
  bool fFireOnWorkDoneSynchronized = false;
};

// Work that waits for a thread.
class TWorkItemsQueue {
 public:
  void Append(TRef<IWorkItem> pItem) { fItems.push_back(std::move(pItem)); }
  void Prepend(TRef<IWorkItem> pItem) { fItems.push_front(std::move(pItem)); }
  TRef<IWorkItem> TakeFirst();          // nullptr when empty
  bool Remove(const IWorkItem& pItem);  // false when it is not there
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
  void Start();  // std::system_error when the system grants no thread
  void Join() { fThread.join(); }

 private:
  void Execute() noexcept;

  TWorkerThreadPool& fThreadPool;
  TRef<IWorkItem> fWorkItem;  // being run
  std::thread fThread;
};

// What every pool has: its threads' number and priority, and whether it works, pauses or ends.
class TCustomThreadPool {
 public:
  virtual ~TCustomThreadPool() = default;
  int32_t GetMaxRunningThreads() const { return FMaxRunningThreads.load(std::memory_order_relaxed); }
  void SetMaxRunningThreads(int32_t pValue) { FMaxRunningThreads = pValue < 1 ? 1 : pValue; }
  void SetPriority(int32_t pStep) { FPriority = pStep; }  // for threads started from now on

 protected:
  std::atomic<int32_t> FMaxRunningThreads{1};
  std::atomic<int32_t> FPriority{3};
  TCriticalSection fLock;
  bool FPaused GUARDED_BY(fLock) = false;
  bool fTerminated GUARDED_BY(fLock) = false;
  bool fDestryoing GUARDED_BY(fLock) = false;
};

// Runs work items on threads that are started on demand and end when they have been idle for long.
class TWorkerThreadPool : public TCustomThreadPool {
 public:
  struct TSettings {
    bool fInitializeCOM = true;
    bool fUseLIFO = false;
    int32_t fMaxIdleTime = 60'000;  // milliseconds
    int32_t fMinWorkerThreads = 1;
    // Replace the machine in tests: whether the system grants a thread, percent of processor time in use, and
    // milliseconds.
    std::function<bool()> fGrantsThread;
    std::function<std::optional<int>()> fCpuUsage;  // no value: not measured yet
    std::function<int64_t()> fTickCount;
  };
  explicit TWorkerThreadPool(TSettings pSettings);
  // Waits for the running items; items that still wait are dropped. Not from one of its own workers.
  ~TWorkerThreadPool() override;

  // Queues an item and starts a thread when the thread check says so. EInvalidOperation while the pool is being
  // destroyed; dropped without a word while all items are being terminated. That the system grants no further thread is
  // no error while one runs. std::system_error when it grants not even the first, std::bad_alloc when there is no
  // memory: the items are not in the queue then.
  void AddWorkItem(TRef<IWorkItem> pItem);
  void AddWorkItems(std::vector<TRef<IWorkItem>> pItems);
  // Drops all waiting items and waits for the running ones. The pool takes new work afterwards.
  void TerminateAllWorkItems();
  void SetPaused(bool pPaused);
  // Ends all threads and waits for them; adding work from now on is an error.
  void Shutdown();

  void SetMinWorkerThreads(int32_t pValue) { fMinWorkerThreads = pValue; }
  void SetMaxCpuUsage(int32_t pPercent);  // clamped to 0..100
  int32_t GetMaxCpuUsage() const { return fMaxCpuUsage.load(std::memory_order_relaxed); }
  int32_t GetMinWorkerThreads() const { return fMinWorkerThreads.load(std::memory_order_relaxed); }
  // Called by the worker that finished the last item, every time that none is left. Set before work is added.
  void SetOnAllWorkItemsDone(std::function<void()> pCallback) { fOnAllWorkItemsDone = std::move(pCallback); }

  // Items queued or running.
  int32_t GetWorkItemsCount() const { return fWorkItemsCount.load(std::memory_order_acquire); }
  // Items waiting for a thread; an estimate that costs no lock.
  int32_t GetQueueLength() const { return fQueueLength.load(std::memory_order_relaxed); }
  int32_t GetThreadCount() const { return fThreadCount.load(std::memory_order_relaxed); }
  // Whether the machine has processor time to spare for another thread. Until the first measurement is over, as many
  // threads as there are processors are taken to find room: a short scan would otherwise be over before it began to
  // share its work, and more of them would only get in each other's way.
  bool IsCpuUsageBelowMax();

 private:
  friend class TWorkerThread;

  void Queue(const std::vector<TRef<IWorkItem>>& pItems) REQUIRES(fLock);
  void Unqueue(const std::vector<TRef<IWorkItem>>& pItems) REQUIRES(fLock);
  // Takes the items that were just added back, and throws, when there is no thread at all for them.
  void CheckAddNewWorkerThread(const std::vector<TRef<IWorkItem>>& pAdded);
  void StartThread(int64_t pNow) REQUIRES(fLock);
  // nullptr: the thread ends, and the pool does not count it any more.
  TRef<IWorkItem> WaitForWorkItem(TWorkerThread& pThread);
  void LetThreadEnd(TWorkerThread& pThread) REQUIRES(fLock);
  void WorkItemDone(int32_t pCount);

  // A new thread is considered at most this often once the minimum runs.
  static constexpr int64_t kThreadCheckMilliseconds = 2;
  // After the system refused one, it is asked again at most this often.
  static constexpr int64_t kRefusedThreadMilliseconds = 100;

  TCpuUsageMeter fCpuMeter;
  const TSettings fSettings;
  std::function<void()> fOnAllWorkItemsDone;
  std::atomic<int32_t> fMinWorkerThreads;
  std::atomic<int32_t> fMaxCpuUsage{100};
  std::atomic<int32_t> fWorkItemsCount{0};
  std::atomic<int32_t> fQueueLength{0};
  std::atomic<int32_t> fThreadCount{0};
  std::atomic<int64_t> fLastCheckAddNewWorkerThread;
  std::atomic<int64_t> fNoThreadBefore{INT64_MIN};  // tick count
  std::condition_variable fNewWorkItemEvent;
  std::condition_variable fThreadOrItemEnded;
  bool fIsTerminatingAllWorkitems GUARDED_BY(fLock) = false;
  int32_t fIdleThreads GUARDED_BY(fLock) = 0;
  TWorkItemsQueue fWorkerItemsQueue GUARDED_BY(fLock);
  std::list<TWorkerThread> fThreads GUARDED_BY(fLock);
  std::list<TWorkerThread> fEndedThreads GUARDED_BY(fLock);  // to be joined
};

}  // namespace Vantrel::ThreadPool

#include "scan/engine/ThreadPool.h"

#include <algorithm>

#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::ThreadPool {

namespace {

TSynchronizer& Synchronizer() {
  static TSynchronizer synchronizer;
  return synchronizer;
}

}  // namespace

void SetSynchronizer(TSynchronizer pSynchronizer) {
  Synchronizer() = std::move(pSynchronizer);
}

void TBasicWorkItem::Run() {
  fStatus.store(TTaskStatus::tsRunning, std::memory_order_release);
  TTaskStatus result = TTaskStatus::tsDone;
  try {
    Execute();
    if (IsCancelled()) result = TTaskStatus::tsCancelled;
  } catch (const std::exception& error) {
    LogDebug(u"TBasicWorkItem.Run: " + FromUtf8(error.what()));
    result = TTaskStatus::tsFailed;
  }
  fStatus.store(result, std::memory_order_release);
  if (!fOnWorkDone) return;
  if (fFireOnWorkDoneSynchronized && Synchronizer())
    Synchronizer()([self = TRef<TBasicWorkItem>(this)] { self->fOnWorkDone(*self); });
  else
    fOnWorkDone(*this);
}

TRef<IWorkItem> TWorkItemsQueue::TakeFirst() {
  if (fItems.empty()) return nullptr;
  TRef<IWorkItem> item = std::move(fItems.front());
  fItems.pop_front();
  return item;
}

void TWorkerThread::Start() {
  fThread = std::thread([this] { Execute(); });
}

void TWorkerThread::Execute() {
  SetCurrentThreadName("worker");
  SetCurrentThreadPriority(fThreadPool.FPriority.load(std::memory_order_relaxed));
  TComInitializer com(fThreadPool.fSettings.fInitializeCOM);
  if (fThreadPool.fOnNewThread) fThreadPool.fOnNewThread();
  while ((fWorkItem = fThreadPool.WaitForWorkItem())) {
    fStatus.store(TStatus::tsWorking, std::memory_order_release);
    fWorkItem->Run();
    fWorkItem = nullptr;
    fStatus.store(TStatus::tsIdle, std::memory_order_release);
    fThreadPool.WorkItemDone(1);
  }
  fStatus.store(TStatus::tsEnded, std::memory_order_release);
  fThreadPool.ThreadEnds(*this);
}

namespace {

TWorkerThreadPool::TSettings Complete(TWorkerThreadPool::TSettings pSettings, TCpuUsageMeter& pMeter) {
  if (!pSettings.fCpuUsage) pSettings.fCpuUsage = [&pMeter] { return pMeter.Percent(); };
  if (!pSettings.fTickCount) pSettings.fTickCount = [] { return TickCount64(); };
  return pSettings;
}

}  // namespace

TWorkerThreadPool::TWorkerThreadPool(TSettings pSettings)
    : fSettings(Complete(std::move(pSettings), fCpuMeter)),
      fMinWorkerThreads(fSettings.fMinWorkerThreads),
      fLastCheckAddNewWorkerThread(fSettings.fTickCount()) {}

TWorkerThreadPool::~TWorkerThreadPool() {
  Shutdown();
}

void TWorkerThreadPool::SetMaxCpuUsage(int32_t pPercent) {
  fMaxCpuUsage = std::clamp(pPercent, 0, 100);
}

bool TWorkerThreadPool::IsCpuUsageBelowMax() {
  const std::optional<int> usage = fSettings.fCpuUsage();
  return usage ? *usage < GetMaxCpuUsage() : GetThreadCount() < ProcessorCount();
}

void TWorkerThreadPool::AddWorkItem(TRef<IWorkItem> pItem) {
  std::vector<TRef<IWorkItem>> items;
  items.push_back(std::move(pItem));
  AddWorkItems(std::move(items));
}

void TWorkerThreadPool::AddWorkItems(std::vector<TRef<IWorkItem>> pItems) {
  {
    TCriticalSectionLock lock(fLock);
    if (fDestryoing) throw EInvalidOperation("New workitems cannot be added to a threadpool that is destroying.");
    if (fIsTerminatingAllWorkitems) return;
    fWorkItemsCount.fetch_add(static_cast<int32_t>(pItems.size()), std::memory_order_acq_rel);
    for (TRef<IWorkItem>& item : pItems) {
      if (fSettings.fUseLIFO)
        fWorkerItemsQueue.Prepend(std::move(item));
      else
        fWorkerItemsQueue.Append(std::move(item));
    }
    fQueueLength.store(static_cast<int32_t>(fWorkerItemsQueue.Count()), std::memory_order_relaxed);
    for (size_t i = 0; i < pItems.size() && fIdleThreads > 0; ++i) fNewWorkItemEvent.notify_one();
  }
  CheckAddNewWorkerThread();
}

void TWorkerThreadPool::CheckAddNewWorkerThread() {
  const int64_t now = fSettings.fTickCount();
  const int32_t minimum = GetMinWorkerThreads();
  if (now - fLastCheckAddNewWorkerThread.load(std::memory_order_relaxed) < kThreadCheckMilliseconds &&
      GetThreadCount() > minimum)
    return;
  // Asked before the lock is taken, and only where the answer counts: it may read the system's counters.
  const bool cpuBelowMax = GetThreadCount() < minimum || IsCpuUsageBelowMax();
  std::vector<std::unique_ptr<TWorkerThread>> ended;
  {
    TCriticalSectionLock lock(fLock);
    fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed);
    const auto threads = static_cast<int32_t>(fThreads.size());
    if (threads >= GetMaxRunningThreads() || fWorkerItemsQueue.Count() == 0 || fTerminated || FPaused) return;
    // Beyond the minimum, an idle thread that is on its way to the item makes a new one needless.
    const bool idleThreadsSuffice = fIdleThreads >= static_cast<int32_t>(fWorkerItemsQueue.Count());
    if (threads >= minimum && (idleThreadsSuffice || !cpuBelowMax)) return;
    fThreads.push_back(std::make_unique<TWorkerThread>(*this));
    fThreadCount.store(threads + 1, std::memory_order_relaxed);
    fThreads.back()->Start();
    ended.swap(fEndedThreads);
  }
  for (const std::unique_ptr<TWorkerThread>& thread : ended) thread->Join();
}

TRef<IWorkItem> TWorkerThreadPool::WaitForWorkItem() {
  TCriticalSectionLock lock(fLock);
  const int64_t idleSince = TickCount64();
  while (true) {
    if (fTerminated) return nullptr;
    if (!FPaused) {
      if (TRef<IWorkItem> item = fWorkerItemsQueue.TakeFirst()) {
        fQueueLength.store(static_cast<int32_t>(fWorkerItemsQueue.Count()), std::memory_order_relaxed);
        return item;
      }
    }
    const int64_t left = fSettings.fMaxIdleTime - (TickCount64() - idleSince);
    if (left <= 0) return nullptr;
    ++fIdleThreads;
    lock.WaitFor(fNewWorkItemEvent, left);
    --fIdleThreads;
  }
}

void TWorkerThreadPool::WorkItemDone(int32_t pCount) {
  if (fWorkItemsCount.fetch_sub(pCount, std::memory_order_acq_rel) != pCount) return;
  fAllWorkItemsDoneEventCount.fetch_add(1, std::memory_order_relaxed);
  if (fOnAllWorkItemsDone) fOnAllWorkItemsDone();
  TCriticalSectionLock lock(fLock);
  fThreadOrItemEnded.notify_all();
}

void TWorkerThreadPool::ThreadEnds(TWorkerThread& pThread) {
  if (FOnThreadTerminated) FOnThreadTerminated();
  bool last;
  {
    TCriticalSectionLock lock(fLock);
    auto own =
        std::find_if(fThreads.begin(), fThreads.end(), [&](const auto& pItem) { return pItem.get() == &pThread; });
    fEndedThreads.push_back(std::move(*own));
    fThreads.erase(own);
    fThreadCount.store(static_cast<int32_t>(fThreads.size()), std::memory_order_relaxed);
    last = fThreads.empty();
    if (last && FOnAllThreadsTerminated) {
      // Told under the lock: after it, the pool may be gone.
      FOnAllThreadsTerminated();
    }
    fThreadOrItemEnded.notify_all();
  }
}

void TWorkerThreadPool::TerminateAllWorkItems() {
  std::deque<TRef<IWorkItem>> dropped;
  {
    TCriticalSectionLock lock(fLock);
    fIsTerminatingAllWorkitems = true;
    dropped = fWorkerItemsQueue.TakeAll();
    fQueueLength = 0;
  }
  if (!dropped.empty()) WorkItemDone(static_cast<int32_t>(dropped.size()));
  TCriticalSectionLock lock(fLock);
  while (fWorkItemsCount.load(std::memory_order_acquire) > 0) lock.Wait(fThreadOrItemEnded);
  fIsTerminatingAllWorkitems = false;
}

void TWorkerThreadPool::SetPaused(bool pPaused) {
  {
    TCriticalSectionLock lock(fLock);
    FPaused = pPaused;
    fNewWorkItemEvent.notify_all();
  }
  if (!pPaused) CheckAddNewWorkerThread();
}

void TWorkerThreadPool::Shutdown() {
  std::deque<TRef<IWorkItem>> dropped;
  std::vector<std::unique_ptr<TWorkerThread>> ended;
  {
    TCriticalSectionLock lock(fLock);
    fDestryoing = true;
    fTerminated = true;
    dropped = fWorkerItemsQueue.TakeAll();
    fQueueLength = 0;
    fNewWorkItemEvent.notify_all();
    while (!fThreads.empty()) lock.Wait(fThreadOrItemEnded);
    ended.swap(fEndedThreads);
  }
  for (const std::unique_ptr<TWorkerThread>& thread : ended) thread->Join();
  if (!dropped.empty()) fWorkItemsCount.fetch_sub(static_cast<int32_t>(dropped.size()), std::memory_order_acq_rel);
}

}  // namespace Vantrel::ThreadPool

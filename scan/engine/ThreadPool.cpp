#include "scan/engine/ThreadPool.h"

#include <algorithm>
#include <system_error>

#include "platform/system/Errors.h"

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
  SetStatus(TTaskStatus::tsRunning);
  TTaskStatus result = TTaskStatus::tsCompleted;
  try {
    Execute();
    if (IsCancelled()) result = TTaskStatus::tsCanceled;
  } catch (...) {
    CodeOfCaughtException("TBasicWorkItem.Run");
    result = TTaskStatus::tsFailed;
  }
  SetStatus(result);
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

bool TWorkItemsQueue::Remove(const IWorkItem& pItem) {
  return std::erase_if(fItems, [&](const TRef<IWorkItem>& pOther) { return pOther.get() == &pItem; }) > 0;
}

void TWorkerThread::Start() {
  if (fThreadPool.fSettings.fGrantsThread && !fThreadPool.fSettings.fGrantsThread())
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  fThread = std::thread([this] { Execute(); });
}

// An exception here would leave the pool counting an item that is gone, and its owner would wait for ever. So Execute
// is noexcept.
void TWorkerThread::Execute() noexcept {
  SetCurrentThreadName("worker");
  SetCurrentThreadPriority(fThreadPool.FPriority.load(std::memory_order_relaxed));
  TComInitializer com(fThreadPool.fSettings.fInitializeCOM);
  while ((fWorkItem = fThreadPool.WaitForWorkItem(*this))) {
    // Without this, few threads would work on a queue that was filled before it was known how slow the storage is.
    if (fThreadPool.GetQueueLength() > 0) fThreadPool.CheckAddNewWorkerThread({});
    fWorkItem->Run();
    fWorkItem = nullptr;
    fThreadPool.WorkItemDone(1);
  }
}

namespace {

TWorkerThreadPool::TSettings Complete(TWorkerThreadPool::TSettings pSettings, TWorkerThreadPool& pPool,
                                      TCpuUsageMeter& pMeter) {
  if (!pSettings.fCpuUsage) pSettings.fCpuUsage = [&] { return pMeter.Percent(pPool.GetThreadCount()); };
  if (!pSettings.fTickCount) pSettings.fTickCount = [] { return TickCount64(); };
  return pSettings;
}

}  // namespace

TWorkerThreadPool::TWorkerThreadPool(TSettings pSettings)
    : fSettings(Complete(std::move(pSettings), *this, fCpuMeter)),
      fMinWorkerThreads(fSettings.fMinWorkerThreads),
      fLastCheckAddNewWorkerThread(fSettings.fTickCount()) {}

TWorkerThreadPool::~TWorkerThreadPool() {
  Shutdown();
}

void TWorkerThreadPool::SetMaxCpuUsage(int32_t pPercent) {
  fMaxCpuUsage = std::clamp(pPercent, 0, 100);
}

bool TWorkerThreadPool::IsCpuUsageBelowMax() {
  std::optional<int> usage;
  try {
    usage = fSettings.fCpuUsage();
    // Without memory to read the system's counters, there is no time for a further thread either.
  } catch (...) {
    return false;
  }
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
    Queue(pItems);
    fWorkItemsCount.fetch_add(static_cast<int32_t>(pItems.size()), std::memory_order_acq_rel);
    for (size_t i = 0; i < pItems.size() && fIdleThreads > 0; ++i) fNewWorkItemEvent.notify_one();
  }
  CheckAddNewWorkerThread(pItems);
}

// Queues all of the items, or none.
void TWorkerThreadPool::Queue(const std::vector<TRef<IWorkItem>>& pItems) {
  size_t queued = 0;
  try {
    for (; queued < pItems.size(); ++queued) {
      if (fSettings.fUseLIFO)
        fWorkerItemsQueue.Prepend(pItems[queued]);
      else
        fWorkerItemsQueue.Append(pItems[queued]);
    }
  } catch (...) {
    while (queued-- > 0) fWorkerItemsQueue.Remove(*pItems[queued]);
    throw;
  }
  fQueueLength.store(static_cast<int32_t>(fWorkerItemsQueue.Count()), std::memory_order_relaxed);
}

// Takes back the items for which no thread can be started.
void TWorkerThreadPool::Unqueue(const std::vector<TRef<IWorkItem>>& pItems) {
  for (const TRef<IWorkItem>& item : pItems)
    if (fWorkerItemsQueue.Remove(*item)) fWorkItemsCount.fetch_sub(1, std::memory_order_acq_rel);
  fQueueLength.store(static_cast<int32_t>(fWorkerItemsQueue.Count()), std::memory_order_relaxed);
}

void TWorkerThreadPool::CheckAddNewWorkerThread(const std::vector<TRef<IWorkItem>>& pAdded) {
  const int64_t now = fSettings.fTickCount();
  const int32_t minimum = GetMinWorkerThreads();
  if (now - fLastCheckAddNewWorkerThread.load(std::memory_order_relaxed) < kThreadCheckMilliseconds &&
      GetThreadCount() > minimum)
    return;
  if (now < fNoThreadBefore.load(std::memory_order_relaxed) && GetThreadCount() > 0) return;
  // This may read the system's counters. So it runs before the lock is taken, and only where the answer matters.
  const bool cpuBelowMax = GetThreadCount() < minimum || IsCpuUsageBelowMax();
  std::list<TWorkerThread> ended;
  {
    TCriticalSectionLock lock(fLock);
    fLastCheckAddNewWorkerThread.store(now, std::memory_order_relaxed);
    const auto threads = static_cast<int32_t>(fThreads.size());
    if (threads >= GetMaxRunningThreads() || fWorkerItemsQueue.Count() == 0 || fTerminated || FPaused) return;
    // Beyond the minimum, no new thread is needed while an idle thread is about to take the item.
    const bool idleThreadsSuffice = fIdleThreads >= static_cast<int32_t>(fWorkerItemsQueue.Count());
    if (threads >= minimum && (idleThreadsSuffice || !cpuBelowMax)) return;
    try {
      StartThread(now);
    } catch (...) {
      Unqueue(pAdded);
      throw;
    }
    ended.swap(fEndedThreads);
  }
  for (TWorkerThread& thread : ended) thread.Join();
}

// If the thread cannot be started, a running thread does its work. Throws when no thread is running.
void TWorkerThreadPool::StartThread(int64_t pNow) {
  std::list<TWorkerThread> started;
  try {
    started.emplace_back(*this);
    started.back().Start();  // the new thread waits for the lock before it asks for work
  } catch (...) {
    CodeOfCaughtException("TWorkerThreadPool.StartThread");
    fNoThreadBefore.store(pNow + kRefusedThreadMilliseconds, std::memory_order_relaxed);
    if (fThreads.empty()) throw;
    return;
  }
  fThreads.splice(fThreads.end(), started);
  fThreadCount.store(static_cast<int32_t>(fThreads.size()), std::memory_order_relaxed);
}

TRef<IWorkItem> TWorkerThreadPool::WaitForWorkItem(TWorkerThread& pThread) {
  TCriticalSectionLock lock(fLock);
  const int64_t idleSince = TickCount64();
  while (true) {
    if (fTerminated) break;
    if (!FPaused) {
      if (TRef<IWorkItem> item = fWorkerItemsQueue.TakeFirst()) {
        fQueueLength.store(static_cast<int32_t>(fWorkerItemsQueue.Count()), std::memory_order_relaxed);
        return item;
      }
    }
    // Items that wait for the end of a pause find a thread then.
    const bool isHeld = FPaused && fWorkerItemsQueue.Count() > 0;
    const int64_t left = isHeld ? kHeldMilliseconds : fSettings.fMaxIdleTime - (TickCount64() - idleSince);
    if (left <= 0) break;
    ++fIdleThreads;
    lock.WaitFor(fNewWorkItemEvent, left);
    --fIdleThreads;
  }
  LetThreadEnd(pThread);
  return nullptr;
}

// The caller still holds the lock under which the thread found no work. An item added later sees one thread less and
// starts its own.
void TWorkerThreadPool::LetThreadEnd(TWorkerThread& pThread) {
  const auto own =
      std::find_if(fThreads.begin(), fThreads.end(), [&](const auto& pItem) { return &pItem == &pThread; });
  fEndedThreads.splice(fEndedThreads.end(), fThreads, own);
  fThreadCount.store(static_cast<int32_t>(fThreads.size()), std::memory_order_relaxed);
  fThreadOrItemEnded.notify_all();
}

void TWorkerThreadPool::WorkItemDone(int32_t pCount) {
  if (fWorkItemsCount.fetch_sub(pCount, std::memory_order_acq_rel) != pCount) return;
  if (fOnAllWorkItemsDone) fOnAllWorkItemsDone();
  TCriticalSectionLock lock(fLock);
  fThreadOrItemEnded.notify_all();
}

void TWorkerThreadPool::TerminateAllWorkItems() {
  std::deque<TRef<IWorkItem>> dropped;
  {
    TCriticalSectionLock lock(fLock);
    fIsTerminatingAllWorkitems = true;
    dropped = fWorkerItemsQueue.TakeAll();
    fQueueLength = 0;
    fGoesOn.notify_all();
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
    fHolds.store(pPaused, std::memory_order_relaxed);
    fNewWorkItemEvent.notify_all();
    fGoesOn.notify_all();
  }
  if (!pPaused) CheckAddNewWorkerThread({});
}

void TWorkerThreadPool::HoldWhilePaused() {
  if (!fHolds.load(std::memory_order_relaxed)) return;
  TCriticalSectionLock lock(fLock);
  ++fHeldThreads;
  while (FPaused && !fTerminated && !fIsTerminatingAllWorkitems) lock.Wait(fGoesOn);
  --fHeldThreads;
}

void TWorkerThreadPool::Shutdown() {
  std::deque<TRef<IWorkItem>> dropped;
  std::list<TWorkerThread> ended;
  {
    TCriticalSectionLock lock(fLock);
    fDestryoing = true;
    fTerminated = true;
    dropped = fWorkerItemsQueue.TakeAll();
    fQueueLength = 0;
    fNewWorkItemEvent.notify_all();
    fGoesOn.notify_all();
    while (!fThreads.empty()) lock.Wait(fThreadOrItemEnded);
    ended.swap(fEndedThreads);
  }
  for (TWorkerThread& thread : ended) thread.Join();
  if (!dropped.empty()) fWorkItemsCount.fetch_sub(static_cast<int32_t>(dropped.size()), std::memory_order_acq_rel);
}

}  // namespace Vantrel::ThreadPool

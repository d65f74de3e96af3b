// When threads start and end, order, termination, events; races held open by gates.

#include <gtest/gtest.h>

#include <system_error>
#include <thread>

#include "model/tree/Tokens.h"
#include "platform/system/Errors.h"
#include "scan/engine/ThreadPool.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::ThreadPool {
namespace {

using Testing::TGate;

constexpr int64_t kHang = 60'000;  // milliseconds after which a test fails that would else wait for ever

// Runs a function.
class TCall : public TBasicWorkItem {
 public:
  explicit TCall(std::function<void()> pCall, TRef<ICancellationIndicator> pToken = nullptr)
      : TBasicWorkItem(std::move(pToken)), fCall(std::move(pCall)) {}

 protected:
  void Execute() override { fCall(); }

 private:
  std::function<void()> fCall;
};

TRef<TCall> Call(std::function<void()> pCall) {
  return MakeRef<TCall>(std::move(pCall));
}
TRef<TCall> Hold(TGate& pGate) {
  return Call([&pGate] { pGate.Pass(); });
}

// A pool with a clock and a processor of its own.
struct TTestPool {
  explicit TTestPool(int32_t pMaximum, bool pLIFO = false, int32_t pIdleTime = 60'000) {
    TWorkerThreadPool::TSettings settings;
    settings.fUseLIFO = pLIFO;
    settings.fMaxIdleTime = pIdleTime;
    settings.fCpuUsage = [this] { return fCpu.load(); };
    settings.fTickCount = [this] { return fTick.load(); };
    settings.fGrantsThread = [this] { return fThreadsLeft-- > 0; };
    fPool = std::make_unique<TWorkerThreadPool>(std::move(settings));
    fPool->SetMaxRunningThreads(pMaximum);
    fPool->SetMaxCpuUsage(60);
    fPool->SetOnAllWorkItemsDone([this] {
      ++fAllDone;
      fDone.Open();
    });
  }

  std::atomic<int> fCpu{0};
  std::atomic<int64_t> fTick{0};
  std::atomic<int> fThreadsLeft{1'000'000};  // that the system grants
  std::atomic<int> fAllDone{0};
  TGate fDone;
  std::unique_ptr<TWorkerThreadPool> fPool;
};

TEST(ThreadPool, ThreadsAreStartedByTheThreadCheck) {
  TGate gate;
  TTestPool test(4);
  TWorkerThreadPool& pool = *test.fPool;
  EXPECT_EQ(0, pool.GetThreadCount());
  struct TStep {
    int64_t fTick;
    int fCpu;
    int32_t fThreads;  // after one more item
  };
  const TStep steps[] = {
      {0, 100, 1},  // the minimum, whatever the processor says
      {0, 60, 1},   // at the minimum: as busy as the cap allows is too busy
      {0, 59, 2},   // the interval does not count while no more than the minimum runs
      {0, 0, 2},    // above it, it does
      {1000, 60, 2}, {2000, 59, 3}, {3000, 0, 4}, {4000, 0, 4},  // the maximum
  };
  for (const TStep& step : steps) {
    test.fTick = step.fTick;
    test.fCpu = step.fCpu;
    pool.AddWorkItem(Hold(gate));
    EXPECT_EQ(step.fThreads, pool.GetThreadCount()) << step.fTick << ", " << step.fCpu;
  }
  EXPECT_EQ(8, pool.GetWorkItemsCount());
  gate.Open();
  pool.TerminateAllWorkItems();
  EXPECT_EQ(0, pool.GetWorkItemsCount());
}

TEST(ThreadPool, BelowTheMinimumEveryItemBringsAThread) {
  TGate gate;
  TTestPool test(3);
  test.fPool->SetMinWorkerThreads(2);
  test.fCpu = 100;
  for (int32_t threads : {1, 2, 2}) {
    test.fPool->AddWorkItem(Hold(gate));
    EXPECT_EQ(threads, test.fPool->GetThreadCount());
  }
  gate.Open();
}

TEST(ThreadPool, AListOfItemsWakesAsManyIdleThreads) {
  TTestPool test(2);
  TGate first, second;
  test.fPool->AddWorkItem(Hold(first));
  test.fPool->AddWorkItem(Hold(second));
  first.WaitUntilReached();
  second.WaitUntilReached();
  first.Open();
  second.Open();
  test.fDone.WaitUntilOpen();
  // Both threads go to sleep now or have done so; two items that wait for each other need both.
  TGate a, b;
  test.fPool->AddWorkItems({Call([&] {
                              a.Open();
                              b.WaitUntilOpen();
                            }),
                            Call([&] {
                              b.Open();
                              a.WaitUntilOpen();
                            })});
  while (test.fPool->GetWorkItemsCount() > 0) std::this_thread::yield();
  EXPECT_EQ(2, test.fPool->GetThreadCount());
}

TEST(ThreadPool, OrderOfItems) {
  for (bool lifo : {false, true}) {
    TGate gate;
    std::vector<int> order;
    {
      TTestPool test(1, lifo);
      test.fPool->AddWorkItem(Hold(gate));
      gate.WaitUntilReached();
      for (int item : {1, 2, 3}) test.fPool->AddWorkItem(Call([&order, item] { order.push_back(item); }));
      EXPECT_EQ(3, test.fPool->GetQueueLength());
      gate.Open();
      test.fDone.WaitUntilOpen();
    }
    EXPECT_EQ(lifo ? (std::vector<int>{3, 2, 1}) : (std::vector<int>{1, 2, 3}), order);
  }
}

// Items come while the only thread is about to end: each must find it or get a new one.
TEST(ThreadPool, AThreadThatEndsLeavesNoItemBehind) {
  TTestPool test(1, false, 0);
  for (int i = 0; i < 20'000; ++i) {
    auto ran = std::make_shared<TGate>();
    test.fPool->AddWorkItem(Call([ran] { ran->Open(); }));
    ASSERT_TRUE(ran->IsOpenBefore(kHang)) << "item " << i << " waits and no thread takes it";
  }
  while (test.fPool->GetThreadCount() > 0) std::this_thread::yield();
}

TEST(ThreadPool, ThreadsThatTheSystemRefuses) {
  TTestPool test(4);
  test.fThreadsLeft = 0;
  bool ran = false;
  // Not even the first: the caller is told, and the item is not kept for later.
  EXPECT_THROW(test.fPool->AddWorkItem(Call([&] { ran = true; })), std::system_error);
  EXPECT_THROW(test.fPool->AddWorkItems({Call([&] { ran = true; }), Call([&] { ran = true; })}), std::system_error);
  EXPECT_EQ(0, test.fPool->GetWorkItemsCount());
  EXPECT_EQ(0, test.fPool->GetQueueLength());
  EXPECT_EQ(0, test.fPool->GetThreadCount());
  // No second one: the first does all the work.
  test.fThreadsLeft = 1;
  TGate gate;
  std::atomic<int> done{0};
  test.fPool->AddWorkItem(Hold(gate));
  gate.WaitUntilReached();
  for (int i = 0; i < 10; ++i) {
    test.fTick += 1000;
    EXPECT_NO_THROW(test.fPool->AddWorkItem(Call([&] { ++done; })));
  }
  EXPECT_EQ(1, test.fPool->GetThreadCount());
  gate.Open();
  ASSERT_TRUE(test.fDone.IsOpenBefore(kHang));
  EXPECT_EQ(10, done);
  EXPECT_FALSE(ran);
}

TEST(ThreadPool, AddingWhileDestroying) {
  TTestPool test(1);
  TGate gate;
  std::string message;
  bool waitingRan = false;
  test.fPool->AddWorkItem(Call([&] {
    gate.Pass();
    for (bool refused = false; !refused;) {
      try {
        test.fPool->AddWorkItem(Call([&] { waitingRan = true; }));
      } catch (const EInvalidOperation& error) {
        message = error.what();
        refused = true;
      }
    }
  }));
  gate.WaitUntilReached();
  gate.Open();
  test.fPool->Shutdown();
  EXPECT_EQ("New workitems cannot be added to a threadpool that is destroying.", message);
  EXPECT_FALSE(waitingRan);
  EXPECT_EQ(0, test.fPool->GetWorkItemsCount());
  EXPECT_THROW(test.fPool->AddWorkItem(Call([] {})), EInvalidOperation);
}

TEST(ThreadPool, TerminatingDropsWhatWaitsAndWhatIsAddedMeanwhile) {
  TTestPool test(1);
  TGate gate;
  std::atomic<int> ran{0};
  test.fPool->AddWorkItem(Call([&] {
    gate.Pass();
    // Until the waiting items are gone, the pool has not begun to terminate.
    while (test.fPool->GetQueueLength() > 0) std::this_thread::yield();
    test.fPool->AddWorkItem(Call([&] { ++ran; }));
  }));
  gate.WaitUntilReached();
  for (int i = 0; i < 5; ++i) test.fPool->AddWorkItem(Call([&] { ++ran; }));
  gate.Open();
  test.fPool->TerminateAllWorkItems();
  EXPECT_EQ(0, ran);
  EXPECT_EQ(1, test.fAllDone);
  TGate after;
  test.fPool->AddWorkItem(Call([&] { after.Open(); }));
  after.WaitUntilOpen();
}

TEST(ThreadPool, PausedItemsWait) {
  TTestPool test(1);
  test.fPool->SetPaused(true);
  std::atomic<bool> ran{false};
  test.fPool->AddWorkItem(Call([&] { ran = true; }));
  EXPECT_EQ(0, test.fPool->GetThreadCount());
  EXPECT_EQ(1, test.fPool->GetQueueLength());
  EXPECT_FALSE(ran);
  test.fPool->SetPaused(false);
  ASSERT_TRUE(test.fDone.IsOpenBefore(kHang)) << "the item still waits";
  EXPECT_TRUE(ran);
}

TEST(ThreadPool, CompletionCallbacksTellTheOutcome) {
  TGate posted;
  std::function<void()> callback;
  SetSynchronizer([&](std::function<void()> pCall) {
    callback = std::move(pCall);
    posted.Open();
  });
  auto token = MakeRef<TCancellationToken>();
  token->Cancel();
  std::vector<TTaskStatus> outcomes;
  auto record = [&](TBasicWorkItem& pItem) { outcomes.push_back(pItem.GetStatus()); };
  TTestPool test(1);
  const TRef<TCall> direct[] = {Call([] {}), Call([] { throw EInvalidOperation("on purpose"); }),
                                MakeRef<TCall>([] {}, token)};
  for (const TRef<TCall>& item : direct) {
    EXPECT_EQ(TTaskStatus::tsCreated, item->GetStatus());
    item->SetOnWorkDone(record, false);
    test.fPool->AddWorkItem(item);
  }
  std::thread::id calledOn;
  auto synchronized = Call([] {});
  synchronized->SetOnWorkDone([&](TBasicWorkItem&) { calledOn = std::this_thread::get_id(); }, true);
  test.fPool->AddWorkItem(synchronized);
  posted.WaitUntilOpen();
  test.fPool->Shutdown();
  EXPECT_EQ((std::vector<TTaskStatus>{TTaskStatus::tsCompleted, TTaskStatus::tsFailed, TTaskStatus::tsCanceled}),
            outcomes);
  EXPECT_EQ(std::thread::id(), calledOn);
  callback();
  EXPECT_EQ(std::this_thread::get_id(), calledOn);
  SetSynchronizer(nullptr);
}

// Whatever the interleaving, the callback comes when none is left, and every item has run by then.
TEST(ThreadPool, AllDoneComesOncePerEmptyPool) {
  TTestPool test(8);
  test.fTick = 0;
  std::atomic<int> ran{0}, missing{0};
  test.fPool->SetOnAllWorkItemsDone([&] {
    missing += 1111 - ran;
    ++test.fAllDone;
    test.fDone.Open();
  });
  test.fPool->AddWorkItem(Call([&] {
    for (int i = 0; i < 10; ++i)
      test.fPool->AddWorkItem(Call([&] {
        for (int j = 0; j < 10; ++j) {
          test.fTick += 10;
          std::vector<TRef<IWorkItem>> items;
          for (int k = 0; k < 10; ++k) items.push_back(Call([&] { ++ran; }));
          test.fPool->AddWorkItems(std::move(items));
          ++ran;
        }
        ++ran;
      }));
    ++ran;
  }));
  test.fDone.WaitUntilOpen();
  EXPECT_EQ(1, test.fAllDone);
  EXPECT_EQ(0, missing);
}

}  // namespace
}  // namespace Vantrel::ThreadPool

// Locks under many threads.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "platform/threads/SlimReaderWriterLock.h"
#include "tests/platform/threads/Gate.h"

namespace Vantrel {

namespace {

constexpr int kRounds = 20'000;

// Three plain counters that are equal whenever nobody writes; a reader that gets in beside a writer sees them differ.
struct TTriple {
  TSlimReaderWriterLock fLock;
  int64_t fFirst GUARDED_BY(fLock) = 0;
  int64_t fSecond GUARDED_BY(fLock) = 0;
  int64_t fThird GUARDED_BY(fLock) = 0;

  void Increment() {
    TExclusiveLock lock(fLock);
    ++fFirst;
    if (fFirst % 8 == 0) std::this_thread::yield();  // or the others would hardly ever meet it held
    ++fSecond;
    ++fThird;
  }
  bool IsTorn() {
    TSharedLock lock(fLock);
    const int64_t before = fFirst;
    if (before % 8 == 0) std::this_thread::yield();
    return before != fSecond || fSecond != fThird || fThird != fFirst;
  }
};

template <class TWork>
void RunThreads(int pCount, TWork pWork) {
  TGate start(pCount);
  std::vector<std::thread> threads;
  for (int i = 0; i < pCount; ++i)
    threads.emplace_back([&, i] {
      start.ArriveAndWait();
      pWork(i);
    });
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

TEST(Locks, ReadersNeverSeeHalfAWrite) {
  for (int writers : {1, 2, 4}) {
    TTriple triple;
    std::atomic<int> torn{0};
    RunThreads(writers + 4, [&](int pThread) {
      for (int round = 0; round < kRounds; ++round) {
        if (pThread < writers)
          triple.Increment();
        else
          torn += triple.IsTorn();
      }
    });
    EXPECT_EQ(torn, 0);
    EXPECT_FALSE(triple.IsTorn());
    TSharedLock lock(triple.fLock);
    EXPECT_EQ(triple.fThird, int64_t{writers} * kRounds);
  }
}

// Both readers stay until the other one has come: a shared hold that is not shared hangs here.
TEST(Locks, ReadersOverlap) {
  TSlimReaderWriterLock lock;
  TGate bothInside(2);
  RunThreads(2, [&](int) {
    TSharedLock shared(lock);
    bothInside.ArriveAndWait();
  });
}

// A lost wake-up hangs here.
TEST(Locks, SleepersWake) {
  TTriple triple;
  for (int round = 1; round <= 300; ++round) {
    triple.fLock.AcquireExclusive();
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] { EXPECT_FALSE(triple.IsTorn()); });
      threads.emplace_back([&] { triple.Increment(); });
    }
    for (int i = 0; i < 200; ++i) std::this_thread::yield();  // mostly enough for them to give up spinning and sleep
    triple.fLock.ReleaseExclusive();
    for (std::thread& thread : threads) thread.join();

    triple.fLock.AcquireShared();
    std::thread writer([&] { triple.Increment(); });
    for (int i = 0; i < 200; ++i) std::this_thread::yield();
    triple.fLock.ReleaseShared();
    writer.join();
    TSharedLock shared(triple.fLock);
    ASSERT_EQ(triple.fSecond, 3 * round);
  }
}

TEST(Locks, CriticalSectionHandsOver) {
  TCriticalSection section;
  std::condition_variable changed;
  int turn = 0;
  RunThreads(3, [&](int pThread) {
    for (int round = 0; round < 300; ++round) {
      TCriticalSectionLock lock(section);
      while (turn % 3 != pThread) pThread == 0 ? (void)lock.WaitFor(changed, 60'000) : lock.Wait(changed);
      ++turn;
      changed.notify_all();
    }
  });
  EXPECT_EQ(turn, 900);
}

}  // namespace Vantrel

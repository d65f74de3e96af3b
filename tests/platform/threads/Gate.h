#pragma once

// Lets several threads go at once.

#include <condition_variable>
#include <mutex>

namespace Vantrel {

// Opens for all when the given number of threads stand before it. In place of std::latch, which loses wake-ups where
// the library has no futex to build on, as in the Windows build: it tests the count before it takes its lock.
class TGate {
 public:
  explicit TGate(int pThreads) : fMissing(pThreads) {}

  void ArriveAndWait() {
    std::unique_lock<std::mutex> lock(fMutex);
    if (--fMissing == 0) fOpened.notify_all();
    fOpened.wait(lock, [this] { return fMissing <= 0; });
  }

 private:
  std::mutex fMutex;
  std::condition_variable fOpened;
  int fMissing;
};

}  // namespace Vantrel

#pragma once

// A mutex with annotations for the thread-safety analysis.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "platform/threads/ThreadAnnotations.h"

namespace Vantrel {

// A mutex with annotations for the thread-safety analysis. For locks that are few; nodes use TSlimReaderWriterLock.
class CAPABILITY("mutex") TCriticalSection {
 public:
  void Enter() ACQUIRE() { fMutex.lock(); }
  // False when another thread holds the mutex.
  bool TryEnter() TRY_ACQUIRE(true) { return fMutex.try_lock(); }
  void Leave() RELEASE() { fMutex.unlock(); }

 private:
  friend class TCriticalSectionLock;
  std::mutex fMutex;
};

// Holds a critical section for a scope, and can wait for a condition meanwhile.
class SCOPED_CAPABILITY TCriticalSectionLock {
 public:
  explicit TCriticalSectionLock(TCriticalSection& pSection) ACQUIRE(pSection) : fLock(pSection.fMutex) {}
  ~TCriticalSectionLock() RELEASE() {}
  TCriticalSectionLock(const TCriticalSectionLock&) = delete;
  TCriticalSectionLock& operator=(const TCriticalSectionLock&) = delete;

  // Waits for a notification. It may return without one, so the caller tests its condition in a loop.
  void Wait(std::condition_variable& pCondition) { pCondition.wait(fLock); }
  // The same with an upper bound in milliseconds. Returns false when the time ran out.
  bool WaitFor(std::condition_variable& pCondition, int64_t pMilliseconds) {
    return pCondition.wait_for(fLock, std::chrono::milliseconds(pMilliseconds)) == std::cv_status::no_timeout;
  }

 private:
  std::unique_lock<std::mutex> fLock;
};

}  // namespace Vantrel

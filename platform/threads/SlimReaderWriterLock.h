#pragma once

// The small reader/writer lock in every node.

#include <atomic>
#include <cstdint>

#include "platform/threads/ThreadAnnotations.h"

namespace Vantrel {

// A reader/writer lock small enough for every node of a scan tree. It admits many readers or one writer. It is neither
// recursive nor fair. A thread that finds it taken sleeps in the kernel (futex on Linux, the slim lock on Windows).
class CAPABILITY("lock") TSlimReaderWriterLock {
 public:
  TSlimReaderWriterLock() = default;
  TSlimReaderWriterLock(const TSlimReaderWriterLock&) = delete;
  TSlimReaderWriterLock& operator=(const TSlimReaderWriterLock&) = delete;

  void AcquireExclusive() ACQUIRE();
  void ReleaseExclusive() RELEASE();
  void AcquireShared() ACQUIRE_SHARED();
  void ReleaseShared() RELEASE_SHARED();

 private:
#if defined(_WIN32)
  void* fState = nullptr;  // an SRWLOCK: one pointer, zero when free
#else
  void AcquireExclusiveSlow();
  void AcquireSharedSlow();
  void WakeAll();

  static constexpr uint32_t kWriter = 0x80000000;   // held exclusively
  static constexpr uint32_t kWaiters = 0x40000000;  // threads are sleeping; the low 30 bits count the readers
  std::atomic<uint32_t> fState{0};
#endif
};

#if !defined(_WIN32)
inline void TSlimReaderWriterLock::AcquireExclusive() {
  uint32_t expected = 0;
  if (!fState.compare_exchange_strong(expected, kWriter, std::memory_order_acquire, std::memory_order_relaxed))
    AcquireExclusiveSlow();
}

inline void TSlimReaderWriterLock::ReleaseExclusive() {
  if (fState.exchange(0, std::memory_order_release) & kWaiters) WakeAll();
}

inline void TSlimReaderWriterLock::AcquireShared() {
  uint32_t state = fState.load(std::memory_order_relaxed);
  if ((state & (kWriter | kWaiters)) != 0 ||
      !fState.compare_exchange_strong(state, state + 1, std::memory_order_acquire, std::memory_order_relaxed))
    AcquireSharedSlow();
}

inline void TSlimReaderWriterLock::ReleaseShared() {
  // The last reader wakes the sleeping threads and clears their mark. A thread sets it again before it sleeps again.
  uint32_t left = fState.fetch_sub(1, std::memory_order_release) - 1;
  if (left == kWaiters && fState.compare_exchange_strong(left, 0, std::memory_order_relaxed)) WakeAll();
}
#endif

// Hold a lock for a scope, as its one writer or as one of its readers.
class SCOPED_CAPABILITY TExclusiveLock {
 public:
  explicit TExclusiveLock(TSlimReaderWriterLock& pLock) ACQUIRE(pLock) : fLock(pLock) { fLock.AcquireExclusive(); }
  ~TExclusiveLock() RELEASE() { fLock.ReleaseExclusive(); }
  TExclusiveLock(const TExclusiveLock&) = delete;
  TExclusiveLock& operator=(const TExclusiveLock&) = delete;

 private:
  TSlimReaderWriterLock& fLock;
};

class SCOPED_CAPABILITY TSharedLock {
 public:
  explicit TSharedLock(TSlimReaderWriterLock& pLock) ACQUIRE_SHARED(pLock) : fLock(pLock) { fLock.AcquireShared(); }
  ~TSharedLock() RELEASE_GENERIC() { fLock.ReleaseShared(); }
  TSharedLock(const TSharedLock&) = delete;
  TSharedLock& operator=(const TSharedLock&) = delete;

 private:
  TSlimReaderWriterLock& fLock;
};

}  // namespace Vantrel

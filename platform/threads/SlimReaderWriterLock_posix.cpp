#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>

#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

namespace {

// The sections under these locks take a few dozen instructions, so a short spin usually outlasts the holder.
constexpr int kSpins = 100;

void CpuRelax() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#endif
}

void FutexWait(std::atomic<uint32_t>& pWord, uint32_t pExpected) {
  syscall(SYS_futex, &pWord, FUTEX_WAIT_PRIVATE, pExpected, nullptr, nullptr, 0);
}

}  // namespace

void TSlimReaderWriterLock::AcquireExclusiveSlow() {
  for (int spin = 0;; ++spin) {
    uint32_t state = fState.load(std::memory_order_relaxed);
    if ((state & ~kWaiters) == 0) {  // free; the waiters' mark stays, or the sleeping threads would never be woken
      if (fState.compare_exchange_weak(state, state | kWriter, std::memory_order_acquire, std::memory_order_relaxed))
        return;
    } else if (spin < kSpins) {
      CpuRelax();
    } else if ((state & kWaiters) != 0 ||
               fState.compare_exchange_weak(state, state | kWaiters, std::memory_order_relaxed)) {
      FutexWait(fState, state | kWaiters);
    }
  }
}

void TSlimReaderWriterLock::AcquireSharedSlow() {
  for (int spin = 0;; ++spin) {
    uint32_t state = fState.load(std::memory_order_relaxed);
    // A sleeping writer keeps new readers out. Otherwise a stream of readers could block it for ever.
    bool held = (state & kWriter) != 0 || ((state & kWaiters) != 0 && (state & ~kWaiters) != 0);
    if (!held) {
      if (fState.compare_exchange_weak(state, state + 1, std::memory_order_acquire, std::memory_order_relaxed)) return;
    } else if (spin < kSpins) {
      CpuRelax();
    } else if ((state & kWaiters) != 0 ||
               fState.compare_exchange_weak(state, state | kWaiters, std::memory_order_relaxed)) {
      FutexWait(fState, state | kWaiters);
    }
  }
}

void TSlimReaderWriterLock::WakeAll() {
  syscall(SYS_futex, &fState, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace Vantrel

#include "app/CancelRequest.h"

#include <atomic>

namespace Vantrel {

namespace {

std::atomic<bool> gCancelRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

}  // namespace

void RequestCancel() noexcept {
  gCancelRequested.store(true, std::memory_order_relaxed);
}

bool IsCancelRequested() noexcept {
  return gCancelRequested.load(std::memory_order_relaxed);
}

void ForgetCancelRequest() noexcept {
  gCancelRequested.store(false, std::memory_order_relaxed);
}

}  // namespace Vantrel

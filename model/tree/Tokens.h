#pragma once

// The tokens that tell of cancellation and disposal.

#include <atomic>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

class TDisposeToken : public TInterfaced<IDisposeToken> {
 public:
  bool IsDisposed() const noexcept override { return fDisposed.load(std::memory_order_acquire); }
  void SetDisposed() noexcept { fDisposed.store(true, std::memory_order_release); }

 private:
  std::atomic<bool> fDisposed{false};
};

class TCancellationToken : public TInterfaced<ICancellationToken> {
 public:
  bool IsCancelled() const noexcept override { return fCancelled.load(std::memory_order_relaxed); }
  void Cancel() noexcept override { fCancelled.store(true, std::memory_order_relaxed); }

 private:
  std::atomic<bool> fCancelled{false};
};

}  // namespace Vantrel

#pragma once

// The tokens that signal cancellation and disposal.

#include <algorithm>
#include <atomic>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "platform/threads/CriticalSection.h"

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
  void Cancel() noexcept override {
    fCancelled.store(true, std::memory_order_relaxed);
    TCriticalSectionLock lock(fLock);
    for (const TCancellationWatch* watch : fWatches) watch->fOnCancel();
  }

 private:
  void AddWatch(TCancellationWatch& pWatch) override {
    TCriticalSectionLock lock(fLock);
    fWatches.push_back(&pWatch);
    if (IsCancelled()) pWatch.fOnCancel();
  }
  void RemoveWatch(TCancellationWatch& pWatch) override {
    TCriticalSectionLock lock(fLock);
    std::erase(fWatches, &pWatch);
  }

  std::atomic<bool> fCancelled{false};
  TCriticalSection fLock;
  std::vector<TCancellationWatch*> fWatches GUARDED_BY(fLock);
};

}  // namespace Vantrel

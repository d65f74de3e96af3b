#pragma once

// A list of observers. While it is empty, a notification costs one atomic read.

#include <algorithm>
#include <atomic>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "platform/system/Errors.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// A list of observers. A notification works on a snapshot, so an observer may unsubscribe during it. Without observers
// it costs one atomic read.
template <class TObserver>
class TObservable : public TInterfaced<IObservable<TObserver>> {
 public:
  void Subscribe(TRef<TObserver> pObserver) override {
    TCriticalSectionLock lock(fLock);
    fObservers.push_back(std::move(pObserver));
    fHasObservers.store(true, std::memory_order_release);
  }
  void Unsubscribe(TObserver* pObserver) override {
    TCriticalSectionLock lock(fLock);
    std::erase_if(fObservers, [&](const TRef<TObserver>& pItem) { return pItem.get() == pObserver; });
    fHasObservers.store(!fObservers.empty(), std::memory_order_release);
  }
  bool HasObservers() const { return fHasObservers.load(std::memory_order_acquire); }

  template <class TCall>
  void Notify(const TCall& pCall) {
    if (!HasObservers()) return;
    std::vector<TRef<TObserver>> observers;
    {
      TCriticalSectionLock lock(fLock);
      observers = fObservers;
    }
    for (const TRef<TObserver>& observer : observers) {
      try {
        pCall(*observer);
      } catch (...) {  // an observer's exception must not end a scan
        CodeOfCaughtException("TObservable.Notify");
      }
    }
  }
  void Clear() {
    std::vector<TRef<TObserver>> observers;  // released outside the lock
    TCriticalSectionLock lock(fLock);
    observers.swap(fObservers);
    fHasObservers.store(false, std::memory_order_release);
  }

 private:
  TCriticalSection fLock;
  std::vector<TRef<TObserver>> fObservers GUARDED_BY(fLock);
  std::atomic<bool> fHasObservers{false};
};

}  // namespace Vantrel

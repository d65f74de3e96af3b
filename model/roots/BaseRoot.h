#pragma once

// The base of all roots: a path, a title, a state, observers, and the tokens for cancellation and disposal.

#include <atomic>
#include <string>
#include <string_view>

#include "model/roots/RootInterfaces.h"
#include "model/tree/Observable.h"
#include "model/tree/Tokens.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel {

class TBaseRoot : public TInterfaced<IHierarchicalRoot> {
 public:
  std::u16string GetPath() const override { return fPath; }
  std::u16string GetTitle() const override;
  void SetTitle(std::u16string_view pTitle);
  char16_t GetPathDelimiter() const override { return fPathDelimiter; }
  TRootStates GetState() const override { return fState.load(std::memory_order_acquire); }
  TKivFileTime GetScanTimeStamp() const override { return {fScanTimeStamp.load(std::memory_order_relaxed)}; }
  TRef<IDisposeToken> GetDisposeToken() const override { return fDisposeToken; }
  TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {}) override {
    return fObservers->Subscribe(std::move(pOnFirstChange));
  }
  TChangeQueues& GetChangeQueues() override { return *fObservers; }
  TMetaDataValue GetValue(TColumn pColumn) const override;

 protected:
  TBaseRoot(std::u16string pPath, char16_t pDelimiter);

  void IncludeState(TRootStates pBits) { fState.fetch_or(pBits, std::memory_order_acq_rel); }
  void ExcludeState(TRootStates pBits) { fState.fetch_and(~pBits, std::memory_order_acq_rel); }

  const std::u16string fPath;
  const char16_t fPathDelimiter;
  const TRef<TDisposeToken> fDisposeToken;
  std::atomic<int64_t> fScanTimeStamp{0};
  const TRef<TChangeQueues> fObservers;  // kept alive by subscriptions

 private:
  std::atomic<TRootStates> fState{0};
  mutable TCriticalSection fTitleLock;
  std::u16string fTitle GUARDED_BY(fTitleLock);
};

}  // namespace Vantrel

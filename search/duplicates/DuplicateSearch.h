#pragma once

// The search for duplicates among what a search has found.

#include <condition_variable>
#include <memory>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "search/duplicates/DuplicateSearchWorkItem.h"

namespace Vantrel::Search {

// One search for duplicates, on threads of its own. All calls are for any thread.
class TDuplicateSearch final {
 public:
  // For files, what was found; for folders, everything in the searched paths. It begins at once.
  TDuplicateSearch(TDuplicateSearchSettings pSettings, std::vector<TFoundItem> pFound);
  // Cancels and waits.
  ~TDuplicateSearch();
  TDuplicateSearch(const TDuplicateSearch&) = delete;
  TDuplicateSearch& operator=(const TDuplicateSearch&) = delete;

  // The search ends soon; what was found stays. May be called again when a worker hangs in the system.
  void Cancel() { fWorkItem->Cancel(); }
  bool WasCancelled() const { return fWorkItem->WasCancelled(); }
  // Nothing more is computed until the search goes on or is cancelled.
  void SetPaused(bool pPaused) { fWorkItem->SetPaused(pPaused); }
  // Waits for the end, at most pMilliseconds. True when the search has ended.
  bool WaitForEnd(int64_t pMilliseconds);
  TDuplicateProgress GetProgress() const { return fWorkItem->GetProgress(); }
  ThreadPool::TTaskStatus GetStatus() const { return fWorkItem->GetStatus(); }
  // After the end, once.
  TDuplicateResult TakeResult() { return fWorkItem->TakeResult(); }

 private:
  const TRef<TDuplicateSearchWorkItem> fWorkItem;
  TCriticalSection fLock;
  std::condition_variable fEnded;
  bool fHasEnded GUARDED_BY(fLock) = false;
  ThreadPool::TWorkerThreadPool fPool;  // ends before all else
};

}  // namespace Vantrel::Search

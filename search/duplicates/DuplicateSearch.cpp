#include "search/duplicates/DuplicateSearch.h"

#include <utility>

#include "platform/system/System.h"

namespace Vantrel::Search {

TDuplicateSearch::TDuplicateSearch(TDuplicateSearchSettings pSettings, std::vector<TFoundItem> pFound)
    : fWorkItem(MakeRef<TDuplicateSearchWorkItem>(std::move(pSettings), std::move(pFound))), fPool({}) {
  fWorkItem->SetOnWorkDone(
      [this](ThreadPool::TBasicWorkItem&) {
        TCriticalSectionLock lock(fLock);
        fHasEnded = true;
        fEnded.notify_all();
      },
      false);
  try {
    fPool.AddWorkItem(fWorkItem);
  } catch (...) {
    // No thread can be had: the work is done here.
    CodeOfCaughtException("TDuplicateSearch");
    fWorkItem->Run();
  }
}

TDuplicateSearch::~TDuplicateSearch() {
  Cancel();
}

bool TDuplicateSearch::WaitForEnd(int64_t pMilliseconds) {
  const int64_t until = TickCount64() + pMilliseconds;
  TCriticalSectionLock lock(fLock);
  for (int64_t left = pMilliseconds; !fHasEnded && left > 0; left = until - TickCount64()) lock.WaitFor(fEnded, left);
  return fHasEnded;
}

}  // namespace Vantrel::Search

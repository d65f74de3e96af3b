#pragma once

// Shares the steps of one computation among threads.

#include <cstddef>
#include <functional>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel::Treemap {

// Calls pStep for each number below pCount, in no particular order, on at most pThreads threads, the calling one
// included. pStep also gets the number of its thread, below pThreads. Returns when all steps are done. After a
// cancellation no further step begins. The first exception of a step is thrown at the end.
void ForEachStep(int pThreads, size_t pCount, const ICancellationIndicator* pToken,
                 const std::function<void(size_t pStep, size_t pThread)>& pDo);

inline bool IsCancelled(const ICancellationIndicator* pToken) {
  return pToken && pToken->IsCancelled();
}

}  // namespace Vantrel::Treemap

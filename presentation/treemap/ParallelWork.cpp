#include "presentation/treemap/ParallelWork.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel::Treemap {

void ForEachStep(int pThreads, size_t pCount, const ICancellationIndicator* pToken,
                 const std::function<void(size_t pStep, size_t pThread)>& pDo) {
  std::atomic<size_t> next{0};
  TCriticalSection lock;
  std::exception_ptr error;
  const auto work = [&](size_t pThread) {
    try {
      for (size_t step = next++; step < pCount && !IsCancelled(pToken); step = next++) pDo(step, pThread);
    } catch (...) {
      next = pCount;  // the others stop too
      TCriticalSectionLock guard(lock);
      if (!error) error = std::current_exception();
    }
  };
  std::vector<std::jthread> threads;
  const size_t wanted = std::min(static_cast<size_t>(std::max(pThreads, 1)), pCount);
  try {
    threads.reserve(wanted);
    for (size_t thread = 1; thread < wanted; ++thread) threads.emplace_back(work, thread);
  } catch (const std::system_error&) {
    // The threads that the system granted do the work.
  }
  work(0);
  for (std::jthread& thread : threads) thread.join();
  if (error) std::rethrow_exception(error);
}

}  // namespace Vantrel::Treemap

#pragma once

// A stock of buffers for directory queries. Each buffer is kept for the next listing.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {

// A stock of buffers for directory queries, kept for the next listing. Any thread.
//
// All threads share the stock. A thread_local buffer would need no lock, but the program crashes when a scan's threads
// end before it. This compiler's library destroys such an object after its memory has been freed.
template <size_t kSize>
class TDirectoryBuffers {
 public:
  static std::unique_ptr<std::byte[]> Take() {
    TStock& stock = Stock();
    {
      TCriticalSectionLock lock(stock.fLock);
      if (!stock.fFree.empty()) {
        auto buffer = std::move(stock.fFree.back());
        stock.fFree.pop_back();
        return buffer;
      }
    }
    return std::make_unique_for_overwrite<std::byte[]>(kSize);
  }
  static void GiveBack(std::unique_ptr<std::byte[]> pBuffer) noexcept {
    TStock& stock = Stock();
    TCriticalSectionLock lock(stock.fLock);
    if (pBuffer && stock.fFree.size() < kKept) stock.fFree.push_back(std::move(pBuffer));
  }

 private:
  static constexpr size_t kKept = 64;  // more than the threads that list at once

  struct TStock {
    TStock() { fFree.reserve(kKept); }  // reserves room so that returning a buffer never fails
    TCriticalSection fLock;
    std::vector<std::unique_ptr<std::byte[]>> fFree GUARDED_BY(fLock);
  };
  // Never destroyed, because a worker may outlive static objects.
  static TStock& Stock() {
    static TStock& stock = *new TStock;
    return stock;
  }
};

}  // namespace Vantrel::Enumerators

#pragma once

// Buffers for directory queries, kept for the next one.

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {

// Buffers for directory queries, kept for the next listing. Any thread.
//
// They are shared by all threads. As a thread_local of each, which would need no lock, they crash the program when a
// scan's threads end before it: this compiler's library destroys such an object after its memory has been given back.
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
  static constexpr size_t kKept = 64;  // more than threads that list at once

  struct TStock {
    TStock() { fFree.reserve(kKept); }  // so that giving back never fails
    TCriticalSection fLock;
    std::vector<std::unique_ptr<std::byte[]>> fFree GUARDED_BY(fLock);
  };
  // Never destroyed: a worker may outlive the statics.
  static TStock& Stock() {
    static TStock& stock = *new TStock;
    return stock;
  }
};

}  // namespace Vantrel::Enumerators

#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Kiv::Enumerators {

// Buffers for directory queries, kept by each thread for its next listing. A thread rarely has more than one in use.
template <size_t kSize>
class TDirectoryBuffers {
 public:
  static std::unique_ptr<std::byte[]> Take() {
    auto& free = Free();
    if (free.empty()) return std::make_unique_for_overwrite<std::byte[]>(kSize);
    auto buffer = std::move(free.back());
    free.pop_back();
    return buffer;
  }
  static void GiveBack(std::unique_ptr<std::byte[]> pBuffer) noexcept {
    auto& free = Free();
    if (pBuffer && free.size() < kKept) free.push_back(std::move(pBuffer));
  }

 private:
  static constexpr size_t kKept = 4;
  static std::vector<std::unique_ptr<std::byte[]>>& Free() {
    thread_local std::vector<std::unique_ptr<std::byte[]>> buffers = [] {
      std::vector<std::unique_ptr<std::byte[]>> empty;
      empty.reserve(kKept);  // so that giving back never fails
      return empty;
    }();
    return buffers;
  }
};

}  // namespace Kiv::Enumerators

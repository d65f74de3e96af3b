#pragma once

// A node's name, stored behind one pointer.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

namespace Vantrel {

// A node's name in one pointer. It points to a length and the UTF-16 units, in a block of exactly that size. A
// std::u16string would cost each of millions of nodes 32 bytes before its text.
class TCompactName {
 public:
  TCompactName() = default;
  explicit TCompactName(std::u16string_view pText) {
    if (pText.empty()) return;
    fBlock.reset(new char16_t[kHeader + pText.size()]);
    const auto length = static_cast<uint32_t>(pText.size());
    std::memcpy(fBlock.get(), &length, sizeof(length));
    std::memcpy(fBlock.get() + kHeader, pText.data(), pText.size() * sizeof(char16_t));
  }

  std::u16string_view View() const {
    if (!fBlock) return {};
    uint32_t length;
    std::memcpy(&length, fBlock.get(), sizeof(length));
    return {fBlock.get() + kHeader, length};
  }

 private:
  static constexpr size_t kHeader = sizeof(uint32_t) / sizeof(char16_t);
  std::unique_ptr<char16_t[]> fBlock;
};

}  // namespace Vantrel

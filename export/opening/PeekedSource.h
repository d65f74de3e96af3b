#pragma once

// Looks at the beginning of a source before it is read.

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/files/ByteStreams.h"

namespace Vantrel::Opening {

// A source whose first bytes can be looked at before they are read. The other source must outlive it.
class TPeekedSource final : public IByteSource {
 public:
  explicit TPeekedSource(IByteSource& pSource) : fSource(pSource) {
    constexpr size_t kLooked = 4096;
    while (fStart.size() < kLooked) {
      char piece[kLooked];
      const size_t length = fSource.Read(piece, kLooked - fStart.size());
      if (length == 0) break;
      fStart.append(piece, length);
    }
  }

  std::string_view Start() const { return fStart; }
  // The same behind a byte-order mark and blanks.
  std::string_view StartOfText() const {
    std::string_view text = fStart;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  }

  size_t Read(char* pBuffer, size_t pLength) override {
    if (fRead == fStart.size()) return fSource.Read(pBuffer, pLength);
    const size_t length = fStart.copy(pBuffer, pLength, fRead);
    fRead += length;
    return length;
  }

  void Skip(size_t pLength) { fRead += pLength; }

 private:
  IByteSource& fSource;
  std::string fStart;
  size_t fRead = 0;
};

}  // namespace Vantrel::Opening

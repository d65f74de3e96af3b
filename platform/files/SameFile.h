#pragma once

// Tests whether two paths name one file, also through links and in another letter case.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Vantrel {

// The place that a path names. Two paths name one file when their places are the same. Existing files are compared by
// the numbers that the system gives them, other paths with all links resolved. A dangling link counts as the file that
// writing through it creates. Devices and pipes have no numbers, so only their paths are compared.
struct TFilePlace {
  std::u16string fPath;                                   // resolved as far as it exists
  std::optional<std::pair<uint64_t, uint64_t>> fNumbers;  // volume and file number of an existing regular file
};

// Asks the system; never fails. Any thread.
TFilePlace PlaceOfFile(const std::u16string& pPath);
bool IsSamePlace(const TFilePlace& pA, const TFilePlace& pB);

}  // namespace Vantrel

#pragma once

// Whether two paths name one file, also through links and in another letter case.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace Vantrel {

// What a path names. Two paths name one file when their places are the same: by the numbers that the system gives to
// files where both exist, else by the path with all links resolved. A link that leads nowhere yet counts as the file
// that writing through it makes. Devices and pipes have no numbers: two of them are the same by their paths only.
struct TFilePlace {
  std::u16string fPath;                                   // resolved as far as it exists
  std::optional<std::pair<uint64_t, uint64_t>> fNumbers;  // volume and file, of a regular file that exists
};

// Asks the system; never fails. Any thread.
TFilePlace PlaceOfFile(const std::u16string& pPath);
bool IsSamePlace(const TFilePlace& pA, const TFilePlace& pB);

}  // namespace Vantrel

#pragma once

// Pure: of mounts that show the same folder, which do not count.

#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/files/MountTable.h"

namespace Vantrel::Enumerators {

// The mounts that a scan of pScanRoot must not enter because the scan reaches the same folders by another road: of two
// mounts that show the same folder, or a folder and one beneath it, only one counts. Which one depends on the list
// alone, not on which a thread sees first: the one that shows more, else the shallower one, else the first in byte
// order. A mount stays when its other road leads out of the scan or is hidden under a third mount.
std::unordered_set<uint64_t> DuplicateMounts(const std::vector<TMount>& pMounts, std::string_view pScanRoot);

}  // namespace Vantrel::Enumerators

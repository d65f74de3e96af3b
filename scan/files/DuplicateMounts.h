#pragma once

// Finds the mounts that show a folder which the scan also reaches elsewhere. A pure function on the list of mounts.

#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/files/MountTable.h"

namespace Vantrel::Enumerators {

// The mounts that a scan of pScanRoot must not enter, because the scan reaches the same folders by another path. If two
// mounts show the same folder, or one shows a folder inside the other's, only one counts.
//
// The choice depends on the list alone, not on the order of threads. The mount that shows more counts, else the
// shallower one, else the first in byte order. A mount is entered if its other path leaves the scan or is hidden under
// a third mount.
std::unordered_set<uint64_t> DuplicateMounts(const std::vector<TMount>& pMounts, std::string_view pScanRoot);

}  // namespace Vantrel::Enumerators

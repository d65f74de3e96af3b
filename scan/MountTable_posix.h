#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace Kiv::Enumerators {

// One line of the kernel's list of mounts, texts decoded.
struct TMount {
  uint64_t fId = 0;
  std::string fDevice;      // "8:1": which file system
  std::string fRoot;        // the folder of that file system that is shown
  std::string fMountPoint;  // where it is shown
};

// Reads text in the form of /proc/self/mountinfo; lines of another form are passed over.
std::vector<TMount> ParseMountInfo(std::string_view pText);

// The mounts that a scan of pScanRoot must not enter because the scan reaches the same folders by another road: of two
// mounts that show the same folder, or a folder and one beneath it, only one counts. Which one depends on the list alone,
// not on which a thread sees first: the one that shows more, else the one with the shorter path, else the first in byte
// order. A mount stays when its other road leads out of the scan or is hidden under a third mount.
std::unordered_set<uint64_t> DuplicateMounts(const std::vector<TMount>& pMounts, std::string_view pScanRoot);

// The mounts of this process; empty where the kernel does not tell.
std::vector<TMount> ReadMounts();

// Whether a file system's magic number (statfs) is that of a kernel's pseudo file system, in which nothing is stored.
bool IsPseudoFileSystem(uint64_t pMagic);

}  // namespace Kiv::Enumerators

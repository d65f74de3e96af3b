#pragma once

// Finds the NTFS volume that is mounted at a path, and the device that it is on.

#include <optional>
#include <string>
#include <vector>

namespace Vantrel {

// An NTFS volume of this machine, as it is mounted.
struct TMountedNtfs {
  std::u16string fVolumeRoot;  // "C:\", "/mnt/data"
  std::u16string fDevice;      // "\\.\C:", "/dev/sdb1"
  // Paths beneath the root where other volumes hide its folders. On Windows such folders are known by themselves.
  std::vector<std::u16string> fMountsBeneath;
};

// The volume whose root is the path. No value when the path is inside a volume, or its file system is not NTFS, or the
// volume is on another machine. On Linux, changes that wait in memory are written to the device first. Any thread.
std::optional<TMountedNtfs> FindMountedNtfs(const std::u16string& pPath);

}  // namespace Vantrel

#pragma once

// Linux' table of mounts: which are seen, which are drives.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// One line of Linux' /proc/self/mountinfo, in native bytes with the escapes decoded.
struct TMount {
  uint64_t fId = 0;
  uint64_t fParentId = 0;   // the mount that this one is mounted on; of the first one none that is listed
  std::string fDevice;      // "8:1": which file system
  std::string fRoot;        // the folder of that file system that is shown
  std::string fMountPoint;  // where it is shown: "/home"
  std::string fFileSystem;  // "ext4"
  std::string fSource;      // "/dev/sda1", or a name such as "tmpfs"
  bool operator==(const TMount&) const = default;
};

// The mounts in the text of the table, in its order; lines of another form are passed over.
std::vector<TMount> ParseMountTable(std::string_view pTable);
// The mounts that this process sees; empty where the kernel does not tell. Linux only.
std::vector<TMount> ReadMountTable();

// Whether a native path is the folder or lies beneath it. Both are absolute, without a trailing slash.
bool IsSameOrBeneath(std::string_view pPath, std::string_view pFolder);

// The mount that holds an absolute, resolved path: the one with the longest mount point, and of several on one point
// the last, which hides the others. nullptr when the table has none.
const TMount* FindMount(const std::vector<TMount>& pMounts, std::string_view pPath);

// Of two roads to one folder, whether the first is the one that a person would name: the shallower, else the first in
// byte order.
bool ComesFirst(const TMount& pA, const TMount& pB);

// The mounts that a path leads to, outermost first; pointers into the list. The others are covered: on their own point,
// or on the way there, stands a mount that they are not mounted on.
std::vector<const TMount*> VisibleMounts(const std::vector<TMount>& pMounts);

// The mounts that a person takes for drives, by mount point in byte order: what stands on "/", block devices, and
// storage on other machines. Each device is there once, at the mount that shows all of it or comes first. A folder of a
// drive that is bound elsewhere is no drive, and neither are file systems in memory nor the images that programs come
// packed in.
std::vector<TMount> DriveMounts(const std::vector<TMount>& pMounts);

}  // namespace Vantrel

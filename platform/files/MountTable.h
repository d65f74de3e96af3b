#pragma once

// Reads Linux' table of mounts and finds the visible mounts and the drives among them.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// One line of Linux' /proc/self/mountinfo, in native bytes with the escapes decoded.
struct TMount {
  uint64_t fId = 0;
  uint64_t fParentId = 0;   // the mount that this one is mounted on; the first mount's is not listed
  std::string fDevice;      // the file system's device number: "8:1"
  std::string fRoot;        // the folder of that file system that the mount shows
  std::string fMountPoint;  // where the mount shows it: "/home"
  std::string fFileSystem;  // "ext4"
  std::string fSource;      // "/dev/sda1", or a name such as "tmpfs"
  bool operator==(const TMount&) const = default;
};

// The mounts in the text of the table, in its order. Lines of another form are ignored.
std::vector<TMount> ParseMountTable(std::string_view pTable);
// The mounts that this process sees. Empty when the kernel does not tell. Linux only.
std::vector<TMount> ReadMountTable();

// Whether a native path is the folder or lies beneath it. Both are absolute, without a trailing slash.
bool IsSameOrBeneath(std::string_view pPath, std::string_view pFolder);

// The mount that holds an absolute, resolved path: the one with the longest mount point. Of several on one point it is
// the last, which hides the others. nullptr when the table has none.
const TMount* FindMount(const std::vector<TMount>& pMounts, std::string_view pPath);

// Whether a user would rather name the first of two mounts that show one folder: the shallower path, else the first in
// byte order.
bool ComesFirst(const TMount& pA, const TMount& pB);

// The mounts that paths can reach, outermost first, as pointers into the list. The other mounts are covered: a later
// mount hides their mount point or a folder above it.
std::vector<const TMount*> VisibleMounts(const std::vector<TMount>& pMounts);

// The mounts that a user sees as drives, by mount point in byte order: the mount on "/", block devices, and storage on
// other machines. Each device is listed once, at the mount that shows all of it or comes first. Left out are folders of
// a drive that are bound elsewhere, file systems in memory, and the images that programs are packed in.
std::vector<TMount> DriveMounts(const std::vector<TMount>& pMounts);

}  // namespace Vantrel

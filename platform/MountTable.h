#pragma once

#include <string>
#include <string_view>

namespace Kiv {

// One line of Linux' /proc/self/mountinfo, in native bytes with the escapes decoded.
struct TMount {
  std::string fMountPoint;  // "/home"
  std::string fFileSystem;  // "ext4"
  std::string fSource;      // "/dev/sda1", or a name such as "tmpfs"
};

// Finds the mount that holds an absolute, resolved path in the text of the table: the one with the longest mount point,
// and of several on one point the last, which hides the others. False when the table has none.
bool FindMount(std::string_view pTable, std::string_view pPath, TMount& pMount);

}  // namespace Kiv

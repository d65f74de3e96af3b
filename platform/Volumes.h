#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Kiv {

// What is known of the volume that holds a path. Sizes in bytes; 0 or empty where the system does not tell.
struct TVolumeInformation {
  std::u16string fMountPoint;   // "/", "/home", "C:\"
  std::u16string fFileSystem;   // "ext4", "NTFS"
  std::u16string fLabel;        // volume label on Windows, the device on Linux ("/dev/sda1")
  int64_t fTotalBytes = 0;
  int64_t fFreeBytes = 0;       // free for this user
  int64_t fClusterSize = 0;
};

// Asks the system; false when the path does not exist or the volume cannot be asked. Any thread.
bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation);

// The mount points or drives of this machine's own storage: fixed drives on Windows, file systems on a block device on
// Linux. Any thread.
std::vector<std::u16string> ListLocalDrives();

}  // namespace Kiv

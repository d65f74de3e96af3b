#pragma once

// Size, free space and kind of a path's volume, and lists of local drives and all drives. A volume that hangs does not
// block the list.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Vantrel {

// What is known about the volume that holds a path. Sizes are in bytes; 0 or empty when the system does not tell.
struct TVolumeInformation {
  std::u16string fMountPoint;  // "/", "/home", "C:\"
  std::u16string fFileSystem;  // "ext4", "NTFS"
  std::u16string fLabel;       // volume label on Windows, the device on Linux ("/dev/sda1")
  int64_t fTotalBytes = 0;
  int64_t fFreeBytes = 0;  // free for this user
  int64_t fUsedBytes = 0;  // by all users; free + used may be below the total, as the system reserves space
  int64_t fClusterSize = 0;
};

// Asks the system; false when the path does not exist or the volume cannot be asked. Any thread.
bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation);

// The mount points or drives of this machine's own storage: fixed drives on Windows; on Linux those of ListDrives that
// are block devices. Any thread.
std::vector<std::u16string> ListLocalDrives();

// The drives as a user sees them, sorted by path: drive letters with a medium on Windows, DriveMounts on Linux. A drive
// that does not answer within pMilliseconds, such as a share of a lost server, is listed without sizes. Any thread.
std::vector<TVolumeInformation> ListDrives(int64_t pMilliseconds = 3000);

// Asks a volume for its missing information. False when the volume turns out not to exist.
using TVolumeQuestion = std::function<bool(TVolumeInformation&)>;
// Asks all volumes at once, each on its own thread, and leaves out those that do not exist. A volume that does not
// answer within pMilliseconds is returned unchanged. Its thread runs on, maybe for ever, so the question must own all
// that it uses. Any thread.
std::vector<TVolumeInformation> AskVolumes(std::vector<TVolumeInformation> pVolumes, TVolumeQuestion pQuestion,
                                           int64_t pMilliseconds);

}  // namespace Vantrel

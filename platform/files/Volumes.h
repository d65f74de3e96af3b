#pragma once

// Size, free space and kind of the volume of a path; local drives; all drives, without waiting for one that hangs.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Vantrel {

// What is known of the volume that holds a path. Sizes in bytes; 0 or empty where the system does not tell.
struct TVolumeInformation {
  std::u16string fMountPoint;  // "/", "/home", "C:\"
  std::u16string fFileSystem;  // "ext4", "NTFS"
  std::u16string fLabel;       // volume label on Windows, the device on Linux ("/dev/sda1")
  int64_t fTotalBytes = 0;
  int64_t fFreeBytes = 0;  // free for this user
  int64_t fUsedBytes = 0;  // by everybody; with what is kept back for the system, free and used are less than the total
  int64_t fClusterSize = 0;
};

// Asks the system; false when the path does not exist or the volume cannot be asked. Any thread.
bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation);

// The mount points or drives of this machine's own storage: fixed drives on Windows, those of ListDrives on a block
// device on Linux. Any thread.
std::vector<std::u16string> ListLocalDrives();

// What a person takes for drives, by path: drive letters with a medium on Windows, DriveMounts on Linux. One that has
// not answered after so many milliseconds, such as a share whose server is gone, is there without sizes. Any thread.
std::vector<TVolumeInformation> ListDrives(int64_t pMilliseconds = 3000);

// Asks for what is still missing of a volume; false when there turns out to be no such volume.
using TVolumeQuestion = std::function<bool(TVolumeInformation&)>;
// Asks about all the volumes at once, each on a thread of its own, and leaves out those that turn out not to be there.
// A volume without an answer after so many milliseconds is returned as it came. Its thread goes on, maybe for ever: the
// question must own all that it uses. Any thread.
std::vector<TVolumeInformation> AskVolumes(std::vector<TVolumeInformation> pVolumes, TVolumeQuestion pQuestion,
                                           int64_t pMilliseconds);

}  // namespace Vantrel

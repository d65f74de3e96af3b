#include <sys/statvfs.h>

#include <fstream>
#include <iterator>

#include "platform/MountTable.h"
#include "platform/Paths.h"
#include "platform/Text.h"
#include "platform/Volumes.h"

namespace Kiv {

bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation) {
  const std::u16string resolved = ResolvedPath(pPath);
  if (resolved.empty()) return false;
  const std::string path = ToNativeBytes(resolved);
  std::ifstream file("/proc/self/mountinfo", std::ios::binary);
  const std::string table{std::istreambuf_iterator<char>(file), {}};
  TMount mount;
  const bool known = FindMount(table, path, mount);

  struct statvfs volume {};
  // A path too long for the call is asked for through its mount point.
  if (statvfs(path.c_str(), &volume) != 0 && (!known || statvfs(mount.fMountPoint.c_str(), &volume) != 0)) return false;
  pInformation = {};
  if (known) {
    pInformation.fMountPoint = FromNativeBytes(mount.fMountPoint);
    pInformation.fFileSystem = FromNativeBytes(mount.fFileSystem);
    pInformation.fLabel = FromNativeBytes(mount.fSource);
  }
  pInformation.fClusterSize = static_cast<int64_t>(volume.f_frsize);
  pInformation.fTotalBytes = static_cast<int64_t>(volume.f_blocks * volume.f_frsize);
  pInformation.fFreeBytes = static_cast<int64_t>(volume.f_bavail * volume.f_frsize);
  return true;
}

}  // namespace Kiv

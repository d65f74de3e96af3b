#include <sys/statvfs.h>

#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "platform/MountTable.h"
#include "platform/Paths.h"
#include "platform/Text.h"
#include "platform/Volumes.h"

namespace Kiv {

std::vector<TMount> ReadMountTable() {
  std::ifstream file("/proc/self/mountinfo", std::ios::binary);
  return ParseMountTable(std::string(std::istreambuf_iterator<char>(file), {}));
}

bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation) {
  const std::u16string resolved = ResolvedPath(pPath);
  if (resolved.empty()) return false;
  const std::string path = ToNativeBytes(resolved);
  const std::vector<TMount> mounts = ReadMountTable();
  const TMount* mount = FindMount(mounts, path);

  struct statvfs volume {};
  // A path too long for the call is asked for through its mount point.
  if (statvfs(path.c_str(), &volume) != 0 && (mount == nullptr || statvfs(mount->fMountPoint.c_str(), &volume) != 0)) return false;
  pInformation = {};
  if (mount != nullptr) {
    pInformation.fMountPoint = FromNativeBytes(mount->fMountPoint);
    pInformation.fFileSystem = FromNativeBytes(mount->fFileSystem);
    pInformation.fLabel = FromNativeBytes(mount->fSource);
  }
  pInformation.fClusterSize = static_cast<int64_t>(volume.f_frsize);
  pInformation.fTotalBytes = static_cast<int64_t>(volume.f_blocks * volume.f_frsize);
  pInformation.fFreeBytes = static_cast<int64_t>(volume.f_bavail * volume.f_frsize);
  return true;
}

std::vector<std::u16string> ListLocalDrives() {
  // A file system with a block device behind it stores something here; each counts once, at its first mount point.
  std::vector<std::u16string> drives;
  std::set<std::string> devices;
  for (const TMount& mount : ReadMountTable())
    if (mount.fSource.starts_with("/dev/") && mount.fRoot == "/" && devices.insert(mount.fDevice).second)
      drives.push_back(FromNativeBytes(mount.fMountPoint));
  return drives;
}

}  // namespace Kiv

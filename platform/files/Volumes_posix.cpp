#include <sys/statvfs.h>

#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/files/MountTable.h"
#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::vector<TMount> ReadMountTable() {
  std::ifstream file("/proc/self/mountinfo", std::ios::binary);
  return ParseMountTable(std::string(std::istreambuf_iterator<char>(file), {}));
}

namespace {

TVolumeInformation InformationOfMount(const TMount& pMount) {
  TVolumeInformation information;
  information.fMountPoint = FromNativeBytes(pMount.fMountPoint);
  information.fFileSystem = FromNativeBytes(pMount.fFileSystem);
  information.fLabel = FromNativeBytes(pMount.fSource);
  return information;
}

bool AskSizes(const std::string& pPath, TVolumeInformation& pInformation) {
  struct statvfs volume {};
  if (statvfs(pPath.c_str(), &volume) != 0) return false;
  pInformation.fClusterSize = static_cast<int64_t>(volume.f_frsize);
  pInformation.fTotalBytes = static_cast<int64_t>(volume.f_blocks * volume.f_frsize);
  pInformation.fFreeBytes = static_cast<int64_t>(volume.f_bavail * volume.f_frsize);
  pInformation.fUsedBytes = static_cast<int64_t>((volume.f_blocks - volume.f_bfree) * volume.f_frsize);
  return true;
}

}  // namespace

bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation) {
  const std::u16string resolved = ResolvedPath(pPath);
  if (resolved.empty()) return false;
  const std::string path = ToNativeBytes(resolved);
  const std::vector<TMount> mounts = ReadMountTable();
  const TMount* mount = FindMount(mounts, path);
  TVolumeInformation information = mount != nullptr ? InformationOfMount(*mount) : TVolumeInformation();
  // A path that is too long for the call is asked through its mount point.
  if (!AskSizes(path, information) && (mount == nullptr || !AskSizes(mount->fMountPoint, information))) return false;
  pInformation = std::move(information);
  return true;
}

std::vector<std::u16string> ListLocalDrives() {
  std::vector<std::u16string> drives;
  for (const TMount& mount : DriveMounts(ReadMountTable()))
    if (mount.fSource.starts_with("/dev/")) drives.push_back(FromNativeBytes(mount.fMountPoint));
  return drives;
}

std::vector<TVolumeInformation> ListDrives(int64_t pMilliseconds) {
  std::vector<TVolumeInformation> drives;
  for (const TMount& mount : DriveMounts(ReadMountTable())) drives.push_back(InformationOfMount(mount));
  auto ask = [](TVolumeInformation& pDrive) {
    AskSizes(ToNativeBytes(pDrive.fMountPoint), pDrive);
    return true;  // it is mounted, whether it answers or not
  };
  return AskVolumes(std::move(drives), ask, pMilliseconds);
}

}  // namespace Vantrel

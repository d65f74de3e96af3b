#include <fcntl.h>
#include <unistd.h>

#include "platform/files/MountTable.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "platform/volumes/MountedVolumes.h"

namespace Vantrel {

namespace {

// Drivers in the kernel have their own names. A driver outside of it is known by what is on the device.
bool MayBeNtfs(const TMount& pMount) {
  const std::string& kind = pMount.fFileSystem;
  return kind == "ntfs" || kind == "ntfs3" || kind == "fuseblk" || kind == "fuse" || kind == "fuse.ntfs-3g";
}

bool HoldsNtfs(const std::string& pDevice) {
  const int handle = open(pDevice.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (handle < 0) return true;  // opening it for the scan tells why it cannot be read
  char start[11] = {};
  const bool isRead = pread(handle, start, sizeof start, 0) == sizeof start;
  close(handle);
  return isRead && std::string_view(start + 3, 8) == "NTFS    ";
}

void WriteChanges(const std::string& pFolder) {
  const int handle = open(pFolder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle < 0) return;
  syncfs(handle);
  close(handle);
}

}  // namespace

std::optional<TMountedNtfs> FindMountedNtfs(const std::u16string& pPath) {
  const std::string path = ToNativeBytes(ResolvedPath(pPath));
  if (path.empty()) return {};
  const std::vector<TMount> mounts = ReadMountTable();
  const TMount* mount = FindMount(mounts, path);
  if (!mount || mount->fMountPoint != path || mount->fRoot != "/" || !MayBeNtfs(*mount)) return {};
  if (!mount->fSource.starts_with('/') || access(mount->fSource.c_str(), F_OK) != 0 || !HoldsNtfs(mount->fSource))
    return {};
  WriteChanges(path);
  TMountedNtfs volume{pPath, FromNativeBytes(mount->fSource), {}};
  for (const TMount& other : mounts) {
    if (other.fMountPoint == path || !IsSameOrBeneath(other.fMountPoint, path)) continue;
    // The scan names its folders by the path as it was given.
    const std::string inside = other.fMountPoint.substr(path == "/" ? 0 : path.size());
    volume.fMountsBeneath.push_back((pPath == u"/" ? std::u16string() : pPath) + FromNativeBytes(inside));
  }
  return volume;
}

}  // namespace Vantrel

#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/Win32_win32.h"
#include "platform/volumes/MountedVolumes.h"

namespace Vantrel {

using namespace Win32;

std::optional<TMountedNtfs> FindMountedNtfs(const std::u16string& pPath) {
  TVolumeInformation information;
  if (!GetVolumeInformationOfPath(pPath, information) || information.fFileSystem != u"NTFS") return {};
  std::u16string root = information.fMountPoint;
  if (!root.ends_with(u'\\')) root += u'\\';
  if (!SamePath(WithoutTrailingDelimiter(root, u'\\'), WithoutTrailingDelimiter(pPath, u'\\'), u'\\')) return {};
  const UINT kind = GetDriveTypeW(Wide(root));
  if (kind != DRIVE_FIXED && kind != DRIVE_REMOVABLE) return {};
  // A volume that is mounted into a folder has no letter, but a name of its own.
  wchar_t name[64] = L"";
  if (!GetVolumeNameForVolumeMountPointW(Wide(root), name, 64)) return {};
  std::u16string device(Narrow(name));
  device.pop_back();
  return TMountedNtfs{root, device, {}};
}

}  // namespace Vantrel

#include "platform/Paths.h"
#include "platform/Volumes.h"
#include "platform/Win32_win32.h"

namespace Kiv {

using namespace Win32;

bool GetVolumeInformationOfPath(const std::u16string& pPath, TVolumeInformation& pInformation) {
  const std::u16string path = ExtendedPath(AbsolutePath(pPath));
  if (path.empty() || GetFileAttributesW(Wide(path)) == INVALID_FILE_ATTRIBUTES) return false;
  // The mount point is never longer than the path, but may gain a trailing delimiter.
  std::u16string mountPoint(path.size() + 2, 0);
  if (!GetVolumePathNameW(Wide(path), reinterpret_cast<wchar_t*>(mountPoint.data()),
                          static_cast<DWORD>(mountPoint.size())))
    return false;
  mountPoint.resize(mountPoint.find(u'\0'));

  pInformation = {};
  pInformation.fMountPoint = WithoutExtendedPrefix(mountPoint);
  wchar_t label[MAX_PATH + 1] = L"";
  wchar_t fileSystem[MAX_PATH + 1] = L"";
  if (GetVolumeInformationW(Wide(mountPoint), label, MAX_PATH + 1, nullptr, nullptr, nullptr, fileSystem,
                            MAX_PATH + 1)) {
    pInformation.fLabel = Narrow(label);
    pInformation.fFileSystem = Narrow(fileSystem);
  }
  DWORD sectors = 0;
  DWORD sectorBytes = 0;
  DWORD freeClusters = 0;
  DWORD clusters = 0;
  if (GetDiskFreeSpaceW(Wide(mountPoint), &sectors, &sectorBytes, &freeClusters, &clusters))
    pInformation.fClusterSize = int64_t{sectors} * sectorBytes;
  ULARGE_INTEGER available{};
  ULARGE_INTEGER total{};
  if (GetDiskFreeSpaceExW(Wide(mountPoint), &available, &total, nullptr)) {
    pInformation.fFreeBytes = static_cast<int64_t>(available.QuadPart);
    pInformation.fTotalBytes = static_cast<int64_t>(total.QuadPart);
  }
  return true;
}

std::vector<std::u16string> ListLocalDrives() {
  std::vector<std::u16string> drives;
  const DWORD present = GetLogicalDrives();
  for (int letter = 0; letter < 26; ++letter) {
    if ((present & (1u << letter)) == 0) continue;
    const wchar_t path[] = {static_cast<wchar_t>(L'A' + letter), L':', L'\\', 0};
    if (GetDriveTypeW(path) == DRIVE_FIXED) drives.push_back({static_cast<char16_t>(path[0]), u':', u'\\'});
  }
  return drives;
}

}  // namespace Kiv

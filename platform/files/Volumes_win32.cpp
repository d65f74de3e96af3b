#include <algorithm>
#include <utility>

#include "platform/files/Paths.h"
#include "platform/files/Volumes.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

namespace {

// Fills in what the system tells about the volume at a mount point. False, with the system's error code, when it does
// not even name the file system.
bool AskVolume(const std::u16string& pMountPoint, TVolumeInformation& pInformation) {
  DWORD sectors = 0;
  DWORD sectorBytes = 0;
  DWORD freeClusters = 0;
  DWORD clusters = 0;
  if (GetDiskFreeSpaceW(Wide(pMountPoint), &sectors, &sectorBytes, &freeClusters, &clusters))
    pInformation.fClusterSize = int64_t{sectors} * sectorBytes;
  ULARGE_INTEGER available{};
  ULARGE_INTEGER total{};
  ULARGE_INTEGER allFree{};
  if (GetDiskFreeSpaceExW(Wide(pMountPoint), &available, &total, &allFree)) {
    pInformation.fFreeBytes = static_cast<int64_t>(available.QuadPart);
    pInformation.fTotalBytes = static_cast<int64_t>(total.QuadPart);
    // With a quota the total is the user's own, but the free space is that of all users.
    pInformation.fUsedBytes = static_cast<int64_t>(total.QuadPart - std::min(total.QuadPart, allFree.QuadPart));
  }
  wchar_t label[MAX_PATH + 1] = L"";
  wchar_t fileSystem[MAX_PATH + 1] = L"";
  if (!GetVolumeInformationW(Wide(pMountPoint), label, MAX_PATH + 1, nullptr, nullptr, nullptr, fileSystem,
                             MAX_PATH + 1))
    return false;
  pInformation.fLabel = Narrow(label);
  pInformation.fFileSystem = Narrow(fileSystem);
  return true;
}

// The drives with a letter, including those without a medium.
std::vector<std::u16string> DriveLetters() {
  std::vector<std::u16string> drives;
  const DWORD present = GetLogicalDrives();
  for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
    if ((present & (1u << (letter - u'A'))) != 0) drives.push_back({letter, u':', u'\\'});
  return drives;
}

// A drive that does not answer is still listed. A drive without a medium is not.
bool AskDrive(TVolumeInformation& pDrive) {
  // Without this Windows may stop and ask the user to insert a disk.
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, nullptr);
  if (AskVolume(pDrive.fMountPoint, pDrive)) return true;
  const DWORD error = GetLastError();
  return error != ERROR_NOT_READY && error != ERROR_NO_MEDIA_IN_DRIVE;
}

}  // namespace

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
  AskVolume(mountPoint, pInformation);
  return true;
}

std::vector<std::u16string> ListLocalDrives() {
  std::vector<std::u16string> drives = DriveLetters();
  std::erase_if(drives, [](const std::u16string& pDrive) { return GetDriveTypeW(Wide(pDrive)) != DRIVE_FIXED; });
  return drives;
}

std::vector<TVolumeInformation> ListDrives(int64_t pMilliseconds) {
  std::vector<TVolumeInformation> drives;
  for (std::u16string& letter : DriveLetters()) drives.emplace_back().fMountPoint = std::move(letter);
  return AskVolumes(std::move(drives), AskDrive, pMilliseconds);
}

}  // namespace Vantrel

#include "platform/system/Win32_win32.h"
// After it, since this header of the system includes none of what it uses.
#include <winioctl.h>

#include "platform/files/Volumes.h"
#include "scan/files/DiskOrder.h"
#include "scan/files/LocalFile.h"

namespace Vantrel::Storages {

using namespace Win32;

bool LiesOnRotatingDisk(const std::u16string& pPath) {
  TVolumeInformation volume;
  // "C:\" is the volume \\.\C: as a device.
  if (!GetVolumeInformationOfPath(pPath, volume) || volume.fMountPoint.size() != 3) return false;
  const std::u16string device = u"\\\\.\\" + volume.fMountPoint.substr(0, 2);
  const HANDLE handle =
      CreateFileW(Wide(device), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return false;
  STORAGE_PROPERTY_QUERY query{};
  query.PropertyId = StorageDeviceSeekPenaltyProperty;
  query.QueryType = PropertyStandardQuery;
  DEVICE_SEEK_PENALTY_DESCRIPTOR answer{};
  DWORD length = 0;
  const bool isTold = DeviceIoControl(handle, IOCTL_STORAGE_QUERY_PROPERTY, &query, sizeof query, &answer,
                                      sizeof answer, &length, nullptr) != 0;
  CloseHandle(handle);
  return isTold && length >= sizeof answer && answer.IncursSeekPenalty;
}

// Numbers of files follow the order in which they were made.
std::optional<uint64_t> PlaceOfFile(const std::u16string& pPath) {
  const std::optional<TStoredFileFacts> facts = QueryLocalFacts(pPath);
  return facts ? std::optional(facts->fId) : std::nullopt;
}

}  // namespace Vantrel::Storages

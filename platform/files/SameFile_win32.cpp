#include "platform/files/CanonicalPath.h"
#include "platform/files/Paths.h"
#include "platform/files/SameFile.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

TFilePlace PlaceOfFile(const std::u16string& pPath) {
  TFilePlace place{CanonicalPath(pPath), {}};
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const std::u16string absolute = ExtendedPath(AbsolutePath(pPath));
  if (absolute.starts_with(u"\\\\.\\")) return place;  // opening a pipe would occupy the place of its client
  const HANDLE file = CreateFileW(Wide(absolute), 0, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return place;
  BY_HANDLE_FILE_INFORMATION info{};
  if (GetFileType(file) == FILE_TYPE_DISK && GetFileInformationByHandle(file, &info)) {
    const uint64_t number = static_cast<uint64_t>(info.nFileIndexHigh) << 32 | info.nFileIndexLow;
    if (number != 0) place.fNumbers.emplace(info.dwVolumeSerialNumber, number);
  }
  CloseHandle(file);
  return place;
}

}  // namespace Vantrel

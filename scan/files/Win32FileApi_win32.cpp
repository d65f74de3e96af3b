#include "scan/files/Win32FileApi_win32.h"

#include <winioctl.h>
#include <winternl.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <memory>
#include <vector>

#include "platform/files/Paths.h"
#include "platform/system/System.h"
#include "scan/files/VolumeInformationCache.h"

extern "C" NTSTATUS NTAPI NtQueryDirectoryFile(HANDLE pFile, HANDLE pEvent, PIO_APC_ROUTINE pRoutine, PVOID pContext,
                                               PIO_STATUS_BLOCK pStatusBlock, PVOID pBuffer, ULONG pLength,
                                               FILE_INFORMATION_CLASS pClass, BOOLEAN pSingleEntry,
                                               PUNICODE_STRING pMask, BOOLEAN pRestart);

namespace Vantrel::Enumerators {
namespace {

using namespace Win32;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kListAccess = 0x100081;  // list directory, read attributes, synchronise
constexpr std::u16string_view kPrefix = u"\\\\?\\";

struct TCloseHandle {
  using pointer = HANDLE;
  void operator()(HANDLE pHandle) const { CloseHandle(pHandle); }
};
using THandle = std::unique_ptr<HANDLE, TCloseHandle>;

// Opens a file only to read its attributes. This fetches nothing from a cloud and does not fail on an exclusive lock.
THandle OpenForAttributes(const std::u16string& pPath, DWORD pFlags) {
  HANDLE handle = CreateFileW(Wide(pPath), FILE_READ_ATTRIBUTES | SYNCHRONIZE, kShareAll, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | pFlags, nullptr);
  return THandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// Turns the kernel's spelling of a target, "\??\C:\x" or "\??\UNC\server\share", into the usual one.
std::u16string UsualTarget(std::u16string_view pTarget) {
  if (!pTarget.starts_with(u"\\??\\")) return WithoutExtendedPrefix(pTarget);
  return WithoutExtendedPrefix(std::u16string(kPrefix).append(pTarget.substr(4)));
}

// Replaces a volume's name by its drive letter, which tells whether the target lies inside the scan. A volume that is
// mounted only in folders keeps its name, since one of those folders may be the link itself.
std::u16string WithDriveLetter(const std::u16string& pTarget) {
  if (!pTarget.starts_with(u"\\\\?\\Volume{")) return pTarget;
  size_t end = pTarget.find(u'\\', kPrefix.size());
  std::u16string volume = pTarget.substr(0, end) + u"\\";
  std::array<wchar_t, 4096> paths{};
  DWORD length = 0;
  if (!GetVolumePathNamesForVolumeNameW(Wide(volume), paths.data(), static_cast<DWORD>(paths.size()), &length) ||
      paths[0] == 0)
    return pTarget;
  for (const wchar_t* path = paths.data(); *path != 0; path += std::wcslen(path) + 1) {
    std::u16string drive(Narrow(std::wstring_view(path)));
    if (drive.size() == 3) return end == std::u16string::npos ? drive : drive + pTarget.substr(end + 1);
  }
  return pTarget;
}

// Some file servers show links but do not return their data. Wine does the same for links of the system beneath it. The
// final path shows where such a link leads. False when the final path is the path itself.
bool ReadLinkByFinalPath(const std::u16string& pPath, TReparsePoint& pPoint) {
  std::u16string target = Vantrel::ResolvedPath(pPath);
  std::u16string folder = Vantrel::ResolvedPath(std::u16string(FolderOfPath(pPath, u'\\')));
  if (target.empty() || SamePath(target, JoinPath(folder, FileNameOfPath(pPath, u'\\'), u'\\'), u'\\')) return false;
  pPoint = {static_cast<uint32_t>(IO_REPARSE_TAG_SYMLINK), target};
  return true;
}

template <class T>
bool ReadAt(std::span<const std::byte> pData, size_t pOffset, T& pValue) {
  if (pOffset + sizeof(T) > pData.size()) return false;
  std::memcpy(&pValue, pData.data() + pOffset, sizeof(T));
  return true;
}

int64_t SumOfNamedStreams(HANDLE pFile) {
  std::vector<std::byte> buffer(4096);
  for (;;) {
    IO_STATUS_BLOCK block{};
    NTSTATUS status =
        NtQueryInformationFile(pFile, &block, buffer.data(), static_cast<ULONG>(buffer.size()), FileStreamInformation);
    if (static_cast<uint32_t>(status) != 0x80000005 || buffer.size() >= 1024 * 1024) {
      if (status < 0 || block.Information == 0) return 0;
      buffer.resize(block.Information);
      break;
    }
    buffer.resize(buffer.size() * 4);
  }
  int64_t sum = 0;
  for (size_t offset = 0;;) {
    FILE_STREAM_INFORMATION stream{};
    constexpr size_t header = offsetof(FILE_STREAM_INFORMATION, StreamName);
    if (offset + header > buffer.size()) return sum;
    std::memcpy(&stream, buffer.data() + offset, header);
    std::u16string name(stream.StreamNameLength / 2, 0);
    if (offset + header + name.size() * 2 > buffer.size()) return sum;
    std::memcpy(name.data(), buffer.data() + offset + header, name.size() * 2);
    if (name != u"::$DATA") sum += stream.StreamSize.QuadPart;
    if (stream.NextEntryOffset == 0) return sum;
    offset += stream.NextEntryOffset;
  }
}

}  // namespace

bool IsShadowCopyPath(std::u16string_view pPath) {
  return pPath.find(u"HarddiskVolumeShadowCopy") != pPath.npos || pPath.find(u"\\@GMT-") != pPath.npos;
}

std::u16string LongPathForm(std::u16string_view pPath) {
  if (pPath.empty()) return {};
  std::u16string path(pPath);
  for (char16_t& c : path)
    if (c == u'/') c = u'\\';
  if (!path.starts_with(kPrefix) && !path.starts_with(u"\\\\.\\")) {
    if (path.starts_with(u"\\\\"))
      path = std::u16string(u"\\\\?\\UNC") + path.substr(1);
    else
      path.insert(0, kPrefix);
  }
  if (path.back() == u':' || path.back() == u'}') path += u'\\';
  return path;
}

std::u16string ApiPath(std::u16string_view pPath) {
  return IsShadowCopyPath(pPath) ? std::u16string(pPath) : LongPathForm(pPath);
}

// The layout: tag (4 bytes), length of the data after the 8-byte header (2), reserved (2). Then offset and length of
// the target and of its printed form in bytes (4 × 2). Symbolic links have flags (4) next. The characters follow.
bool ParseReparseData(std::span<const std::byte> pData, TReparsePoint& pPoint) {
  pPoint = {};
  uint16_t length = 0;
  if (!ReadAt(pData, 0, pPoint.fTag) || !ReadAt(pData, 4, length) || pData.size() < size_t{8} + length) return false;
  bool isSymbolicLink = pPoint.fTag == IO_REPARSE_TAG_SYMLINK;
  if (!isSymbolicLink && pPoint.fTag != IO_REPARSE_TAG_MOUNT_POINT) return true;
  uint16_t offset = 0;
  uint16_t bytes = 0;
  if (!ReadAt(pData, 8, offset) || !ReadAt(pData, 10, bytes)) return false;
  size_t begin = size_t{8} + (isSymbolicLink ? 12 : 8) + offset;
  if (begin + bytes > size_t{8} + length) return false;
  std::u16string target(bytes / 2, 0);
  std::memcpy(target.data(), pData.data() + begin, target.size() * 2);
  pPoint.fTarget = UsualTarget(target);
  return true;
}

TSystemFileApi& TSystemFileApi::Instance() {
  static TSystemFileApi api;
  return api;
}

HANDLE TSystemFileApi::OpenDirectory(const std::u16string& pPath, uint32_t pFlags, uint32_t& pErrorCode) {
  HANDLE handle = CreateFileW(Wide(pPath), kListAccess, kShareAll, nullptr, OPEN_EXISTING, pFlags, nullptr);
  pErrorCode = handle == INVALID_HANDLE_VALUE ? GetLastError() : 0;
  return handle;
}

void TSystemFileApi::CloseDirectory(HANDLE pDirectory) noexcept {
  CloseHandle(pDirectory);
}

uint32_t TSystemFileApi::QueryIdentity(HANDLE pDirectory, TFolderIdentity& pIdentity) {
  // 128-bit IDs are unique on every file system. Older file systems know only 64-bit IDs.
  FILE_ID_INFO id{};
  BY_HANDLE_FILE_INFORMATION information{};
  if (GetFileInformationByHandleEx(pDirectory, FileIdInfo, &id, sizeof(id))) {
    pIdentity.fVolume = id.VolumeSerialNumber;
    std::memcpy(&pIdentity.fId, id.FileId.Identifier, 8);
    std::memcpy(&pIdentity.fIdHigh, id.FileId.Identifier + 8, 8);
  } else if (GetFileInformationByHandle(pDirectory, &information)) {
    pIdentity = {information.dwVolumeSerialNumber,
                 (uint64_t{information.nFileIndexHigh} << 32) | information.nFileIndexLow};
  } else {
    return GetLastError();
  }
  return pIdentity.fId == 0 && pIdentity.fIdHigh == 0 ? ERROR_NOT_SUPPORTED : 0;
}

uint32_t TSystemFileApi::QueryDirectory(HANDLE pDirectory, std::span<std::byte> pBuffer, const std::u16string* pMask,
                                        bool pRestart, uint32_t& pBytes) {
  UNICODE_STRING mask{};
  if (pMask != nullptr) {
    mask.Length = mask.MaximumLength = static_cast<USHORT>(pMask->size() * 2);
    mask.Buffer = const_cast<wchar_t*>(Wide(*pMask));
  }
  IO_STATUS_BLOCK block{};
  NTSTATUS status = NtQueryDirectoryFile(pDirectory, nullptr, nullptr, nullptr, &block, pBuffer.data(),
                                         static_cast<ULONG>(pBuffer.size()), FileFullDirectoryInformation, FALSE,
                                         pMask != nullptr ? &mask : nullptr, pRestart ? TRUE : FALSE);
  pBytes = static_cast<uint32_t>(block.Information);
  return static_cast<uint32_t>(status);
}

HANDLE TSystemFileApi::FindFirst(const std::u16string& pPattern, TKivWin32FindData& pData, uint32_t& pErrorCode) {
  HANDLE handle = FindFirstFileExW(Wide(pPattern), FindExInfoBasic, &pData, FindExSearchNameMatch, nullptr,
                                   FIND_FIRST_EX_LARGE_FETCH);
  pErrorCode = handle == INVALID_HANDLE_VALUE ? GetLastError() : 0;
  return handle;
}

uint32_t TSystemFileApi::FindNext(HANDLE pFind, TKivWin32FindData& pData) {
  return FindNextFileW(pFind, &pData) ? 0 : GetLastError();
}

void TSystemFileApi::CloseFind(HANDLE pFind) noexcept {
  FindClose(pFind);
}

uint32_t TSystemFileApi::QueryEntry(const std::u16string& pPath, TKivWin32FindData& pData) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  pData = {};
  if (!GetFileAttributesExW(Wide(pPath), GetFileExInfoStandard, &data)) return GetLastError();
  pData.dwFileAttributes = data.dwFileAttributes;
  pData.ftCreationTime = data.ftCreationTime;
  pData.ftLastAccessTime = data.ftLastAccessTime;
  pData.ftLastWriteTime = data.ftLastWriteTime;
  pData.nFileSizeHigh = data.nFileSizeHigh;
  pData.nFileSizeLow = data.nFileSizeLow;
  return 0;
}

uint32_t TSystemFileApi::ReadReparsePoint(const std::u16string& pPath, TReparsePoint& pPoint) {
  THandle file = OpenForAttributes(pPath, FILE_FLAG_OPEN_REPARSE_POINT);
  if (!file) return GetLastError();
  std::array<std::byte, MAXIMUM_REPARSE_DATA_BUFFER_SIZE> buffer;
  DWORD bytes = 0;
  if (!DeviceIoControl(file.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, buffer.data(),
                       static_cast<DWORD>(buffer.size()), &bytes, nullptr)) {
    uint32_t code = GetLastError();
    return ReadLinkByFinalPath(pPath, pPoint) ? 0 : code;
  }
  if (!ParseReparseData(std::span(buffer.data(), bytes), pPoint)) return ERROR_INVALID_REPARSE_DATA;
  pPoint.fTarget = WithDriveLetter(pPoint.fTarget);
  return 0;
}

uint32_t TSystemFileApi::QueryLinks(const std::u16string& pPath, TLinkInformation& pInformation) {
  THandle file = OpenForAttributes(pPath, FILE_FLAG_OPEN_REPARSE_POINT);
  if (!file) return GetLastError();
  FILE_STANDARD_INFORMATION standard{};
  IO_STATUS_BLOCK block{};
  NTSTATUS status = NtQueryInformationFile(file.get(), &block, &standard, sizeof(standard), FileStandardInformation);
  if (status < 0) return RtlNtStatusToDosError(status);
  pInformation.fNumberOfHardLinks = standard.NumberOfLinks;
  pInformation.fADSSize = SumOfNamedStreams(file.get());
  return 0;
}

uint32_t TSystemFileApi::QueryCompressedSize(const std::u16string& pPath, int64_t& pBytes) {
  DWORD high = 0;
  SetLastError(0);
  DWORD low = GetCompressedFileSizeW(Wide(pPath), &high);
  // 0xFFFFFFFF may also be a valid half of a size.
  if (low == INVALID_FILE_SIZE && GetLastError() != 0) return GetLastError();
  pBytes = static_cast<int64_t>((uint64_t{high} << 32) | low);
  return 0;
}

std::u16string TSystemFileApi::ResolvePath(const std::u16string& pPath) {
  return Vantrel::ResolvedPath(LongPathForm(pPath));
}

int64_t TSystemFileApi::ClusterSize(const std::u16string& pPath) {
  return TVolumeInformationCache::Instance().ClusterSize(pPath);
}

bool TSystemFileApi::EnableBackupPrivilege() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &opened)) return false;
  THandle token(opened);
  TOKEN_PRIVILEGES privileges{};
  privileges.PrivilegeCount = 1;
  privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
  if (!LookupPrivilegeValueW(nullptr, L"SeBackupPrivilege", &privileges.Privileges[0].Luid)) return false;
  if (!AdjustTokenPrivileges(token.get(), FALSE, &privileges, 0, nullptr, nullptr)) return false;
  return GetLastError() == ERROR_SUCCESS;  // the call also succeeds when it granted nothing
}

int64_t TSystemFileApi::TickCount() {
  return TickCount64();
}

}  // namespace Vantrel::Enumerators

#pragma once

// Every system call of the enumerators, behind an interface for tests; long paths; reparse data.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/system/Win32_win32.h"
#include "scan/files/EnteredFolders.h"

// Everything that the Windows enumerators ask of the system, so that tests can stand in for what needs rights, volumes
// or faults that they cannot have.
namespace Vantrel::Enumerators {

using TKivWin32FindData = WIN32_FIND_DATAW;

// Where a reparse point leads. Tags whose target is not a path of this system leave it empty.
struct TReparsePoint {
  uint32_t fTag = 0;
  std::u16string fTarget;  // without the prefixes of the kernel and of extended paths
};

struct TLinkInformation {
  uint32_t fNumberOfHardLinks = 1;
  int64_t fADSSize = 0;  // bytes of all streams but the unnamed one
};

// Paths are in the form that ApiPath gives. Calls that return a code return 0 for success. Any thread.
class IWin32FileApi {
 public:
  virtual ~IWin32FileApi() = default;

  // INVALID_HANDLE_VALUE and the code when it fails.
  virtual HANDLE OpenDirectory(const std::u16string& pPath, uint32_t pFlags, uint32_t& pErrorCode) = 0;
  virtual void CloseDirectory(HANDLE pDirectory) noexcept = 0;
  // An error as well where the file system gives folders no ids.
  virtual uint32_t QueryIdentity(HANDLE pDirectory, TFolderIdentity& pIdentity) = 0;
  // One query of full directory information; a status of the kernel.
  virtual uint32_t QueryDirectory(HANDLE pDirectory, std::span<std::byte> pBuffer, const std::u16string* pMask,
                                  bool pRestart, uint32_t& pBytes) = 0;

  virtual HANDLE FindFirst(const std::u16string& pPattern, TKivWin32FindData& pData, uint32_t& pErrorCode) = 0;
  virtual uint32_t FindNext(HANDLE pFind, TKivWin32FindData& pData) = 0;
  virtual void CloseFind(HANDLE pFind) noexcept = 0;

  // Attributes, dates and size of one file or folder; the name stays empty, the tag 0.
  virtual uint32_t QueryEntry(const std::u16string& pPath, TKivWin32FindData& pData) = 0;
  virtual uint32_t ReadReparsePoint(const std::u16string& pPath, TReparsePoint& pPoint) = 0;
  virtual uint32_t QueryLinks(const std::u16string& pPath, TLinkInformation& pInformation) = 0;
  virtual uint32_t QueryCompressedSize(const std::u16string& pPath, int64_t& pBytes) = 0;
  // The path, a usual one, with all links resolved; empty when that fails.
  virtual std::u16string ResolvePath(const std::u16string& pPath) = 0;
  virtual int64_t ClusterSize(const std::u16string& pPath) = 0;  // of the volume of a folder, by a usual path

  virtual bool EnableBackupPrivilege() = 0;
  virtual int64_t TickCount() = 0;  // milliseconds
};

// The system itself. Tests derive from it and replace single calls.
class TSystemFileApi : public IWin32FileApi {
 public:
  static TSystemFileApi& Instance();

  HANDLE OpenDirectory(const std::u16string& pPath, uint32_t pFlags, uint32_t& pErrorCode) override;
  void CloseDirectory(HANDLE pDirectory) noexcept override;
  uint32_t QueryIdentity(HANDLE pDirectory, TFolderIdentity& pIdentity) override;
  uint32_t QueryDirectory(HANDLE pDirectory, std::span<std::byte> pBuffer, const std::u16string* pMask, bool pRestart,
                          uint32_t& pBytes) override;
  HANDLE FindFirst(const std::u16string& pPattern, TKivWin32FindData& pData, uint32_t& pErrorCode) override;
  uint32_t FindNext(HANDLE pFind, TKivWin32FindData& pData) override;
  void CloseFind(HANDLE pFind) noexcept override;
  uint32_t QueryEntry(const std::u16string& pPath, TKivWin32FindData& pData) override;
  uint32_t ReadReparsePoint(const std::u16string& pPath, TReparsePoint& pPoint) override;
  uint32_t QueryLinks(const std::u16string& pPath, TLinkInformation& pInformation) override;
  uint32_t QueryCompressedSize(const std::u16string& pPath, int64_t& pBytes) override;
  std::u16string ResolvePath(const std::u16string& pPath) override;
  int64_t ClusterSize(const std::u16string& pPath) override;
  bool EnableBackupPrivilege() override;
  int64_t TickCount() override;
};

// A path of a shadow copy, by device name or by its "@GMT-" part. Such paths go to the system as they are.
bool IsShadowCopyPath(std::u16string_view pPath);
// "\\?\C:\x", "\\?\UNC\server\share\x": by text alone, so that names which the usual form would trim (trailing dots and
// blanks) survive. Drives and volumes get the delimiter without which they would mean the device.
std::u16string LongPathForm(std::u16string_view pPath);
// The form in which a path goes to the system.
std::u16string ApiPath(std::u16string_view pPath);

// Reads what the system keeps in a reparse point. False when the data is cut short or contradicts itself; pPoint then
// holds the tag at most.
bool ParseReparseData(std::span<const std::byte> pData, TReparsePoint& pPoint);

}  // namespace Vantrel::Enumerators

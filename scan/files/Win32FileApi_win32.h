#pragma once

// The system calls of the Windows enumerators, behind an interface for tests; long paths; reparse data.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/system/Win32_win32.h"
#include "scan/files/EnteredFolders.h"

// All system calls of the Windows enumerators. Tests replace those that need rights, volumes or faults which a test
// machine does not have.
namespace Vantrel::Enumerators {

using TKivWin32FindData = WIN32_FIND_DATAW;

// Where a reparse point leads. The target is empty for tags whose target is not a path of this system.
struct TReparsePoint {
  uint32_t fTag = 0;
  std::u16string fTarget;  // without the prefixes of the kernel and of extended paths
};

struct TLinkInformation {
  uint32_t fNumberOfHardLinks = 1;
  int64_t fADSSize = 0;  // bytes of all streams except the unnamed one
};

// Paths have the form that ApiPath returns. A returned code of 0 means success. Any thread.
class IWin32FileApi {
 public:
  virtual ~IWin32FileApi() = default;

  // On failure, returns INVALID_HANDLE_VALUE and sets pErrorCode.
  virtual HANDLE OpenDirectory(const std::u16string& pPath, uint32_t pFlags, uint32_t& pErrorCode) = 0;
  virtual void CloseDirectory(HANDLE pDirectory) noexcept = 0;
  // Fails also on a file system that gives folders no IDs.
  virtual uint32_t QueryIdentity(HANDLE pDirectory, TFolderIdentity& pIdentity) = 0;
  // Makes one query of full directory information. Returns a status of the kernel.
  virtual uint32_t QueryDirectory(HANDLE pDirectory, std::span<std::byte> pBuffer, const std::u16string* pMask,
                                  bool pRestart, uint32_t& pBytes) = 0;

  virtual HANDLE FindFirst(const std::u16string& pPattern, TKivWin32FindData& pData, uint32_t& pErrorCode) = 0;
  virtual uint32_t FindNext(HANDLE pFind, TKivWin32FindData& pData) = 0;
  virtual void CloseFind(HANDLE pFind) noexcept = 0;

  // Gets the attributes, dates and size of one file or folder. The name stays empty and the tag 0.
  virtual uint32_t QueryEntry(const std::u16string& pPath, TKivWin32FindData& pData) = 0;
  virtual uint32_t ReadReparsePoint(const std::u16string& pPath, TReparsePoint& pPoint) = 0;
  virtual uint32_t QueryLinks(const std::u16string& pPath, TLinkInformation& pInformation) = 0;
  virtual uint32_t QueryCompressedSize(const std::u16string& pPath, int64_t& pBytes) = 0;
  // Returns the path with all links resolved, or an empty text on failure. pPath is a usual path, not in API form.
  virtual std::u16string ResolvePath(const std::u16string& pPath) = 0;
  virtual int64_t ClusterSize(const std::u16string& pPath) = 0;  // of the volume of a folder, given by a usual path

  virtual bool EnableBackupPrivilege() = 0;
  virtual int64_t TickCount() = 0;  // milliseconds
};

// The system's own calls. Tests derive from this class and replace single calls.
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

// Whether the path is in a shadow copy, by device name or by its "@GMT-" part. Such paths go to the system unchanged.
bool IsShadowCopyPath(std::u16string_view pPath);
// The extended form: "\\?\C:\x", "\\?\UNC\server\share\x". It is made by text alone. So names with trailing dots and
// blanks survive, which the usual form would trim. Drives and volumes get a final delimiter, since without it they
// would mean the device.
std::u16string LongPathForm(std::u16string_view pPath);
// The form in which a path is passed to the system.
std::u16string ApiPath(std::u16string_view pPath);

// Reads the data of a reparse point. False when the data is cut short or contradicts itself. pPoint then holds at most
// the tag.
bool ParseReparseData(std::span<const std::byte> pData, TReparsePoint& pPoint);

}  // namespace Vantrel::Enumerators

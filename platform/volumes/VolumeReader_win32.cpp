#include <array>

#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"
#include "platform/threads/InterruptibleThread.h"

// Needs the types of <windows.h>.
#include <winioctl.h>

#include "platform/volumes/VolumeReader.h"

namespace Vantrel {

using namespace Win32;

namespace {

// How often a waiting thread looks whether it was interrupted.
constexpr DWORD kMillisecondsBetweenLooks = 100;

HANDLE OpenFor(const std::u16string& pPath, DWORD pAccess, DWORD pShare, DWORD pFlags, const char* pOperation) {
  const HANDLE handle = CreateFileW(Wide(pPath), pAccess, pShare, nullptr, OPEN_EXISTING, pFlags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), pOperation, pPath);
  return handle;
}

class TOverlappedVolumeReader final : public IVolumeReader {
 public:
  explicit TOverlappedVolumeReader(const std::u16string& pPath)
      : fPath(pPath),
        fHandle(OpenFor(ExtendedPath(pPath), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        FILE_FLAG_OVERLAPPED, "Opening a volume")) {
    FindSize();
    for (TRead& read : fReads) read.fOverlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  }
  ~TOverlappedVolumeReader() override {
    Cancel();
    for (const TRead& read : fReads)
      if (read.fOverlapped.hEvent) CloseHandle(read.fOverlapped.hEvent);
    CloseHandle(fHandle);
  }
  TOverlappedVolumeReader(const TOverlappedVolumeReader&) = delete;
  TOverlappedVolumeReader& operator=(const TOverlappedVolumeReader&) = delete;

  int64_t Size() const override { return fSize; }

  void Start(size_t pSlot, int64_t pPosition, std::span<std::byte> pBuffer) override {
    TRead& read = fReads.at(pSlot);
    read.fOverlapped.Offset = static_cast<DWORD>(pPosition);
    read.fOverlapped.OffsetHigh = static_cast<DWORD>(static_cast<uint64_t>(pPosition) >> 32);
    ResetEvent(read.fOverlapped.hEvent);
    read.fError = 0;
    if (!ReadFile(fHandle, pBuffer.data(), static_cast<DWORD>(pBuffer.size()), nullptr, &read.fOverlapped)) {
      read.fError = GetLastError();
      if (read.fError == ERROR_HANDLE_EOF) return;  // told by Wait
      if (read.fError != ERROR_IO_PENDING) throw EOSError(read.fError, "Reading a volume", fPath);
      read.fError = 0;
    }
    read.fIsUnderWay = true;
  }

  size_t Wait(size_t pSlot) override {
    TRead& read = fReads.at(pSlot);
    if (!read.fIsUnderWay) return 0;  // began behind the end
    while (WaitForSingleObject(read.fOverlapped.hEvent, kMillisecondsBetweenLooks) == WAIT_TIMEOUT)
      if (TInterruptibleThread::IsCurrentInterrupted()) Cancel();
    read.fIsUnderWay = false;
    DWORD bytes = 0;
    if (GetOverlappedResult(fHandle, &read.fOverlapped, &bytes, FALSE)) return bytes;
    const DWORD code = GetLastError();
    if (code != ERROR_HANDLE_EOF) throw EOSError(code, "Reading a volume", fPath);
    return bytes;
  }

  void Cancel() noexcept override {
    CancelIo(fHandle);
    for (TRead& read : fReads) {
      DWORD bytes = 0;
      // The system may write into the buffer until the read has ended.
      if (read.fIsUnderWay) GetOverlappedResult(fHandle, &read.fOverlapped, &bytes, TRUE);
      read.fIsUnderWay = false;
    }
  }

 private:
  struct TRead {
    OVERLAPPED fOverlapped{};
    DWORD fError = 0;
    bool fIsUnderWay = false;
  };

  // Files know their size; disks and volumes know their length.
  void FindSize() {
    LARGE_INTEGER size{};
    if (GetFileSizeEx(fHandle, &size)) {
      fSize = size.QuadPart;
      return;
    }
    GET_LENGTH_INFORMATION length{};
    OVERLAPPED overlapped{};
    overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD bytes = 0;
    const bool asked = DeviceIoControl(fHandle, IOCTL_DISK_GET_LENGTH_INFO, nullptr, 0, &length, sizeof length, nullptr,
                                       &overlapped) != 0 ||
                       GetLastError() == ERROR_IO_PENDING;
    if (asked && GetOverlappedResult(fHandle, &overlapped, &bytes, TRUE)) fSize = length.Length.QuadPart;
    CloseHandle(overlapped.hEvent);
  }

  const std::u16string fPath;
  const HANDLE fHandle;
  int64_t fSize = 0;
  std::array<TRead, kMostReads> fReads;
};

class TSystemNtfsDriver final : public INtfsDriver {
 public:
  TSystemNtfsDriver(const std::u16string& pDevice, const std::u16string& pVolumeRoot) {
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
    fVolume = OpenFor(pDevice, GENERIC_READ, kShare, 0, "Opening a volume");
    try {
      fTable = OpenFor(pVolumeRoot + u"$mft", 0, kShare, 0, "Opening the file table");
    } catch (...) {
      CloseHandle(fVolume);
      throw;
    }
  }
  ~TSystemNtfsDriver() override {
    CloseHandle(fTable);
    CloseHandle(fVolume);
  }
  TSystemNtfsDriver(const TSystemNtfsDriver&) = delete;
  TSystemNtfsDriver& operator=(const TSystemNtfsDriver&) = delete;

  uint32_t GetVolumeData(std::span<std::byte, kVolumeDataSize> pAnswer) override {
    return Ask(fVolume, FSCTL_GET_NTFS_VOLUME_DATA, nullptr, 0, pAnswer);
  }

  uint32_t GetTableExtents(std::span<std::byte> pAnswer) override {
    STARTING_VCN_INPUT_BUFFER start{};
    return Ask(fTable, FSCTL_GET_RETRIEVAL_POINTERS, &start, sizeof start, pAnswer);
  }

 private:
  static uint32_t Ask(HANDLE pHandle, DWORD pCode, void* pInput, DWORD pInputSize, std::span<std::byte> pAnswer) {
    DWORD bytes = 0;
    const BOOL done = DeviceIoControl(pHandle, pCode, pInput, pInputSize, pAnswer.data(),
                                      static_cast<DWORD>(pAnswer.size()), &bytes, nullptr);
    return done ? 0 : GetLastError();
  }

  HANDLE fVolume = INVALID_HANDLE_VALUE;
  HANDLE fTable = INVALID_HANDLE_VALUE;
};

}  // namespace

std::unique_ptr<IVolumeReader> OpenVolumeReader(const std::u16string& pPath) {
  return std::make_unique<TOverlappedVolumeReader>(pPath);
}

std::unique_ptr<INtfsDriver> OpenNtfsDriver(const std::u16string& pDevice, const std::u16string& pVolumeRoot) {
  return std::make_unique<TSystemNtfsDriver>(pDevice, pVolumeRoot);
}

}  // namespace Vantrel

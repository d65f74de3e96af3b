#include <cstring>

#include "platform/files/FileStream.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"
#include "scan/files/LocalFile.h"

namespace Vantrel::Storages {

namespace {

using namespace Win32;

class TLocalFile final : public IStoredFile {
 public:
  TLocalFile(HANDLE pHandle, std::u16string pPath)
      : fHandle(pHandle), fStream(reinterpret_cast<TFileStream::THandle>(pHandle), pPath), fPath(std::move(pPath)) {}

  size_t Read(char* pBuffer, size_t pLength) override { return fStream.Read(pBuffer, pLength); }

  TStoredFileFacts GetFacts() override {
    BY_HANDLE_FILE_INFORMATION information{};
    if (!GetFileInformationByHandle(fHandle, &information))
      throw EOSError(GetLastError(), "Asking for a file's facts", fPath);
    const auto joined = [](DWORD pHigh, DWORD pLow) { return (uint64_t{pHigh} << 32) | pLow; };
    TStoredFileFacts facts;
    facts.fVolume = information.dwVolumeSerialNumber;
    facts.fId = joined(information.nFileIndexHigh, information.nFileIndexLow);
    facts.fSize = static_cast<int64_t>(joined(information.nFileSizeHigh, information.nFileSizeLow));
    facts.fLastChange.fTicks = static_cast<int64_t>(
        joined(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
    // 64 bits do not identify a file on every file system. What has no longer number is taken by this one.
    FILE_ID_INFO id{};
    if (GetFileInformationByHandleEx(fHandle, FileIdInfo, &id, sizeof id)) {
      facts.fVolume = id.VolumeSerialNumber;
      std::memcpy(&facts.fId, id.FileId.Identifier, sizeof facts.fId);
      std::memcpy(&facts.fIdHigh, id.FileId.Identifier + sizeof facts.fId, sizeof facts.fIdHigh);
    }
    return facts;
  }

  bool TrySeek(uint64_t pPosition) override { return fStream.TrySeek(pPosition); }

 private:
  const HANDLE fHandle;
  TFileStream fStream;  // owns the handle
  const std::u16string fPath;
};

}  // namespace

// Listings hold no pipes, and the system keeps access dates by its own settings.
std::unique_ptr<IStoredFile> OpenLocalFile(const std::u16string& pPath) {
  const std::u16string path = ExtendedPath(pPath);
  const HANDLE file = CreateFileW(Wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), "Opening a file", pPath);
  return std::make_unique<TLocalFile>(file, pPath);
}

}  // namespace Vantrel::Storages

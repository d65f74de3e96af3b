#include <cstring>

#include "platform/files/FileStream.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"
#include "scan/files/LocalFile.h"

namespace Vantrel::Storages {

namespace {

using namespace Win32;

TStoredFileFacts FactsOf(HANDLE pFile, const std::u16string& pPath) {
  BY_HANDLE_FILE_INFORMATION information{};
  if (!GetFileInformationByHandle(pFile, &information))
    throw EOSError(GetLastError(), "Asking for a file's facts", pPath);
  const auto joined = [](DWORD pHigh, DWORD pLow) { return (uint64_t{pHigh} << 32) | pLow; };
  TStoredFileFacts facts;
  facts.fVolume = information.dwVolumeSerialNumber;
  facts.fId = joined(information.nFileIndexHigh, information.nFileIndexLow);
  facts.fSize = static_cast<int64_t>(joined(information.nFileSizeHigh, information.nFileSizeLow));
  facts.fLastChange.fTicks = static_cast<int64_t>(
      joined(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
  FILE_BASIC_INFO basic{};
  if (GetFileInformationByHandleEx(pFile, FileBasicInfo, &basic, sizeof basic))
    facts.fStatusChange.fTicks = basic.ChangeTime.QuadPart;
  // 64 bits do not identify a file on every file system. What has no longer number is taken by this one.
  FILE_ID_INFO id{};
  if (GetFileInformationByHandleEx(pFile, FileIdInfo, &id, sizeof id)) {
    facts.fVolume = id.VolumeSerialNumber;
    std::memcpy(&facts.fId, id.FileId.Identifier, sizeof facts.fId);
    std::memcpy(&facts.fIdHigh, id.FileId.Identifier + sizeof facts.fId, sizeof facts.fIdHigh);
  }
  return facts;
}

class TLocalFile final : public IStoredFile {
 public:
  TLocalFile(HANDLE pHandle, std::u16string pPath)
      : fHandle(pHandle), fStream(reinterpret_cast<TFileStream::THandle>(pHandle), pPath), fPath(std::move(pPath)) {}

  size_t Read(char* pBuffer, size_t pLength) override { return fStream.Read(pBuffer, pLength); }

  TStoredFileFacts GetFacts() override { return FactsOf(fHandle, fPath); }

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

std::optional<TStoredFileFacts> QueryLocalFacts(const std::u16string& pPath) {
  const std::u16string path = ExtendedPath(pPath);
  const HANDLE file =
      CreateFileW(Wide(path), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (file == INVALID_HANDLE_VALUE) return {};
  const TFileStream owner(reinterpret_cast<TFileStream::THandle>(file), pPath);
  try {
    return FactsOf(file, pPath);
  } catch (const EOSError&) {
    return {};
  }
}

}  // namespace Vantrel::Storages

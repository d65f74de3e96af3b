#include <algorithm>

#include "platform/files/FileStream.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

namespace {

// The most bytes that one call takes. The system counts in 32 bits, and network shares accept much less.
constexpr size_t kMostBytesPerCall = 16 << 20;

HANDLE Handle(intptr_t pHandle) {
  return reinterpret_cast<HANDLE>(pHandle);
}

}  // namespace

TFileStream TFileStream::OpenForReading(const std::u16string& pPath) {
  const std::u16string path = ExtendedPath(pPath);
  constexpr DWORD kDirectoryNotSupported = 336;  // newer than the compiler's headers
  // Windows refuses to open a folder with "access denied", which does not tell the user what is wrong.
  const DWORD attributes = GetFileAttributesW(Wide(path));
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw EOSError(kDirectoryNotSupported, "Opening a file", pPath);
  const HANDLE file = CreateFileW(Wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), "Opening a file", pPath);
  return TFileStream(reinterpret_cast<THandle>(file), pPath);
}

TFileStream TFileStream::CreateScratch(const std::u16string& pBeside) {
  const std::u16string folder(FolderOfPath(AbsolutePath(pBeside), u'\\'));
  HANDLE file = INVALID_HANDLE_VALUE;
  do {
    const std::u16string path = ExtendedPath(JoinPath(folder, TemporaryName(), u'\\'));
    file = CreateFileW(Wide(path), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  } while (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
  if (file == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), "Creating a temporary file", pBeside);
  return TFileStream(reinterpret_cast<THandle>(file), pBeside);
}

size_t TFileStream::Read(char* pBuffer, size_t pLength) {
  Flush();
  DWORD length = 0;
  if (ReadFile(Handle(fHandle), pBuffer, static_cast<DWORD>(std::min(pLength, kMostBytesPerCall)), &length, nullptr))
    return length;
  const DWORD code = GetLastError();
  if (code != ERROR_BROKEN_PIPE) Fail(code, "Reading a file");
  return 0;  // the end of a pipe
}

void TFileStream::Seek(uint64_t pPosition) {
  Flush();
  LARGE_INTEGER position;
  position.QuadPart = static_cast<LONGLONG>(pPosition);
  if (!SetFilePointerEx(Handle(fHandle), position, nullptr, FILE_BEGIN)) Fail(GetLastError(), "Seeking in a file");
}

bool TFileStream::CanSeek() const {
  return GetFileType(Handle(fHandle)) == FILE_TYPE_DISK;
}

uint64_t TFileStream::Size() {
  Flush();
  LARGE_INTEGER size;
  if (!GetFileSizeEx(Handle(fHandle), &size)) Fail(GetLastError(), "Asking for a file's size");
  return static_cast<uint64_t>(size.QuadPart);
}

uint32_t TFileStream::SyncNow() noexcept {
  // On a pipe the call would wait for the reader, and a console refuses it.
  if (GetFileType(Handle(fHandle)) != FILE_TYPE_DISK) return 0;
  return FlushFileBuffers(Handle(fHandle)) ? 0 : GetLastError();
}

uint32_t TFileStream::WriteNow(const char* pBytes, size_t pLength) noexcept {
  while (pLength > 0) {
    DWORD written = 0;
    const auto part = static_cast<DWORD>(std::min(pLength, kMostBytesPerCall));
    if (!WriteFile(Handle(fHandle), pBytes, part, &written, nullptr)) return GetLastError();
    pBytes += written;
    pLength -= written;
  }
  return 0;
}

uint32_t TFileStream::CloseNow() noexcept {
  if (!fOpen) return 0;
  fOpen = false;
  return CloseHandle(Handle(fHandle)) ? 0 : GetLastError();
}

}  // namespace Vantrel

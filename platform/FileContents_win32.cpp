#include "platform/Errors.h"
#include "platform/FileContents.h"
#include "platform/Win32_win32.h"

namespace Kiv {

std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes) {
  const std::u16string path = Win32::ExtendedPath(pPath);
  constexpr DWORD kDirectoryNotSupported = 336;  // newer than the compiler's headers
  // Opening a folder would be refused for lack of rights, which says nothing to the user.
  const DWORD attributes = GetFileAttributesW(Win32::Wide(path));
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    throw EOSError(kDirectoryNotSupported, "Opening a file", pPath);
  struct THandle {
    HANDLE fHandle;
    ~THandle() {
      if (fHandle != INVALID_HANDLE_VALUE) CloseHandle(fHandle);
    }
  } const file{CreateFileW(Win32::Wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr)};
  if (file.fHandle == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), "Opening a file", pPath);
  std::string contents;
  char buffer[64 * 1024];
  for (;;) {
    DWORD length = 0;
    if (!ReadFile(file.fHandle, buffer, sizeof buffer, &length, nullptr)) {
      const DWORD code = GetLastError();
      if (code == ERROR_BROKEN_PIPE) return contents;  // a pipe's end
      throw EOSError(code, "Reading a file", pPath);
    }
    if (length == 0) return contents;
    contents.append(buffer, length);
    if (contents.size() > pMostBytes) throw EOSError(ERROR_FILE_TOO_LARGE, "Reading a file", pPath);
  }
}

}  // namespace Kiv

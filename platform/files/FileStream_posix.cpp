#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/files/FileStream.h"
#include "platform/files/OutputFile.h"
#include "platform/files/SystemFiles_posix.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

int Descriptor(intptr_t pHandle) {
  return static_cast<int>(pHandle);
}

// Opens a file without a name; -1 when the folder cannot hold one.
int OpenNameless(const std::string& pFolder) {
  const int nameless = open(pFolder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  // Some file systems cannot create a file without a name.
  if (nameless >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return nameless;
  for (;;) {
    const std::string path = pFolder + "/" + ToNativeBytes(TemporaryName());
    const int named = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    if (named < 0 && errno == EEXIST) continue;
    if (named >= 0) unlink(path.c_str());
    return named;
  }
}

}  // namespace

TFileStream TFileStream::OpenForReading(const std::u16string& pPath) {
  const int number = open(ToNativeBytes(pPath).c_str(), O_RDONLY | O_CLOEXEC);
  if (number < 0) throw EOSError(LastError(), "Opening a file", pPath);
  TFileStream file(number, pPath);
  struct stat info {};
  if (fstat(number, &info) == 0 && S_ISDIR(info.st_mode)) file.Fail(EISDIR, "Opening a file");
  return file;
}

TFileStream TFileStream::CreateScratch(const std::u16string& pBeside) {
  std::string folder = ToNativeBytes(pBeside);
  const size_t slash = folder.rfind('/');
  folder = slash == std::string::npos ? "." : folder.substr(0, slash + 1);
  const int number = OpenNameless(folder);
  if (number < 0) throw EOSError(LastError(), "Creating a temporary file", pBeside);
  return TFileStream(number, pBeside);
}

size_t TFileStream::Read(char* pBuffer, size_t pLength) {
  Flush();
  for (;;) {
    const ssize_t length = read(Descriptor(fHandle), pBuffer, pLength);
    if (length >= 0) return static_cast<size_t>(length);
    if (errno != EINTR) Fail(LastError(), "Reading a file");
  }
}

void TFileStream::Seek(uint64_t pPosition) {
  Flush();
  if (lseek(Descriptor(fHandle), static_cast<off_t>(pPosition), SEEK_SET) < 0) Fail(LastError(), "Seeking in a file");
}

bool TFileStream::CanSeek() const {
  return lseek(Descriptor(fHandle), 0, SEEK_CUR) >= 0;
}

uint64_t TFileStream::Size() {
  Flush();
  struct stat info {};
  if (fstat(Descriptor(fHandle), &info) != 0) Fail(LastError(), "Asking for a file's size");
  return static_cast<uint64_t>(info.st_size);
}

uint32_t TFileStream::SyncNow() noexcept {
  while (fsync(Descriptor(fHandle)) != 0) {
    // Pipes and terminals answer EINVAL. So do a few file systems that have nothing to wait for.
    if (errno == EINVAL || errno == EROFS || errno == ENOTSUP) return 0;
    if (errno != EINTR) return LastError();
  }
  return 0;
}

uint32_t TFileStream::WriteNow(const char* pBytes, size_t pLength) noexcept {
  while (pLength > 0) {
    const ssize_t written = write(Descriptor(fHandle), pBytes, pLength);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return LastError();
    pBytes += written;
    pLength -= static_cast<size_t>(written);
  }
  return 0;
}

uint32_t TFileStream::CloseNow() noexcept {
  if (!fOpen) return 0;
  fOpen = false;
  // After EINTR Linux has closed the descriptor nevertheless.
  return close(Descriptor(fHandle)) == 0 || errno == EINTR ? 0 : LastError();
}

}  // namespace Vantrel

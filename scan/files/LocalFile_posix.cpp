#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"
#include "scan/files/LocalFile.h"
#include "scan/files/UnixDirectory_posix.h"

namespace Vantrel::Storages {

namespace {

TStoredFileFacts FactsOf(const struct stat& pInfo) {
  const auto time = [](const timespec& pTime) {
    return TKivFileTime::FromUnix(pTime.tv_sec, static_cast<uint32_t>(pTime.tv_nsec));
  };
  return {pInfo.st_dev, pInfo.st_ino, 0, pInfo.st_size, time(pInfo.st_mtim), time(pInfo.st_ctim)};
}

class TLocalFile final : public IStoredFile {
 public:
  TLocalFile(int pHandle, std::u16string pPath) : fHandle(pHandle), fPath(std::move(pPath)) {}
  ~TLocalFile() override { close(fHandle); }
  TLocalFile(const TLocalFile&) = delete;
  TLocalFile& operator=(const TLocalFile&) = delete;

  size_t Read(char* pBuffer, size_t pLength) override {
    for (;;) {
      const ssize_t length = read(fHandle, pBuffer, pLength);
      if (length >= 0) return static_cast<size_t>(length);
      if (errno != EINTR || TInterruptibleThread::IsCurrentInterrupted())
        throw EOSError(static_cast<uint32_t>(errno), "Reading a file", fPath);
    }
  }

  // A file system without holes reports data everywhere.
  uint64_t SkipZeros() override {
    const off_t now = lseek(fHandle, 0, SEEK_CUR);
    off_t data = lseek(fHandle, now, SEEK_DATA);
    if (data < 0 && errno == ENXIO) data = lseek(fHandle, 0, SEEK_END);  // the hole goes on to the end
    if (now < 0 || data <= now) {
      lseek(fHandle, now, SEEK_SET);
      return 0;
    }
    return static_cast<uint64_t>(data - now);
  }

  bool TrySeek(uint64_t pPosition) override { return lseek(fHandle, static_cast<off_t>(pPosition), SEEK_SET) >= 0; }

  TStoredFileFacts GetFacts() override {
    struct stat info {};
    if (fstat(fHandle, &info) != 0) throw EOSError(static_cast<uint32_t>(errno), "Asking for a file's facts", fPath);
    return FactsOf(info);
  }

 private:
  const int fHandle;
  const std::u16string fPath;
};

}  // namespace

std::unique_ptr<IStoredFile> OpenLocalFile(const std::u16string& pPath) {
  using Enumerators::OpenInSteps;
  const std::string path = ToNativeBytes(pPath);
  // Without O_NONBLOCK, opening a pipe waits for a writer.
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;
  // Only the owner and root may use O_NOATIME.
  int handle = OpenInSteps(AT_FDCWD, path, kFlags | O_NOATIME);
  if (handle < 0 && errno == EPERM) handle = OpenInSteps(AT_FDCWD, path, kFlags);
  if (handle < 0) throw EOSError(static_cast<uint32_t>(errno), "Opening a file", pPath);
  auto file = std::make_unique<TLocalFile>(handle, pPath);
  struct stat info {};
  if (fstat(handle, &info) != 0) throw EOSError(static_cast<uint32_t>(errno), "Opening a file", pPath);
  if (!S_ISREG(info.st_mode))
    throw EOSError(static_cast<uint32_t>(S_ISDIR(info.st_mode) ? EISDIR : EINVAL), "Opening a file", pPath);
  return file;
}

std::optional<TStoredFileFacts> QueryLocalFacts(const std::u16string& pPath) {
  struct stat info {};
  if (fstatat(AT_FDCWD, ToNativeBytes(pPath).c_str(), &info, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) return {};
  if (!S_ISREG(info.st_mode)) return {};
  return FactsOf(info);
}

}  // namespace Vantrel::Storages

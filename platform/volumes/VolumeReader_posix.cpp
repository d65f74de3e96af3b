#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"
#include "platform/volumes/VolumeReader.h"

namespace Vantrel {

namespace {

// The kernel is asked to fetch each stretch when its read is started, and the bytes are copied when the read is waited
// for. So several reads are under way on the device without a thread or a system call for each.
class TFileVolumeReader final : public IVolumeReader {
 public:
  explicit TFileVolumeReader(const std::u16string& pPath)
      : fPath(pPath), fHandle(open(ToNativeBytes(pPath).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (fHandle < 0) Fail(errno, "Opening a volume");
    try {
      FindSize();
    } catch (...) {
      close(fHandle);
      throw;
    }
    posix_fadvise(fHandle, 0, 0, POSIX_FADV_RANDOM);  // the kernel's own guesses would only read too much
  }
  ~TFileVolumeReader() override { close(fHandle); }
  TFileVolumeReader(const TFileVolumeReader&) = delete;
  TFileVolumeReader& operator=(const TFileVolumeReader&) = delete;

  int64_t Size() const override { return fSize; }

  void Start(size_t pSlot, int64_t pPosition, std::span<std::byte> pBuffer) override {
    fReads.at(pSlot) = {pPosition, pBuffer};
    posix_fadvise(fHandle, pPosition, static_cast<off_t>(pBuffer.size()), POSIX_FADV_WILLNEED);
  }

  size_t Wait(size_t pSlot) override {
    const TRead& read = fReads.at(pSlot);
    size_t done = 0;
    while (done < read.fBuffer.size()) {
      const ssize_t length = pread(fHandle, read.fBuffer.data() + done, read.fBuffer.size() - done,
                                   read.fPosition + static_cast<off_t>(done));
      if (length == 0) break;
      if (length > 0)
        done += static_cast<size_t>(length);
      else if (errno != EINTR || TInterruptibleThread::IsCurrentInterrupted())
        Fail(errno, "Reading a volume");
    }
    return done;
  }

  void Cancel() noexcept override {}

 private:
  struct TRead {
    int64_t fPosition = 0;
    std::span<std::byte> fBuffer;
  };

  void FindSize() {
    struct stat info {};
    if (fstat(fHandle, &info) != 0) Fail(errno, "Opening a volume");
    uint64_t bytes = 0;
    if (S_ISREG(info.st_mode))
      bytes = static_cast<uint64_t>(info.st_size);
    else if (S_ISDIR(info.st_mode))
      Fail(EISDIR, "Opening a volume");
    else if (!S_ISBLK(info.st_mode) || ioctl(fHandle, BLKGETSIZE64, &bytes) != 0)
      Fail(ENOTBLK, "Opening a volume");
    fSize = static_cast<int64_t>(bytes);
  }

  [[noreturn]] void Fail(int pCode, const char* pOperation) const {
    throw EOSError(static_cast<uint32_t>(pCode), pOperation, fPath);
  }

  const std::u16string fPath;
  const int fHandle;
  int64_t fSize = 0;
  std::array<TRead, kMostReads> fReads;
};

}  // namespace

std::unique_ptr<IVolumeReader> OpenVolumeReader(const std::u16string& pPath) {
  return std::make_unique<TFileVolumeReader>(pPath);
}

std::unique_ptr<INtfsDriver> OpenNtfsDriver(const std::u16string&, const std::u16string&) {
  return nullptr;
}

}  // namespace Vantrel

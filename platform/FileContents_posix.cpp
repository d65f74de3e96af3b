#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Errors.h"
#include "platform/FileContents.h"
#include "platform/Text.h"

namespace Kiv {

std::string ReadFileContents(const std::u16string& pPath, size_t pMostBytes) {
  struct TDescriptor {
    int fNumber;
    ~TDescriptor() {
      if (fNumber >= 0) close(fNumber);
    }
  } const file{open(ToNativeBytes(pPath).c_str(), O_RDONLY | O_CLOEXEC)};
  if (file.fNumber < 0) throw EOSError(static_cast<uint32_t>(errno), "Opening a file", pPath);
  std::string contents;
  char buffer[64 * 1024];
  for (;;) {
    const ssize_t length = read(file.fNumber, buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) throw EOSError(static_cast<uint32_t>(errno), "Reading a file", pPath);
    if (length == 0) return contents;
    contents.append(buffer, static_cast<size_t>(length));
    if (contents.size() > pMostBytes) throw EOSError(EFBIG, "Reading a file", pPath);
  }
}

}  // namespace Kiv

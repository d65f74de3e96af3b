#include <cerrno>
#include <cstring>

#include "platform/Errors.h"

namespace Kiv {

TErrorKind ClassifyOSError(uint32_t pCode) {
  switch (pCode) {
    case 0:
      return TErrorKind::ekNone;
    case EACCES:
    case EPERM:
      return TErrorKind::ekAccessDenied;
    case ENOENT:
    case ENOTDIR:
      return TErrorKind::ekNotFound;
    default:
      return TErrorKind::ekOther;
  }
}

std::string OSErrorText(uint32_t pCode) {
  if (pCode == kErrorPseudoFileSystem) return "It belongs to a pseudo file system of the kernel, where nothing is stored";
  char buffer[256];
  // The GNU form: it returns the text, which need not be in the buffer.
  return strerror_r(static_cast<int>(pCode), buffer, sizeof buffer);
}

}  // namespace Kiv

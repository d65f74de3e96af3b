#include <cerrno>
#include <cstring>

#include "platform/system/Errors.h"

namespace Vantrel {

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

std::string SystemErrorText(uint32_t pCode) {
  char buffer[256];
  // The GNU form: it returns the text, which need not be in the buffer.
  return strerror_r(static_cast<int>(pCode), buffer, sizeof buffer);
}

}  // namespace Vantrel

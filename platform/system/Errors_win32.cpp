#include <fmt/format.h>

#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

TErrorKind ClassifyOSError(uint32_t pCode) {
  switch (pCode) {
    case ERROR_SUCCESS:
      return TErrorKind::ekNone;
    case ERROR_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_NETWORK_ACCESS_DENIED:
      return TErrorKind::ekAccessDenied;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_NAME:
    case ERROR_DIRECTORY:
      return TErrorKind::ekNotFound;
    default:
      return TErrorKind::ekOther;
  }
}

std::string SystemErrorText(uint32_t pCode) {
  wchar_t buffer[512];
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, pCode, 0, buffer,
                                static_cast<DWORD>(std::size(buffer)), nullptr);
  while (length > 0 && (buffer[length - 1] <= L' ' || buffer[length - 1] == L'.')) --length;
  return length == 0 ? fmt::format("Unknown error {}", pCode) : ToUtf8(Win32::Narrow(buffer, length));
}

}  // namespace Vantrel

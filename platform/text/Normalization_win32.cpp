#include "platform/system/Win32_win32.h"
#include "platform/text/Normalization.h"

namespace Vantrel {

TNormalizationResult NormalizeWellFormedToFormD(std::u16string_view pText, std::u16string& pResult) {
  const auto* const text = reinterpret_cast<const wchar_t*>(pText.data());
  const int length = static_cast<int>(pText.size());
  // The system only estimates the length that it needs, so a call may fail with a better estimate.
  int room = 3 * length;
  DWORD error = ERROR_INSUFFICIENT_BUFFER;
  for (int attempt = 0; attempt < 4 && error == ERROR_INSUFFICIENT_BUFFER && room > 0; ++attempt) {
    pResult.resize(static_cast<size_t>(room));
    SetLastError(ERROR_SUCCESS);
    const int written = NormalizeString(NormalizationD, text, length, reinterpret_cast<wchar_t*>(pResult.data()), room);
    error = written > 0 ? DWORD{ERROR_SUCCESS} : GetLastError();
    if (error == ERROR_SUCCESS) {
      pResult.resize(static_cast<size_t>(written > 0 ? written : 0));
      return {};
    }
    if (error == ERROR_NO_UNICODE_TRANSLATION) {
      pResult.clear();
      return {.fError = TNormalizationError::neInvalidUnicode, .fPosition = static_cast<size_t>(-written)};
    }
    room = written < 0 ? -written : 2 * room;
  }
  pResult.clear();
  switch (error) {
    case ERROR_INSUFFICIENT_BUFFER:
      return {.fError = TNormalizationError::neBufferTooSmall};
    case ERROR_INVALID_PARAMETER:
      return {.fError = TNormalizationError::neInvalidParameter};
    default:
      return {.fError = TNormalizationError::neOther, .fCode = error};
  }
}

}  // namespace Vantrel

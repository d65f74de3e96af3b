#include "platform/system/Environment.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

std::u16string ExpandEnvironment(std::u16string_view pText) {
  const std::u16string text(pText);
  std::u16string result(text.size() + 1, u'\0');
  for (;;) {
    const auto room = static_cast<DWORD>(result.size());
    // The length counts the terminating zero. 0 means that the text is too long for the system.
    const DWORD needed = ExpandEnvironmentStringsW(Win32::Wide(text), reinterpret_cast<wchar_t*>(result.data()), room);
    if (needed == 0) return text;
    result.resize(needed <= room ? needed - 1 : needed);
    if (needed <= room) return result;
  }
}

std::optional<std::u16string> EnvironmentVariable(std::u16string_view pName) {
  const std::u16string name(pName);
  std::u16string value(1, u'\0');
  for (;;) {
    const auto room = static_cast<DWORD>(value.size());
    SetLastError(ERROR_SUCCESS);
    // The needed length counts the terminating zero, the written length does not. 0 may also mean an empty value.
    const DWORD length = GetEnvironmentVariableW(Win32::Wide(name), reinterpret_cast<wchar_t*>(value.data()), room);
    if (length == 0 && GetLastError() != ERROR_SUCCESS) return std::nullopt;
    value.resize(length);
    if (length < room) return value;
  }
}

}  // namespace Vantrel

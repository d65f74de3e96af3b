#include <string>
#include <string_view>

#include "platform/system/Identity.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::u16string CurrentUserName() {
  wchar_t buffer[257];
  DWORD length = 257;
  if (!GetUserNameW(buffer, &length)) return {};
  return std::u16string(Win32::Narrow(std::wstring_view(buffer)));
}

std::string FullHostName() {
  wchar_t buffer[512];
  DWORD length = 512;
  if (!GetComputerNameExW(ComputerNameDnsFullyQualified, buffer, &length)) return {};
  return ToUtf8(std::u16string(Win32::Narrow(std::wstring_view(buffer))));
}

}  // namespace Vantrel

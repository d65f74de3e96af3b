#pragma once

// For the _win32 sources only: Windows' own types beside the program's.

#include <windows.h>

#include <string>
#include <string_view>

namespace Kiv::Win32 {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const char16_t* pText) {
  return reinterpret_cast<const wchar_t*>(pText);
}
inline const wchar_t* Wide(const std::u16string& pText) {
  return Wide(pText.c_str());
}
inline std::u16string_view Narrow(const wchar_t* pText, size_t pLength) {
  return {reinterpret_cast<const char16_t*>(pText), pLength};
}
inline std::u16string_view Narrow(std::wstring_view pText) {
  return Narrow(pText.data(), pText.size());
}

}  // namespace Kiv::Win32

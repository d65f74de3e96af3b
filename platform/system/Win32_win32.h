#pragma once

// Windows' own types, the conversions to them, and extended paths.

// Only the _win32 sources include this.

#include <windows.h>

#include <string>
#include <string_view>

namespace Vantrel::Win32 {

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

// The extended form of a path, which the system accepts at any length: "\\?\" in front and its parts resolved. Relative
// paths, and paths that already have such a prefix, stay unchanged.
std::u16string ExtendedPath(std::u16string_view pPath);
// The usual form of an extended path.
std::u16string WithoutExtendedPrefix(std::u16string_view pPath);

}  // namespace Vantrel::Win32

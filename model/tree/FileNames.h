#pragma once

// How the program finds the extension of a file name.

#include <string_view>

namespace Vantrel {

// The statistics use at most this many characters of an extension.
constexpr size_t kLongestExtension = 32;

// The extension of a file name with its dot (".txt"), at most 32 characters after the dot. Empty when the name has no
// dot or ends with it. A name whose only dot is its first character is all extension. So ".htaccess" is a kind of file,
// and the masks of the file-type groups rely on it.
inline std::u16string_view ExtensionOfName(std::u16string_view pName) {
  const size_t dot = pName.rfind(u'.');
  if (dot == std::u16string_view::npos || dot + 1 == pName.size()) return {};
  return pName.substr(dot, kLongestExtension + 1);
}

// The same without the dot, for the extension column.
inline std::u16string_view ExtensionColumnOfName(std::u16string_view pName) {
  const std::u16string_view extension = ExtensionOfName(pName);
  return extension.empty() ? extension : extension.substr(1);
}

}  // namespace Vantrel

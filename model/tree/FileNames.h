#pragma once

// What the extension of a name is.

#include <string_view>

namespace Vantrel {

// At most so many characters of an extension count in the statistics.
constexpr size_t kLongestExtension = 32;

// The extension of a file name with its dot (".txt"), at most 32 characters after the dot; empty when the name has no
// dot or ends with it. A name that begins with its only dot is all extension: ".htaccess" is a kind of file, not a
// nameless one, and the masks of the file-type groups count on it.
inline std::u16string_view ExtensionOfName(std::u16string_view pName) {
  const size_t dot = pName.rfind(u'.');
  if (dot == std::u16string_view::npos || dot + 1 == pName.size()) return {};
  return pName.substr(dot, kLongestExtension + 1);
}

// The same as the extension column has it: without its dot.
inline std::u16string_view ExtensionColumnOfName(std::u16string_view pName) {
  const std::u16string_view extension = ExtensionOfName(pName);
  return extension.empty() ? extension : extension.substr(1);
}

}  // namespace Vantrel

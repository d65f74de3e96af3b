#include <cstdlib>

#include "platform/system/Environment.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::optional<std::u16string> EnvironmentVariable(std::u16string_view pName) {
  const char* value = std::getenv(ToNativeBytes(pName).c_str());
  if (value == nullptr) return std::nullopt;
  return FromNativeBytes(value);
}

// An unknown name uses up both of its percent signs, as on Windows: in "100% of %HOME%" the name is " of ".
std::u16string ExpandEnvironment(std::u16string_view pText) {
  std::u16string result;
  for (;;) {
    const size_t begin = pText.find(u'%');
    const size_t end = begin == std::u16string_view::npos ? begin : pText.find(u'%', begin + 1);
    if (end == std::u16string_view::npos) return result.append(pText);
    result += pText.substr(0, begin);
    const std::optional<std::u16string> value = EnvironmentVariable(pText.substr(begin + 1, end - begin - 1));
    result += value ? *value : pText.substr(begin, end + 1 - begin);
    pText.remove_prefix(end + 1);
  }
}

}  // namespace Vantrel

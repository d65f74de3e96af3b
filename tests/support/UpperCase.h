#pragma once

// Texts in upper case, by the rule of the matchers.

#include <algorithm>
#include <string>

#include "platform/text/Utf.h"

namespace Vantrel::Testing {

inline std::u16string Upcase(std::u16string pText) {
  std::transform(pText.begin(), pText.end(), pText.begin(), UpcaseUnit);
  return pText;
}

}  // namespace Vantrel::Testing

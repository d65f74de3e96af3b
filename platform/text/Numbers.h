#pragma once

// Appends numbers to text.

#include <charconv>
#include <cstdint>
#include <iterator>
#include <string>

namespace Vantrel {

// Appends plain decimal digits, with a minus if negative. For rows that are written by the million.
inline void AppendInteger(std::string& pTarget, int64_t pValue) {
  char digits[20];
  pTarget.append(digits, std::to_chars(digits, std::end(digits), pValue).ptr);
}

}  // namespace Vantrel

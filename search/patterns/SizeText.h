#pragma once

// Reads sizes as users type them.

#include <cstdint>
#include <string_view>

#include "platform/system/Errors.h"

namespace Vantrel {

// Reports a size that cannot be read. The message says what is wrong with it.
class ESizeTextError : public EException {
 public:
  using EException::EException;
};

// Reads a whole number and a unit, such as "10 MB", "1,000KB" or "500", and returns bytes. Units are B, KB, MB, GB and
// TB, with their long and binary forms, in any letter case. All are binary multiples. Without a unit the number means
// megabytes, unless pUnitRequired. Groups of three digits may be separated by ".", "," or a blank. ESizeTextError for
// anything else.
int64_t ParseSizeText(std::u16string_view pText, bool pUnitRequired = false);

}  // namespace Vantrel

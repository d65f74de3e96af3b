#pragma once

// Sizes as people type them.

#include <cstdint>
#include <string_view>

#include "platform/system/Errors.h"

namespace Vantrel {

// A size that cannot be read; the text says what is wrong with it.
class ESizeTextError : public EException {
 public:
  using EException::EException;
};

// "10 MB", "1,000KB", "500": a whole number and a unit, in bytes. Units are B, KB, MB, GB and TB and their long and
// binary forms, all of them binary multiples, in any letter case; without a unit the number counts in megabytes, unless
// pUnitRequired. Three digits may be set apart by ".", "," or a blank. ESizeTextError for anything else.
int64_t ParseSizeText(std::u16string_view pText, bool pUnitRequired = false);

}  // namespace Vantrel

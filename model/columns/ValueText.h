#pragma once

// The text of numbers and shares as UTF-8, for outputs of millions of rows.

#include <cstdint>
#include <string>

#include "model/columns/MetaData.h"

namespace Vantrel {

// Both append what FormatValue gives, for a size or count, and for the share of a whole. They allocate nothing for the
// forms that programs read: plain numbers, and shares with one decimal and without a unit. Dates have
// TIsoLocalFormatter.
void AppendNumberText(std::string& pText, TColumn pColumn, int64_t pValue, const TValueFormat& pFormat);
void AppendShareText(std::string& pText, double pShare, const TValueFormat& pFormat);

}  // namespace Vantrel

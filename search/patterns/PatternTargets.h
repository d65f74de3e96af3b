#pragma once

// The columns that patterns can be matched against, and the cost of each.

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// The target for a column. EInvalidArgumentValue for a column that only a finished tree has, such as a share.
TPatternTarget TargetOfColumn(TColumn pColumn);
// The column of a target. nullptr for an unknown column, as a file of a later version may name.
const TColumnInfo* ColumnOfTarget(const TPatternTarget& pTarget);
TPatternTarget NameTarget();
TPatternTarget FullPathTarget();
// The target for a typed text: the full path if the text holds a path delimiter, else the name.
TPatternTarget GuessPatternTarget(std::u16string_view pText, char16_t pPathDelimiter);
// Whether the target's values are paths. A path that ends with a delimiter is then matched without it as well.
bool IsPathValued(const TPatternTarget& pTarget);

// The parts of a pattern's cost. Lists put cheap patterns first.
int GetPatternTargetCost(const TPatternTarget& pTarget);  // 10 to 50
int GetPatternClassCost(TPatternClass pClass);
int GetPatternTypeCost(TPatternType pType);

// The form is "{DE632DE0-4253-4BAB-85C4-CA3BE18AA0F6}". Parsing returns false for anything else.
std::u16string FormatIdToText(const std::array<uint8_t, 16>& pFormatId);
bool TryParseFormatId(std::u16string_view pText, std::array<uint8_t, 16>& pFormatId);

}  // namespace Vantrel::PatternMatching

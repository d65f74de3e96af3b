#pragma once

// The columns that patterns look at, and what they cost.

#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::PatternMatching {

// The target for a column; EInvalidArgumentValue for one that only a finished tree has values for, such as a share.
TPatternTarget TargetOfColumn(TColumn pColumn);
// The column that a target names; nullptr for one that this program does not know, as a later version's file may hold.
const TColumnInfo* ColumnOfTarget(const TPatternTarget& pTarget);
TPatternTarget NameTarget();
TPatternTarget FullPathTarget();
// The target for a text as typed: the full path when it holds a path delimiter, else the name.
TPatternTarget GuessPatternTarget(std::u16string_view pText, char16_t pPathDelimiter);
// Whether the target's values are paths: one that ends with a delimiter is then matched without it as well.
bool IsPathValued(const TPatternTarget& pTarget);

// The parts of a pattern's cost, which orders a list: what decides cheaply comes first.
int GetPatternTargetCost(const TPatternTarget& pTarget);  // 10 to 50
int GetPatternClassCost(TPatternClass pClass);
int GetPatternTypeCost(TPatternType pType);

// "{DE632DE0-4253-4BAB-85C4-CA3BE18AA0F6}". Parsing returns false for anything else.
std::u16string FormatIdToText(const std::array<uint8_t, 16>& pFormatId);
bool TryParseFormatId(std::u16string_view pText, std::array<uint8_t, 16>& pFormatId);

}  // namespace Vantrel::PatternMatching

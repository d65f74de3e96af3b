#include "search/patterns/PatternTargets.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::PatternMatching {

namespace {

// The property IDs of the full path's format identifier whose values are paths. So far the catalogue holds only the
// first.
constexpr uint32_t kPathValuedIds[] = {1, 16, 57, 58};

constexpr int kUnknownTargetCost = 50;

struct TTargetCost {
  TColumn fColumn;
  int fCost;
};

// The columns that have values for an entry of a listing, and their cost. The name is at hand. A path must be put
// together, numbers and dates formatted, and the owner asked for.
constexpr TTargetCost kTargetCosts[] = {
    {TColumn::mdName, 10},       {TColumn::mdExtension, 12},  {TColumn::mdParentPath, 15}, {TColumn::mdFullPath, 20},
    {TColumn::mdAttributes, 30}, {TColumn::mdPathLength, 30}, {TColumn::mdDepth, 30},      {TColumn::mdSize, 35},
    {TColumn::mdAllocated, 35},  {TColumn::mdLastChange, 40}, {TColumn::mdLastAccess, 40}, {TColumn::mdCreation, 40},
    {TColumn::mdOwner, 50},
};

const TTargetCost* FindCost(TColumn pColumn) {
  const auto found = std::find_if(std::begin(kTargetCosts), std::end(kTargetCosts),
                                  [&](const TTargetCost& pCost) { return pCost.fColumn == pColumn; });
  return found == std::end(kTargetCosts) ? nullptr : found;
}

}  // namespace

std::u16string PatternClassToString(TPatternClass pClass) {
  switch (pClass) {
    case TPatternClass::pcWildcard:
      return u"Wildcard";
    case TPatternClass::pcRegEx:
      return u"Regular expression";
    case TPatternClass::pcExact:
      return u"Exact match";
  }
  throw EUnknownEnumException(fmt::format("PatternClassToString: there is no pattern class {}", int(pClass)));
}

std::u16string PatternTypeToString(TPatternType pType) {
  switch (pType) {
    case TPatternType::ptyInclude:
      return u"Include";
    case TPatternType::ptyExclude:
      return u"Exclude";
  }
  throw EUnknownEnumException(fmt::format("PatternTypeToString: there is no pattern type {}", int(pType)));
}

TPatternTarget TargetOfColumn(TColumn pColumn) {
  if (FindCost(pColumn) == nullptr)
    throw EInvalidArgumentValue("Given TMetaData cannot be converted to TPatternTarget");
  return ColumnInfo(pColumn).fKey;
}

const TColumnInfo* ColumnOfTarget(const TPatternTarget& pTarget) {
  return FindColumn(pTarget);
}

TPatternTarget NameTarget() {
  return ColumnInfo(TColumn::mdName).fKey;
}

TPatternTarget FullPathTarget() {
  return ColumnInfo(TColumn::mdFullPath).fKey;
}

TPatternTarget GuessPatternTarget(std::u16string_view pText, char16_t pPathDelimiter) {
  return pText.find(pPathDelimiter) != std::u16string_view::npos ? FullPathTarget() : NameTarget();
}

bool IsPathValued(const TPatternTarget& pTarget) {
  return pTarget.fFormatId == FullPathTarget().fFormatId &&
         std::find(std::begin(kPathValuedIds), std::end(kPathValuedIds), pTarget.fPropertyId) !=
             std::end(kPathValuedIds);
}

int GetPatternTargetCost(const TPatternTarget& pTarget) {
  const TColumnInfo* column = ColumnOfTarget(pTarget);
  const TTargetCost* cost = column ? FindCost(column->fColumn) : nullptr;
  return cost ? cost->fCost : kUnknownTargetCost;
}

int GetPatternClassCost(TPatternClass pClass) {
  switch (pClass) {
    case TPatternClass::pcExact:
      return 2;
    case TPatternClass::pcWildcard:
      return 4;
    case TPatternClass::pcRegEx:
      break;
  }
  return 6;
}

int GetPatternTypeCost(TPatternType pType) {
  return pType == TPatternType::ptyInclude ? 2 : 6;
}

std::u16string FormatIdToText(const std::array<uint8_t, 16>& pFormatId) {
  std::string text = "{";
  for (size_t i = 0; i < pFormatId.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += fmt::format("{:02X}", pFormatId[i]);
  }
  return FromUtf8(text + "}");
}

bool TryParseFormatId(std::u16string_view pText, std::array<uint8_t, 16>& pFormatId) {
  std::array<uint8_t, 16> parsed{};
  std::u16string digits;
  for (char16_t unit : pText)
    if (unit != u'{' && unit != u'}' && unit != u'-') digits += FoldAscii(unit);
  if (digits.size() != 2 * parsed.size()) return false;
  for (size_t i = 0; i < digits.size(); ++i) {
    const size_t digit = std::u16string_view(u"0123456789abcdef").find(digits[i]);
    if (digit == std::u16string_view::npos) return false;
    parsed[i / 2] = static_cast<uint8_t>(parsed[i / 2] * 16 + digit);
  }
  if (!SameTextAscii(FormatIdToText(parsed), pText)) return false;  // braces and dashes must be in place
  pFormatId = parsed;
  return true;
}

}  // namespace Vantrel::PatternMatching

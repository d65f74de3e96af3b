#include "search/patterns/CustomPattern.h"

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "search/patterns/PatternTargets.h"

namespace Vantrel::PatternMatching {

std::u16string_view FindAttribute(const TElementAttributes& pAttributes, std::u16string_view pName) {
  for (const auto& [name, value] : pAttributes)
    if (SameTextAscii(name, pName)) return value;
  return {};
}

std::u16string BooleanText(bool pValue) {
  return pValue ? u"-1" : u"0";
}

bool BooleanOf(std::u16string_view pText) {
  int64_t value = 0;
  return TryParseInt64(ToUtf8(pText), value) && value != 0;
}

std::u16string Quoted(std::u16string_view pText) {
  std::u16string quoted = u"\"";
  for (char16_t unit : pText) quoted.append(unit == u'"' ? 2 : 1, unit);
  return quoted + u'"';
}

std::u16string Unquoted(std::u16string_view pText) {
  if (!pText.starts_with(u'"')) return std::u16string(pText);
  pText.remove_prefix(1);
  if (pText.ends_with(u'"')) pText.remove_suffix(1);
  std::u16string unquoted;
  for (size_t i = 0; i < pText.size(); ++i) {
    unquoted += pText[i];
    if (pText.substr(i, 2) == u"\"\"") ++i;
  }
  return unquoted;
}

TCustomPattern::TCustomPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType,
                               char16_t pPathDelimiter)
    : fPatternType(pType), fPathDelimiter(pPathDelimiter) {
  if (pText.empty()) throw EInvalidArgumentValue("TCustomPattern.Create: Empty patterns are not allowed!");
  TakeText(pText);
  TakeTarget(pTarget);
}

void TCustomPattern::TakeText(std::u16string_view pText) {
  fPattern = pText;
  fFoldedPattern = TMatchText(pText).Folded();
}

void TCustomPattern::TakeTarget(const TPatternTarget& pTarget) {
  fTarget = pTarget;
  fColumn = ColumnOfTarget(pTarget);
  fIsPathValued = IsPathValued(pTarget);
}

bool TCustomPattern::Matches(TPatternItem& pItem) {
  return fColumn != nullptr && MatchesText(pItem.TextOf(fColumn->fColumn));
}

bool TCustomPattern::MatchesString(std::u16string_view pText) {
  TMatchText text(pText);
  return MatchesText(text);
}

bool TCustomPattern::FullPathCanBeReached(std::u16string_view pFolderPath) const {
  if (!IsRootedPath(fPattern, fPathDelimiter)) return true;
  TMatchText path(pFolderPath);
  std::u16string_view folder = path.Folded();
  if (folder.ends_with(fPathDelimiter)) folder.remove_suffix(1);
  // Every path lies beneath the root of all paths.
  return folder.empty() || MayLieBeneath(folder);
}

TPatternTarget TCustomPattern::GuessTarget(std::u16string_view pText) const {
  return GuessPatternTarget(pText, fPathDelimiter);
}

void TCustomPattern::Assign(const IPattern& pSource) {
  const auto* source = dynamic_cast<const TCustomPattern*>(&pSource);
  if (source == nullptr || source->ClassName() != ClassName())
    throw EInvalidArgumentValue("TCustomPattern.Assign: the patterns are of different classes");
  TakeText(source->fPattern);
  TakeTarget(source->fTarget);
  fPatternType = source->fPatternType;
  SetActive(source->GetActive());
  AssignMore(*source);
  Prepare();
}

bool TCustomPattern::Equals(const IPattern& pOther) const {
  const auto* other = dynamic_cast<const TCustomPattern*>(&pOther);
  return other != nullptr && other->ClassName() == ClassName() && other->fTarget == fTarget &&
         other->fPatternType == fPatternType && other->GetActive() == GetActive() && SameMatches(*other);
}

void TCustomPattern::SetPattern(std::u16string_view pText) {
  if (pText.empty()) throw EInvalidArgumentValue("TCustomPattern.SetPattern: Empty patterns are not allowed!");
  TakeText(pText);
  Prepare();
}

void TCustomPattern::SetTarget(const TPatternTarget& pTarget) {
  TakeTarget(pTarget);
  Prepare();
}

// --- files and the query language ----------------------------------------------------------------------------------

TElementAttributes TCustomPattern::WriteToXML() const {
  TElementAttributes attributes = {{u"Class", std::u16string(ClassName())},
                                   {u"Text", fPattern},
                                   {u"Active", BooleanText(GetActive())},
                                   {u"Target_fmtid", FormatIdToText(fTarget.fFormatId)},
                                   {u"Target_pid", FromUtf8(std::to_string(fTarget.fPropertyId))},
                                   {u"PatternType", FromUtf8(std::to_string(static_cast<int>(fPatternType)))}};
  WriteMore(attributes);
  return attributes;
}

void TCustomPattern::ReadFromXML(const TElementAttributes& pAttributes) {
  const std::u16string_view text = FindAttribute(pAttributes, u"Text");
  if (text.empty()) throw EInvalidArgumentValue("Empty patterns are not allowed!");
  TPatternTarget target;
  int64_t propertyId = 0;
  if (!TryParseFormatId(FindAttribute(pAttributes, u"Target_fmtid"), target.fFormatId) ||
      !TryParseInt64(ToUtf8(FindAttribute(pAttributes, u"Target_pid")), propertyId) || propertyId < 0 ||
      propertyId > UINT32_MAX)
    throw EInvalidArgumentValue("The pattern " + ToQuotedDisplay(text) + " names no column to look at");
  target.fPropertyId = static_cast<uint32_t>(propertyId);
  int64_t type = 0;
  if (!TryParseInt64(ToUtf8(FindAttribute(pAttributes, u"PatternType")), type) || type < 0 || type > 1)
    throw EInvalidArgumentValue("The pattern " + ToQuotedDisplay(text) + " is neither to include nor to exclude");
  TakeText(text);
  TakeTarget(target);
  fPatternType = static_cast<TPatternType>(type);
  SetActive(BooleanOf(FindAttribute(pAttributes, u"Active")));
  ReadMore(pAttributes);
  Prepare();
}

std::u16string TCustomPattern::ExpressionKeyword() const {
  if (fTarget == NameTarget() || fColumn == nullptr) return u"name:";
  if (fColumn->fColumn == TColumn::mdExtension) return u"extension:";
  if (fColumn->fColumn == TColumn::mdOwner) return u"owner:";
  return u"mdata:" + std::u16string(fColumn->fName) + u":";
}

std::u16string TCustomPattern::ExpressionValue(std::u16string_view pText) {
  const bool isPlain = pText.find_first_of(u" ,;()\"") == std::u16string_view::npos &&
                       std::u16string_view(u"=!<>~").find(pText.front()) == std::u16string_view::npos;
  return isPlain ? std::u16string(pText) : Quoted(pText);
}

}  // namespace Vantrel::PatternMatching

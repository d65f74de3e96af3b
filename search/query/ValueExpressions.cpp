#include "search/query/ValueExpressions.h"

#include <algorithm>
#include <bit>

#include "model/tree/FileNames.h"
#include "platform/text/Text.h"
#include "search/query/QueryDates.h"
#include "search/query/SearchItem.h"

namespace Vantrel::Search {

using PatternMatching::TMatchText;

namespace {

constexpr int64_t kPropertyCost = 20'000;  // a file must be opened

// The texts of a list of texts are joined with "; ". A negated test must pass for each of them, any other for one.
bool TextsMatch(std::u16string_view pTexts, const TTextTest& pTest) {
  const bool isNegated = IsNegated(pTest.Operator());
  while (true) {
    const size_t end = pTexts.find(u"; ");
    if (pTest.Matches(pTexts.substr(0, end)) != isNegated) return !isNegated;
    if (end == std::u16string_view::npos) return isNegated;
    pTexts.remove_prefix(end + 2);
  }
}

TMetaDataValue PropertyOf(TSearchItem& pItem, TFileProperty pProperty) {
  IFileFacts* const facts = pItem.Facts();
  return facts != nullptr ? facts->GetProperty(pItem, pProperty) : TMetaDataValue();
}

}  // namespace

bool TextPropertyMatches(TSearchItem& pItem, TFileProperty pProperty, const TTextTest& pTest) {
  const TMetaDataValue value = PropertyOf(pItem, pProperty);
  const auto* text = std::get_if<std::u16string>(&value);
  const std::u16string_view texts = text != nullptr ? std::u16string_view(*text) : std::u16string_view();
  if (FilePropertyInfo(pProperty).fKind != TPropertyKind::pkTexts) return pTest.Matches(texts);
  return TextsMatch(texts, pTest);
}

// --- texts -----------------------------------------------------------------------------------------------------------

namespace {

// A value that ends with a delimiter, "/data/", names the folder itself and all beneath it, but not "/data2". The
// folder's path has no delimiter at its end.
bool FolderPathMatches(TSearchItem& pItem, const TTextTest& pTest) {
  const std::u16string& value = pTest.Value();
  TMatchText& path = pItem.FolderText();
  if (pTest.Matches(path)) return true;
  if (pTest.Operator() != TStringOperator::Contains || value.size() < 2 || value.back() != pItem.PathDelimiter())
    return false;
  return path.Folded().ends_with(pTest.FoldedValue().substr(0, value.size() - 1));
}

}  // namespace

bool TStringExpression::Matches(TSearchItem& pItem) const {
  if (const auto* property = std::get_if<TFileProperty>(&fTarget)) return TextPropertyMatches(pItem, *property, fTest);
  switch (std::get<TColumn>(fTarget)) {
    case TColumn::mdName:
      if (!fTest.IsPlain()) return fTest.Matches(pItem.Name());
      if (pItem.IsNameFolded()) return fTest.MatchesPlain(pItem.NameText(), pItem.Name().Units());
      return fTest.MatchesPlain(pItem.NameText());
    case TColumn::mdExtension: {
      const std::u16string_view extension = pItem.Entry().GetExtension();
      return fTest.IsPlain() ? fTest.MatchesPlain(extension) : fTest.Matches(extension);
    }
    case TColumn::mdFullPath:
      return fTest.Matches(pItem.FullPath());
    case TColumn::mdParentPath:
      return FolderPathMatches(pItem, fTest);
    default:
      return fTest.Matches(pItem.Owner());
  }
}

namespace {

// The files for which pTest says yes, where no file does whose name lacks the part. Most names lack it, and looking for
// it in all names at once shows that without a look at the records. A place may also stand across two names.
template <class TTest>
TFileSet SelectByPart(const TFileBlock& pBlock, const TAsciiText& pPart, const TTest& pTest) {
  const std::u16string_view names = pBlock.Names();
  TFileSet selected = 0;
  for (size_t at = pPart.FindIn(names, 0); at != kNone;) {
    const size_t file = pBlock.FileAt(at);
    selected |= TFileSet{pTest(file)} << file;
    at = pPart.FindIn(names, pBlock.EndOfName(file));
  }
  return selected;
}

}  // namespace

std::optional<TFileSet> TStringExpression::MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const {
  const bool isExtension = fTarget == TValueTarget(TColumn::mdExtension);
  if (!fTest.IsPlain() || (!isExtension && fTarget != TValueTarget(TColumn::mdName))) return std::nullopt;
  const bool isNegated = IsNegated(fTest.Operator());
  const auto holds = [&](size_t pFile) {
    const std::u16string_view name = pBlock.NameOf(pFile);
    return fTest.MatchesPlain(isExtension ? ExtensionColumnOfName(name) : name) != isNegated;
  };
  constexpr size_t kPartOfBlock = 4;  // for fewer files than such a part of the block, one after the other is faster
  const TAsciiText* const part = fTest.FixedPart();
  const bool looksAtAll =
      part != nullptr && static_cast<size_t>(std::popcount(pFiles)) * kPartOfBlock >= pBlock.Count();
  const TFileSet found = looksAtAll ? SelectByPart(pBlock, *part, holds) : TFileBlock::Select(pFiles, holds);
  return isNegated ? pFiles & ~found : pFiles & found;
}

void TStringExpression::AppendHead(std::u16string& pText) const {
  pText += fKeyword.empty() ? KeywordOf(fTarget) : std::u16string(fKeyword);
  // An extension is compared as a whole anyway.
  const bool isExtension = fTarget == TValueTarget(TColumn::mdExtension);
  if (!isExtension || fTest.Operator() != TStringOperator::Equals) fTest.AppendOperator(pText);
}

int64_t TStringExpression::Cost() const {
  if (std::holds_alternative<TFileProperty>(fTarget)) return kPropertyCost;
  switch (std::get<TColumn>(fTarget)) {
    case TColumn::mdName:
      return 5 + fTest.Cost();
    case TColumn::mdExtension:
      return 7 + fTest.Cost();
    case TColumn::mdParentPath:
      return 20 + fTest.Cost();
    case TColumn::mdFullPath:
      return 40 + fTest.Cost();
    default:
      return 200 + fTest.Cost();
  }
}

TSearchAbilities TStringExpression::Needs() const {
  return std::holds_alternative<TFileProperty>(fTarget) ? TSearchAbilities{saProperties} : 0;
}

bool TParentFolderNameExpression::Matches(TSearchItem& pItem) const {
  return fTest.Matches(pItem.FolderNameText());
}

void TParentFolderNameExpression::AppendHead(std::u16string& pText) const {
  pText += u"path:";
  fTest.AppendOperator(pText);
}

// --- numbers ---------------------------------------------------------------------------------------------------------

bool Compare(TOperator pOperator, int64_t pValue, int64_t pLimit) {
  switch (pOperator) {
    case TOperator::Smaller:
      return pValue < pLimit;
    case TOperator::SmallerOrEqual:
      return pValue <= pLimit;
    case TOperator::Equal:
      return pValue == pLimit;
    case TOperator::Larger:
      return pValue > pLimit;
    case TOperator::LargerOrEqual:
      return pValue >= pLimit;
    case TOperator::NotEqual:
      break;
  }
  return pValue != pLimit;
}

std::u16string_view OperatorText(TOperator pOperator) {
  static constexpr std::u16string_view kTexts[] = {u"<", u"<=", u"=", u">", u">=", u"!="};
  return kTexts[static_cast<size_t>(pOperator)];
}

bool TNumericExpression::Matches(TSearchItem& pItem) const {
  if (fTarget == TColumn::mdPathLength)
    return Compare(fOperator, static_cast<int64_t>(pItem.FullPath().Text().size()), fValue);
  return !pItem.IsFolder() && Compare(fOperator, pItem.Entry().GetAllocated(), fValue);
}

std::optional<TFileSet> TNumericExpression::MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const {
  if (fTarget == TColumn::mdPathLength) return std::nullopt;
  return TFileBlock::Select(pFiles, [&](size_t pFile) { return Compare(fOperator, pBlock[pFile].fAllocated, fValue); });
}

void TNumericExpression::AppendHead(std::u16string& pText) const {
  pText += KeywordOf(fTarget);
  pText += OperatorText(fOperator);
}

void TNumericExpression::AppendValue(std::u16string& pText) const {
  pText += FromUtf8(std::to_string(fValue));
  if (fTarget != TColumn::mdPathLength) pText += u'B';
}

bool TSizeExpression::Matches(TSearchItem& pItem) const {
  return !pItem.IsFolder() && Compare(fOperator, pItem.Entry().GetSize(), fValue);
}

std::optional<TFileSet> TSizeExpression::MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const {
  return TFileBlock::Select(pFiles, [&](size_t pFile) { return Compare(fOperator, pBlock[pFile].fSize, fValue); });
}

// --- dates -----------------------------------------------------------------------------------------------------------

bool TTimespanExpression::Matches(TSearchItem& pItem) const {
  if (const auto* property = std::get_if<TFileProperty>(&fTarget)) {
    const TMetaDataValue value = PropertyOf(pItem, *property);
    const auto* date = std::get_if<TKivFileTime>(&value);
    return date != nullptr && fSpan.Holds(*date);
  }
  switch (std::get<TColumn>(fTarget)) {
    case TColumn::mdLastAccess:
      return fSpan.Holds(pItem.Entry().GetLastAccessDate());
    case TColumn::mdCreation:
      return fSpan.Holds(pItem.Entry().GetCreationDate());
    default:
      return fSpan.Holds(pItem.Entry().GetLastChangeDate());
  }
}

std::optional<TFileSet> TTimespanExpression::MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const {
  const auto* column = std::get_if<TColumn>(&fTarget);
  if (column == nullptr) return std::nullopt;
  TKivFileTime TFileRecord::*date = &TFileRecord::fLastChangeDate;
  if (*column == TColumn::mdLastAccess) date = &TFileRecord::fLastAccessDate;
  if (*column == TColumn::mdCreation) date = &TFileRecord::fCreationDate;
  return TFileBlock::Select(pFiles, [&](size_t pFile) { return fSpan.Holds(pBlock[pFile].*date); });
}

void TTimespanExpression::AppendHead(std::u16string& pText) const {
  pText += KeywordOf(fTarget);
  pText += fSpan.OperatorText();
}

int64_t TTimespanExpression::Cost() const {
  return std::holds_alternative<TFileProperty>(fTarget) ? kPropertyCost : 31;
}

TSearchAbilities TTimespanExpression::Needs() const {
  return std::holds_alternative<TFileProperty>(fTarget) ? TSearchAbilities{saProperties} : 0;
}

// --- attributes and level --------------------------------------------------------------------------------------------

bool TAttributeExpression::Holds(TAttributes pAttributes) const {
  const bool areSet = (pAttributes & fAttributes) == fAttributes;
  return areSet == (fOperator == TAttributesOperator::IsSet);
}

bool TAttributeExpression::Matches(TSearchItem& pItem) const {
  return Holds(pItem.Entry().GetAttributes());
}

std::optional<TFileSet> TAttributeExpression::MatchesOf(const TFileBlock& pBlock, TFileSet pFiles) const {
  return TFileBlock::Select(pFiles, [&](size_t pFile) { return Holds(pBlock[pFile].fAttributes); });
}

void TAttributeExpression::AppendHead(std::u16string& pText) const {
  pText += fOperator == TAttributesOperator::IsSet ? u"attribute:" : u"attribute:!=";
}

void TAttributeExpression::AppendValue(std::u16string& pText) const {
  for (const char16_t unit : FormatValue(TColumn::mdAttributes, int64_t{fAttributes}, {}))
    if (unit != u'-') pText += unit;
}

TAttributes AttributeOfLetter(char16_t pLetter) {
  for (TAttributes bit = 1; bit != 0; bit <<= 1) {
    const std::u16string letters = FormatValue(TColumn::mdAttributes, int64_t{bit}, {});
    if (std::any_of(letters.begin(), letters.end(),
                    [&](char16_t pUnit) { return pUnit != u'-' && FoldAscii(pUnit) == FoldAscii(pLetter); }))
      return bit;
  }
  return 0;
}

std::u16string AttributeLetters() {
  return FormatValue(TColumn::mdAttributes, int64_t{~TAttributes{0}}, {});
}

bool TRecursionLevelExpression::Matches(TSearchItem& pItem) const {
  return Compare(fOperator, pItem.Level(), fLevel);
}

void TRecursionLevelExpression::AppendHead(std::u16string& pText) const {
  pText += KeywordOf(TColumn::mdDepth);
  pText += OperatorText(fOperator);
}

void TRecursionLevelExpression::AppendValue(std::u16string& pText) const {
  pText += FromUtf8(std::to_string(fLevel));
}

int64_t TRecursionLevelExpression::DeepestLevel() const {
  switch (fOperator) {
    case TOperator::Smaller:
      return fLevel - 1;
    case TOperator::SmallerOrEqual:
    case TOperator::Equal:
      return fLevel;
    default:
      return std::numeric_limits<int64_t>::max();
  }
}

}  // namespace Vantrel::Search

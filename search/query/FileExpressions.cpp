#include "search/query/FileExpressions.h"

#include "model/statistics/FileTypeGroups.h"
#include "model/tree/FileNames.h"
#include "platform/text/Text.h"
#include "search/query/SearchItem.h"

namespace Vantrel::Search {

using PatternMatching::TMatchText;

// --- file-type groups ------------------------------------------------------------------------------------------------

namespace {

// The masks of all groups but the catch-all ones.
std::u16string OrdinaryMasks(const IFileTypeGroups& pGroups) {
  std::u16string masks;
  for (int i = 0; i < pGroups.GetCount(); ++i) {
    const TRef<IFileTypeGroup> group = pGroups.GetItem(i);
    if (group->IsCatchAll()) continue;
    masks += group->GetPatterns();
    if (!masks.ends_with(u';')) masks += u';';
  }
  return masks;
}

}  // namespace

TFileTypeGroupExpression::TFileTypeGroupExpression(TBinaryOperator pOperator, std::u16string_view pGroup)
    : fOperator(pOperator) {
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  TRef<IFileTypeGroup> group;
  for (int i = 0; i < groups->GetCount() && !group; ++i)
    if (SameTextAscii(groups->GetItem(i)->GetCaption(), pGroup)) group = groups->GetItem(i);
  if (!group) throw EInvalidArgumentValue("No file group found matching " + ToQuotedDisplay(pGroup));
  fCaption = group->GetCaption();
  fIsCatchAll = group->IsCatchAll();
  fMasks = PatternMatching::CreateWildcardMatcher(fIsCatchAll ? OrdinaryMasks(*groups) : group->GetPatterns());
}

bool TFileTypeGroupExpression::Matches(TSearchItem& pItem) const {
  bool isMember = false;
  if (!pItem.IsFolder()) {
    TMatchText extension(ExtensionOfName(pItem.NameText()));
    isMember = fMasks->Matches(extension) != fIsCatchAll;
  }
  return isMember == (fOperator == TBinaryOperator::IsYes);
}

void TFileTypeGroupExpression::AppendHead(std::u16string& pText) const {
  pText += fOperator == TBinaryOperator::IsYes ? u"filetype:" : u"filetype:!=";
}

void TFileTypeGroupExpression::AppendValue(std::u16string& pText) const {
  AppendQueryValue(pText, fCaption);
}

// --- contents --------------------------------------------------------------------------------------------------------

bool TFileContentExpression::Matches(TSearchItem& pItem) const {
  IFileFacts* const facts = pItem.Facts();
  const bool found = facts != nullptr && facts->ContentsMatch(pItem, fSearch);
  return found == (fOperator == TBinaryOperator::IsYes);
}

void TFileContentExpression::AppendHead(std::u16string& pText) const {
  const bool isYes = fOperator == TBinaryOperator::IsYes;
  pText += u"content:";
  if (fSearch.fIsRegEx)
    pText += isYes ? u"~" : u"!~";
  else
    pText += isYes ? u"" : u"!=";
}

// --- properties ------------------------------------------------------------------------------------------------------

bool TMetaDataExpression::Matches(TSearchItem& pItem) const {
  if (const auto* text = std::get_if<TTextTest>(&fTest)) return TextPropertyMatches(pItem, fProperty, *text);
  IFileFacts* const facts = pItem.Facts();
  const TMetaDataValue value = facts != nullptr ? facts->GetProperty(pItem, fProperty) : TMetaDataValue();
  if (const auto* span = std::get_if<TTimespan>(&fTest)) {
    const auto* date = std::get_if<TKivFileTime>(&value);
    return date != nullptr && span->Holds(*date);
  }
  const auto& number = std::get<TNumberTest>(fTest);
  const auto* known = std::get_if<int64_t>(&value);
  return known != nullptr && Compare(number.fOperator, *known, number.fValue);
}

void TMetaDataExpression::AppendHead(std::u16string& pText) const {
  pText += KeywordOf(fProperty);
  if (const auto* text = std::get_if<TTextTest>(&fTest))
    text->AppendOperator(pText);
  else if (const auto* span = std::get_if<TTimespan>(&fTest))
    pText += span->OperatorText();
  else
    pText += OperatorText(std::get<TNumberTest>(fTest).fOperator);
}

void TMetaDataExpression::AppendValue(std::u16string& pText) const {
  if (const auto* text = std::get_if<TTextTest>(&fTest))
    text->AppendValue(pText);
  else if (const auto* span = std::get_if<TTimespan>(&fTest))
    pText += span->ValueText();
  else
    pText += FromUtf8(std::to_string(std::get<TNumberTest>(fTest).fValue));
}

std::u16string TMetaDataExpression::GetWarning() const {
  const auto* text = std::get_if<TTextTest>(&fTest);
  return text != nullptr ? text->Warning() : std::u16string();
}

// --- links and folders -----------------------------------------------------------------------------------------------

namespace {

void AppendYesNoHead(std::u16string& pText, std::u16string_view pName) {
  pText.append(u"mdata:").append(pName).append(u":");
}

void AppendYesNo(std::u16string& pText, TBinaryOperator pOperator) {
  pText += pOperator == TBinaryOperator::IsYes ? u"yes" : u"no";
}

}  // namespace

bool TInvalidShortcutExpression::Matches(TSearchItem& pItem) const {
  IFileFacts* const facts = pItem.Facts();
  return (facts != nullptr && facts->IsInvalidShortcut(pItem)) == (fOperator == TBinaryOperator::IsYes);
}

void TInvalidShortcutExpression::AppendHead(std::u16string& pText) const {
  AppendYesNoHead(pText, kBrokenLinkName);
}

void TInvalidShortcutExpression::AppendValue(std::u16string& pText) const {
  AppendYesNo(pText, fOperator);
}

bool TEmptyFolderExpression::Matches(TSearchItem& pItem) const {
  IFileFacts* const facts = pItem.Facts();
  return (facts != nullptr && facts->IsEmptyFolder(pItem)) == (fOperator == TBinaryOperator::IsYes);
}

void TEmptyFolderExpression::AppendHead(std::u16string& pText) const {
  AppendYesNoHead(pText, kEmptyFolderName);
}

void TEmptyFolderExpression::AppendValue(std::u16string& pText) const {
  AppendYesNo(pText, fOperator);
}

}  // namespace Vantrel::Search

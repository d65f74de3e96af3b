#include "search/query/QueryValues.h"

#include <algorithm>
#include <optional>

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Normalization.h"
#include "platform/text/Text.h"
#include "search/query/FileExpressions.h"
#include "search/query/QueryError.h"

namespace Vantrel::Search {

namespace {

constexpr std::u16string_view kListSeparators = u",;";

constexpr const char* kTextOperatorHint = "A text is compared with =, !=, ~ or !~, or without an operator.";
constexpr const char* kYesNoOperatorHint = "Here = and != can be used, or no operator.";
// How a text is compared. pWithout is the operator for a value without wildcards behind no operator.
TStringOperator TextOperator(const TQueryOperator* pOperator, const TValuePart& pPart, TStringOperator pWithout) {
  if (IsRegEx(pOperator)) return std::get<TStringOperator>(*pOperator);
  const TBinaryOperator yesOrNo = YesOrNo(pOperator, kTextOperatorHint);
  const TStringOperator positive = PatternMatching::HasWildcards(pPart.fText) ? TStringOperator::Matches
                                   : pOperator == nullptr                     ? pWithout
                                                                              : TStringOperator::Equals;
  return yesOrNo == TBinaryOperator::IsYes ? positive : Negated(positive);
}

TTextTest CheckedTest(TStringOperator pOperator, const TValuePart& pPart, bool pNormalizes = false) {
  TTextTest test(pOperator, pPart.fText, 0, pNormalizes);
  const std::u16string error = test.ErrorText();
  if (!error.empty()) {
    RefuseValue(pPart, "The regular expression is not valid: " + ToUtf8(error),
                "An expression that holds a blank, \",\", \"(\" or \")\" stands in double quotes.");
  }
  return test;
}

// The parts of a value, or the whole of a regular expression.
std::vector<TValuePart> PartsOf(const TQueryOperator* pOperator, std::u16string_view pValue) {
  std::vector<TValuePart> parts = SplitValue(pValue, IsRegEx(pOperator) ? std::u16string_view() : kListSeparators);
  if (parts.empty()) throw EQueryError("A value is missing", "A \";\" stands between two values.", 0, pValue.size());
  return parts;
}

// Alternatives that differ in more than the value are written with OR. What is negated must not match any of them.
TExpressionRef JoinParts(std::vector<TExpressionRef> pParts, bool pIsNegated) {
  if (pIsNegated) return JoinAnd(std::move(pParts));
  const auto headOf = [](const TExpressionRef& pPart) {
    std::u16string head;
    static_cast<const TCondition&>(*pPart).AppendHead(head);
    return head;
  };
  const std::u16string first = headOf(pParts.front());
  const bool areAlike =
      std::all_of(pParts.begin(), pParts.end(), [&](const TExpressionRef& pPart) { return headOf(pPart) == first; });
  return areAlike ? JoinAlternatives(std::move(pParts)) : JoinOr(std::move(pParts));
}

bool IsNegation(const TQueryOperator* pOperator) {
  if (pOperator == nullptr) return false;
  if (IsRegEx(pOperator)) return std::get<TStringOperator>(*pOperator) == TStringOperator::NotMatchesRegEx;
  return std::get<TOperator>(*pOperator) == TOperator::NotEqual;
}

// Builds a condition from each part of a value and joins them.
template <class TBuild>
TExpressionRef ForEachPart(const TQueryOperator* pOperator, std::u16string_view pValue, const TBuild& pBuild) {
  std::vector<TExpressionRef> conditions;
  for (const TValuePart& part : PartsOf(pOperator, pValue)) conditions.push_back(pBuild(part));
  return JoinParts(std::move(conditions), IsNegation(pOperator));
}

// --- Unicode ---------------------------------------------------------------------------------------------------------

std::string NormalizationMessage(const TNormalizationResult& pResult, std::u16string_view pText) {
  switch (pResult.fError) {
    case TNormalizationError::neInvalidUnicode: {
      const std::string unit = ToDisplay(pText.substr(pResult.fPosition, 1));
      return "Invalid Unicode (" + unit + ") in string at position " + std::to_string(pResult.fPosition + 1) +
             ". Input string: ";
    }
    case TNormalizationError::neBufferTooSmall:
      return "The buffer was too small or it was incorrectly set to NULL. Input string: ";
    case TNormalizationError::neInvalidParameter:
      return "One of the parameter values was invalid. Input string: ";
    default:
      return "Unknown error code " + std::to_string(pResult.fCode) + ". Input string: ";
  }
}

void Normalize(TValuePart& pPart) {
  std::u16string normalized;
  const TNormalizationResult result = NormalizeToFormD(pPart.fText, normalized);
  if (result.fError != TNormalizationError::neNone) {
    RefuseValue(pPart, NormalizationMessage(result, pPart.fText) + ToDisplay(pPart.fText),
                "Without the option for Unicode normalization the text is searched for as it is.");
  }
  pPart.fText = std::move(normalized);
}

// --- names -----------------------------------------------------------------------------------------------------------

// A part with a path delimiter is compared with the whole path. Where the delimiter is a backslash, which regular
// expressions need for themselves, they look at the name.
bool LooksAtPath(const TValuePart& pPart, const TQueryOperator* pOperator, char16_t pDelimiter) {
  return pPart.fText.find(pDelimiter) != kNone && !(IsRegEx(pOperator) && pDelimiter == u'\\');
}

// The path of a folder has no delimiter at its end. What is a path stays one.
void TrimDelimiter(std::u16string& pPath, char16_t pDelimiter) {
  const std::u16string_view shorter = WithoutTrailingDelimiter(pPath, pDelimiter);
  if (shorter.find(pDelimiter) != kNone) pPath.resize(shorter.size());
}

std::string KnownGroups() {
  std::string names;
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  for (int i = 0; i < groups->GetCount(); ++i)
    names += (names.empty() ? "" : ", ") + ToDisplay(groups->GetItem(i)->GetCaption());
  return names;
}

TAttributes AttributesOf(const TValuePart& pPart) {
  TAttributes attributes = 0;
  for (const char16_t letter : pPart.fText) {
    const TAttributes attribute = AttributeOfLetter(letter);
    if (attribute == 0) {
      RefuseValue(
          pPart, ToQuotedDisplay(std::u16string_view(&letter, 1)) + " is no attribute",
          "R read-only, H hidden, S system, A archive, D folder, C compressed, E encrypted, L link, P sparse, O "
          "offline");
    }
    attributes |= attribute;
  }
  if (attributes == 0) RefuseValue(pPart, "An attribute is missing", "attribute:H finds what is hidden");
  return attributes;
}

TExpressionRef YesNo(const TQueryOperator* pOperator, std::u16string_view pValue,
                     TExpressionRef (*pBuild)(TBinaryOperator)) {
  const bool isYesOperator = YesOrNo(pOperator, kYesNoOperatorHint) == TBinaryOperator::IsYes;
  const bool isYes = SameTextAscii(pValue, u"yes");
  if (!isYes && !SameTextAscii(pValue, u"no"))
    throw EQueryError(ToQuotedDisplay(pValue) + " is neither yes nor no", "Write yes or no.", 0, pValue.size());
  return pBuild(isYes == isYesOperator ? TBinaryOperator::IsYes : TBinaryOperator::IsNot);
}

}  // namespace

namespace PropertyFunctions {

TPropertyFunction Name(const TQuerySettings& pSettings) {
  return [settings = pSettings](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](TValuePart pPart) -> TExpressionRef {
      const TStringOperator comparison = TextOperator(pOperator, pPart, TStringOperator::Contains);
      const bool isPath = LooksAtPath(pPart, pOperator, settings.fPathDelimiter);
      if (settings.fNormalizesUnicode) Normalize(pPart);
      return MakeRef<TStringExpression>(isPath ? TColumn::mdFullPath : TColumn::mdName,
                                        CheckedTest(comparison, pPart, settings.fNormalizesUnicode), u"name:");
    });
  };
}

TPropertyFunction FolderPath(const TQuerySettings& pSettings) {
  return [settings = pSettings](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](TValuePart pPart) -> TExpressionRef {
      const TStringOperator comparison = TextOperator(pOperator, pPart, TStringOperator::Contains);
      const bool isPath = LooksAtPath(pPart, pOperator, settings.fPathDelimiter);
      const bool isWhole = comparison == TStringOperator::Equals || comparison == TStringOperator::NotEquals;
      if (isPath && isWhole) TrimDelimiter(pPart.fText, settings.fPathDelimiter);
      if (settings.fNormalizesUnicode) Normalize(pPart);
      TTextTest test = CheckedTest(comparison, pPart, settings.fNormalizesUnicode);
      if (!isPath) return MakeRef<TParentFolderNameExpression>(std::move(test));
      return MakeRef<TStringExpression>(TColumn::mdParentPath, std::move(test), u"path:");
    });
  };
}

TPropertyFunction Extension(const TQuerySettings& pSettings) {
  return [normalizes = pSettings.fNormalizesUnicode](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](TValuePart pPart) -> TExpressionRef {
      if (normalizes) Normalize(pPart);
      if (!IsRegEx(pOperator)) {
        if (pPart.fText.starts_with(u"*.")) pPart.fText.erase(0, 1);
        if (pPart.fText.starts_with(u'.')) pPart.fText.erase(0, 1);
        // An extension holds no dot: ".tar.gz" is the end of a name.
        if (pPart.fText.find(u'.') != kNone) {
          pPart.fText.insert(0, u"*.");
          const TStringOperator comparison = TextOperator(pOperator, pPart, TStringOperator::Matches);
          return MakeRef<TStringExpression>(TColumn::mdName, CheckedTest(comparison, pPart, normalizes));
        }
      }
      const TStringOperator comparison = TextOperator(pOperator, pPart, TStringOperator::Equals);
      return MakeRef<TStringExpression>(TColumn::mdExtension, CheckedTest(comparison, pPart, normalizes));
    });
  };
}

TPropertyFunction FileType() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](const TValuePart& pPart) -> TExpressionRef {
      const TBinaryOperator yesOrNo = YesOrNo(pOperator, kYesNoOperatorHint);
      try {
        return MakeRef<TFileTypeGroupExpression>(yesOrNo, pPart.fText);
      } catch (const EInvalidArgumentValue& error) {
        RefuseValue(pPart, error.what(), "The groups are: " + KnownGroups());
      }
    });
  };
}

TPropertyFunction Content() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) -> TExpressionRef {
    const std::vector<TValuePart> parts = SplitValue(pValue, {});
    if (parts.empty() || parts.front().fText.empty())
      throw EQueryError("The text to look for is missing", "content:\"two words\"", 0, pValue.size());
    const TValuePart& part = parts.front();
    if (!IsRegEx(pOperator)) {
      const TBinaryOperator yesOrNo = YesOrNo(pOperator, kTextOperatorHint);
      return MakeRef<TFileContentExpression>(yesOrNo, TContentSearch{part.fText, false, false});
    }
    CheckedTest(TStringOperator::MatchesRegEx, part);
    return MakeRef<TFileContentExpression>(IsNegation(pOperator) ? TBinaryOperator::IsNot : TBinaryOperator::IsYes,
                                           TContentSearch{part.fText, true, true});
  };
}

TPropertyFunction Attribute() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](const TValuePart& pPart) -> TExpressionRef {
      const bool isYes = YesOrNo(pOperator, kYesNoOperatorHint) == TBinaryOperator::IsYes;
      return MakeRef<TAttributeExpression>(isYes ? TAttributesOperator::IsSet : TAttributesOperator::IsNotSet,
                                           AttributesOf(pPart));
    });
  };
}

TPropertyFunction Text(const TValueTarget& pTarget, const TQuerySettings& pSettings) {
  const auto* property = std::get_if<TFileProperty>(&pTarget);
  const bool isMetaData = property != nullptr && KeywordOf(pTarget).starts_with(u"mdata:");
  const bool isPath = property == nullptr && std::get<TColumn>(pTarget) != TColumn::mdOwner;
  const bool normalizes = pSettings.fNormalizesUnicode && isPath;
  return [=, target = pTarget](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return ForEachPart(pOperator, pValue, [&](TValuePart pPart) -> TExpressionRef {
      const TStringOperator comparison = TextOperator(pOperator, pPart, TStringOperator::Contains);
      if (normalizes) Normalize(pPart);
      TTextTest test = CheckedTest(comparison, pPart, normalizes);
      if (isMetaData) return MakeRef<TMetaDataExpression>(std::get<TFileProperty>(target), std::move(test));
      return MakeRef<TStringExpression>(target, std::move(test));
    });
  };
}

TPropertyFunction BrokenLink() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return YesNo(pOperator, pValue, [](TBinaryOperator pYesOrNo) -> TExpressionRef {
      return MakeRef<TInvalidShortcutExpression>(pYesOrNo);
    });
  };
}

TPropertyFunction EmptyFolder() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return YesNo(pOperator, pValue,
                 [](TBinaryOperator pYesOrNo) -> TExpressionRef { return MakeRef<TEmptyFolderExpression>(pYesOrNo); });
  };
}

TPropertyFunction UnknownMetaData(std::string pKnownNames) {
  return [names = std::move(pKnownNames)](const TQueryOperator*, std::u16string_view pValue) -> TExpressionRef {
    const size_t length = std::min(pValue.find(u':'), pValue.size());
    throw EQueryError(ToQuotedDisplay(pValue.substr(0, length)) + " is no known property",
                      "Behind \"mdata:\" stand one of these names and a colon: " + names, 0, length);
  };
}

}  // namespace PropertyFunctions

}  // namespace Vantrel::Search

#include "search/query/QueryValues.h"

#include <algorithm>
#include <optional>

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Normalization.h"
#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"
#include "search/query/FileExpressions.h"
#include "search/query/QueryDates.h"
#include "search/query/QueryError.h"

namespace Vantrel::Search {

namespace {

constexpr std::u16string_view kListSeparators = u",;";

constexpr const char* kTextOperatorHint = "A text is compared with =, !=, ~ or !~, or without an operator.";
constexpr const char* kYesNoOperatorHint = "Here = and != can be used, or no operator.";
constexpr const char* kNumberOperatorHint = "A number is compared with =, !=, <, <=, > or >=.";
constexpr const char* kDateOperatorHint = "A date is compared with =, !=, <, <=, > or >=.";

[[noreturn]] void Fail(const TValuePart& pPart, const std::string& pMessage, std::string pHint) {
  throw EQueryError(pMessage, std::move(pHint), pPart.fBegin, pPart.fLength);
}

std::string OperatorName(const TQueryOperator& pOperator) {
  if (const auto* comparison = std::get_if<TOperator>(&pOperator)) return ToUtf8(OperatorText(*comparison));
  return std::get<TStringOperator>(pOperator) == TStringOperator::MatchesRegEx ? "~" : "!~";
}

[[noreturn]] void RefuseOperator(const TQueryOperator& pOperator, const char* pHint) {
  const std::string name = OperatorName(pOperator);
  throw EQueryOperatorError("\"" + name + "\" cannot be used with this property", pHint, 0, name.size());
}

bool IsRegEx(const TQueryOperator* pOperator) {
  return pOperator != nullptr && std::holds_alternative<TStringOperator>(*pOperator);
}

// The comparison of numbers and dates. Without an operator it is "equal".
TOperator ComparisonOf(const TQueryOperator* pOperator, const char* pHint) {
  if (pOperator == nullptr) return TOperator::Equal;
  if (IsRegEx(pOperator)) RefuseOperator(*pOperator, pHint);
  return std::get<TOperator>(*pOperator);
}

// For conditions that only hold or do not.
TBinaryOperator YesOrNo(const TQueryOperator* pOperator, const char* pHint) {
  if (pOperator == nullptr) return TBinaryOperator::IsYes;
  if (!IsRegEx(pOperator)) {
    if (std::get<TOperator>(*pOperator) == TOperator::Equal) return TBinaryOperator::IsYes;
    if (std::get<TOperator>(*pOperator) == TOperator::NotEqual) return TBinaryOperator::IsNot;
  }
  RefuseOperator(*pOperator, pHint);
}

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
    Fail(pPart, "The regular expression is not valid: " + ToUtf8(error),
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
    Fail(pPart, NormalizationMessage(result, pPart.fText) + ToDisplay(pPart.fText),
         "Without the option for Unicode normalization the text is searched for as it is.");
  }
  pPart.fText = std::move(normalized);
}

// --- numbers ---------------------------------------------------------------------------------------------------------

constexpr const char* kSizeHint =
    "Sizes are whole numbers with a unit: 500KB, 1,000MB, 2GB. Without a unit they are MB.";
constexpr const char* kNumberHint = "Numbers are whole: 5, 1,000, or 5-10 for a range.";

int64_t SizeOf(const TValuePart& pPart) {
  try {
    return ParseSizeText(pPart.fText);
  } catch (const ESizeTextError& error) {
    Fail(pPart, error.what(), kSizeHint);
  }
}

// A plain number. The reader of sizes checks the groups of three digits.
int64_t NumberOf(const TValuePart& pPart) {
  const std::u16string& text = pPart.fText;
  if (text.find_first_not_of(u"0123456789., ") != kNone || text.empty())
    Fail(pPart, ToQuotedDisplay(text) + " is no whole number", kNumberHint);
  try {
    return ParseSizeText(text + u"B");
  } catch (const ESizeTextError& error) {
    Fail(pPart, error.what(), kNumberHint);
  }
}

// Compares numbers. "10-20" behind "=" is a range.
template <class TRead, class TBuild>
TExpressionRef Numeric(const TQueryOperator* pOperator, std::u16string_view pValue, const TRead& pRead,
                       const TBuild& pBuild) {
  const TOperator comparison = ComparisonOf(pOperator, kNumberOperatorHint);
  const std::vector<TValuePart> whole = SplitValue(pValue, {});
  const TValuePart part = whole.empty() ? TValuePart{{}, 0, pValue.size()} : whole.front();
  const size_t dash = part.fText.find(u'-');
  const bool isRange = comparison == TOperator::Equal && dash != kNone && part.fText.find(u'-', dash + 1) == kNone;
  if (!isRange) return pBuild(comparison, pRead(part));
  const int64_t first = pRead({part.fText.substr(0, dash), part.fBegin, part.fLength});
  const int64_t last = pRead({part.fText.substr(dash + 1), part.fBegin, part.fLength});
  if (first > last) {
    Fail(part, "The range " + ToQuotedDisplay(part.fText) + " ends before it begins",
         "Each of the two numbers has a unit of its own, as in 10KB-20KB.");
  }
  return JoinAnd({pBuild(TOperator::LargerOrEqual, first), pBuild(TOperator::SmallerOrEqual, last)});
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
      Fail(pPart, ToQuotedDisplay(std::u16string_view(&letter, 1)) + " is no attribute",
           "R read-only, H hidden, S system, A archive, D folder, C compressed, E encrypted, L link, P sparse, O "
           "offline");
    }
    attributes |= attribute;
  }
  if (attributes == 0) Fail(pPart, "An attribute is missing", "attribute:H finds what is hidden");
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

std::vector<TValuePart> SplitValue(std::u16string_view pValue, std::u16string_view pSeparators) {
  std::vector<TValuePart> parts;
  for (size_t begin = 0; begin < pValue.size();) {
    size_t end = begin;
    const bool isQuoted = pValue[begin] == u'"';
    if (isQuoted) {
      for (++end; end < pValue.size() && (pValue[end] != u'"' || pValue.substr(end + 1, 1) == u"\"");)
        end += pValue[end] == u'"' ? 2 : 1;
    }
    end = std::min(pValue.find_first_of(pSeparators, std::min(end, pValue.size())), pValue.size());
    const std::u16string_view typed = pValue.substr(begin, end - begin);
    if (!typed.empty()) parts.push_back({PatternMatching::Unquoted(typed), begin, end - begin});
    begin = end + 1;
  }
  return parts;
}

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
        Fail(pPart, error.what(), "The groups are: " + KnownGroups());
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

TPropertyFunction Size(TColumn pTarget) {
  return [pTarget](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return Numeric(pOperator, pValue, SizeOf, [&](TOperator pComparison, int64_t pBytes) -> TExpressionRef {
      if (pTarget == TColumn::mdSize) return MakeRef<TSizeExpression>(pComparison, pBytes);
      return MakeRef<TNumericExpression>(pTarget, pComparison, pBytes);
    });
  };
}

TPropertyFunction PathLength() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return Numeric(pOperator, pValue, NumberOf, [](TOperator pComparison, int64_t pLength) -> TExpressionRef {
      return MakeRef<TNumericExpression>(TColumn::mdPathLength, pComparison, pLength);
    });
  };
}

TPropertyFunction Level() {
  return [](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return Numeric(pOperator, pValue, NumberOf, [](TOperator pComparison, int64_t pLevel) -> TExpressionRef {
      return MakeRef<TRecursionLevelExpression>(pComparison, pLevel);
    });
  };
}

TPropertyFunction NumberProperty(TFileProperty pProperty) {
  return [pProperty](const TQueryOperator* pOperator, std::u16string_view pValue) {
    return Numeric(pOperator, pValue, NumberOf, [&](TOperator pComparison, int64_t pNumber) -> TExpressionRef {
      return MakeRef<TMetaDataExpression>(pProperty, TMetaDataExpression::TNumberTest{pComparison, pNumber});
    });
  };
}

TPropertyFunction Date(const TValueTarget& pTarget, const TQuerySettings& pSettings) {
  return [target = pTarget, settings = pSettings](const TQueryOperator* pOperator,
                                                  std::u16string_view pValue) -> TExpressionRef {
    const TOperator comparison = ComparisonOf(pOperator, kDateOperatorHint);
    const std::vector<TValuePart> whole = SplitValue(pValue, {});
    const TValuePart part = whole.empty() ? TValuePart{{}, 0, pValue.size()} : whole.front();
    const TKivFileTime now = NowOf(settings);
    TDateLiteral date;
    if (!TryReadDate(part.fText, now, date)) {
      Fail(part, ToQuotedDisplay(part.fText) + " is no date",
           "Dates are 2024, 2024-05, 2024-05-01, today, yesterday or 3 days. Two dates joined by \"-\" are a range.");
    }
    if (date.fSpan.fFrom > date.fSpan.fTo) {
      Fail(part, "The range " + ToQuotedDisplay(part.fText) + " ends before it begins",
           "The earlier date stands first, as in 2023-2024.");
    }
    std::vector<TExpressionRef> spans;
    for (const TTimespan& span : SpansOf(comparison, date, now))
      spans.push_back(MakeRef<TTimespanExpression>(target, span));
    return JoinOr(std::move(spans));
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

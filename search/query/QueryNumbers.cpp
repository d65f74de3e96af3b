// The functions that build conditions on sizes, numbers and dates.

#include "model/columns/MetaData.h"
#include "platform/text/Text.h"
#include "search/patterns/SizeText.h"
#include "search/query/FileExpressions.h"
#include "search/query/QueryDates.h"
#include "search/query/QueryError.h"
#include "search/query/QueryValues.h"

namespace Vantrel::Search {

namespace {

constexpr const char* kNumberOperatorHint = "A number is compared with =, !=, <, <=, > or >=.";
constexpr const char* kDateOperatorHint = "A date is compared with =, !=, <, <=, > or >=.";

constexpr const char* kSizeHint =
    "Sizes are whole numbers with a unit: 500KB, 1,000MB, 2GB. Without a unit they are MB.";
constexpr const char* kNumberHint = "Numbers are whole: 5, 1,000, or 5-10 for a range.";

int64_t SizeOf(const TValuePart& pPart) {
  try {
    return ParseSizeText(pPart.fText);
  } catch (const ESizeTextError& error) {
    RefuseValue(pPart, error.what(), kSizeHint);
  }
}

// A plain number. The reader of sizes checks the groups of three digits.
int64_t NumberOf(const TValuePart& pPart) {
  const std::u16string& text = pPart.fText;
  if (text.find_first_not_of(u"0123456789., ") != kNone || text.empty())
    RefuseValue(pPart, ToQuotedDisplay(text) + " is no whole number", kNumberHint);
  try {
    return ParseSizeText(text + u"B");
  } catch (const ESizeTextError& error) {
    RefuseValue(pPart, error.what(), kNumberHint);
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
    RefuseValue(part, "The range " + ToQuotedDisplay(part.fText) + " ends before it begins",
                "Each of the two numbers has a unit of its own, as in 10KB-20KB.");
  }
  return JoinAnd({pBuild(TOperator::LargerOrEqual, first), pBuild(TOperator::SmallerOrEqual, last)});
}

}  // namespace

namespace PropertyFunctions {

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
      RefuseValue(
          part, ToQuotedDisplay(part.fText) + " is no date",
          "Dates are 2024, 2024-05, 2024-05-01, today, yesterday or 3 days. Two dates joined by \"-\" are a range.");
    }
    if (date.fSpan.fFrom > date.fSpan.fTo) {
      RefuseValue(part, "The range " + ToQuotedDisplay(part.fText) + " ends before it begins",
                  "The earlier date stands first, as in 2023-2024.");
    }
    std::vector<TExpressionRef> spans;
    for (const TTimespan& span : SpansOf(comparison, date, now))
      spans.push_back(MakeRef<TTimespanExpression>(target, span));
    return JoinOr(std::move(spans));
  };
}

}  // namespace PropertyFunctions

}  // namespace Vantrel::Search

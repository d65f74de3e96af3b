#pragma once

// The operators of conditions.

#include <cstdint>

namespace Vantrel::Search {

// Compares numbers and dates.
enum class TOperator : uint8_t { Smaller, SmallerOrEqual, Equal, Larger, LargerOrEqual, NotEqual };

// Compares texts. The second half negates the first, in the same order.
enum class TStringOperator : uint8_t {
  Equals,
  StartsWith,
  Contains,
  EndsWith,
  Matches,       // wildcards
  MatchesRegEx,  // a regular expression, anywhere in the text
  NotEquals,
  NotStartsWith,
  NotContains,
  NotEndsWith,
  NotMatches,
  NotMatchesRegEx
};

enum class TStringOperatorOption : uint8_t { CaseSensitive = 1, WholeWord = 2 };
using TStringOperatorOptions = uint8_t;  // bits of TStringOperatorOption

enum class TBinaryOperator : uint8_t { IsYes, IsNot };
enum class TAttributesOperator : uint8_t { IsSet, IsNotSet };

constexpr uint8_t kNegatedOperators = static_cast<uint8_t>(TStringOperator::NotEquals);
constexpr bool IsNegated(TStringOperator pOperator) {
  return pOperator >= TStringOperator::NotEquals;
}
// The operator that matches exactly what the given one does not.
constexpr TStringOperator Negated(TStringOperator pOperator) {
  const auto number = static_cast<uint8_t>(pOperator);
  return static_cast<TStringOperator>(IsNegated(pOperator) ? number - kNegatedOperators : number + kNegatedOperators);
}

}  // namespace Vantrel::Search

#pragma once

// The parts of a value behind a property, and the operator in front of it.

#include <string>
#include <string_view>
#include <vector>

#include "search/query/Lexer.h"

namespace Vantrel::Search {

// One alternative of a value.
struct TValuePart {
  std::u16string fText;  // without quotes
  size_t fBegin;         // in the value as typed
  size_t fLength;        // as typed
};

// Splits a value at the pSeparators that stand outside quotes. Empty parts are left out, unless they are quoted.
std::vector<TValuePart> SplitValue(std::u16string_view pValue, std::u16string_view pSeparators);

// EQueryError at the part.
[[noreturn]] void RefuseValue(const TValuePart& pPart, const std::string& pMessage, std::string pHint);

// The operator is nullptr where none stands. EQueryOperatorError with the hint for one that cannot be used.
bool IsRegEx(const TQueryOperator* pOperator);
// The comparison of numbers and dates. Without an operator it is "equal".
TOperator ComparisonOf(const TQueryOperator* pOperator, const char* pHint);
// For conditions that only hold or do not.
TBinaryOperator YesOrNo(const TQueryOperator* pOperator, const char* pHint);

}  // namespace Vantrel::Search

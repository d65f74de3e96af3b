#include "search/query/ValueParts.h"

#include <algorithm>

#include "platform/text/Text.h"
#include "search/patterns/CustomPattern.h"
#include "search/query/QueryError.h"
#include "search/query/ValueExpressions.h"

namespace Vantrel::Search {

namespace {

std::string OperatorName(const TQueryOperator& pOperator) {
  if (const auto* comparison = std::get_if<TOperator>(&pOperator)) return ToUtf8(OperatorText(*comparison));
  return std::get<TStringOperator>(pOperator) == TStringOperator::MatchesRegEx ? "~" : "!~";
}

[[noreturn]] void RefuseOperator(const TQueryOperator& pOperator, const char* pHint) {
  const std::string name = OperatorName(pOperator);
  throw EQueryOperatorError("\"" + name + "\" cannot be used with this property", pHint, 0, name.size());
}

}  // namespace

void RefuseValue(const TValuePart& pPart, const std::string& pMessage, std::string pHint) {
  throw EQueryError(pMessage, std::move(pHint), pPart.fBegin, pPart.fLength);
}

bool IsRegEx(const TQueryOperator* pOperator) {
  return pOperator != nullptr && std::holds_alternative<TStringOperator>(*pOperator);
}

TOperator ComparisonOf(const TQueryOperator* pOperator, const char* pHint) {
  if (pOperator == nullptr) return TOperator::Equal;
  if (IsRegEx(pOperator)) RefuseOperator(*pOperator, pHint);
  return std::get<TOperator>(*pOperator);
}

TBinaryOperator YesOrNo(const TQueryOperator* pOperator, const char* pHint) {
  if (pOperator == nullptr) return TBinaryOperator::IsYes;
  if (!IsRegEx(pOperator)) {
    if (std::get<TOperator>(*pOperator) == TOperator::Equal) return TBinaryOperator::IsYes;
    if (std::get<TOperator>(*pOperator) == TOperator::NotEqual) return TBinaryOperator::IsNot;
  }
  RefuseOperator(*pOperator, pHint);
}

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

}  // namespace Vantrel::Search

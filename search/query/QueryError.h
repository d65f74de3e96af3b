#pragma once

// What is wrong with a query, where, and what would be right.

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/system/Errors.h"

namespace Vantrel::Search {

// A query cannot be read, or a value in it cannot be converted. The text says what is wrong, UTF-8.
class EQueryError : public EException {
 public:
  // The place is counted in UTF-16 units of the query. pHint says what would be right; it may be empty.
  EQueryError(const std::string& pMessage, std::string pHint, size_t pBegin, size_t pLength)
      : EException(pMessage), fHint(std::move(pHint)), fBegin(pBegin), fLength(pLength) {}

  const std::string& Hint() const { return fHint; }
  size_t Begin() const { return fBegin; }
  size_t Length() const { return fLength; }
  // The same error when what was read stands at pOffset in the query.
  EQueryError At(size_t pOffset) const { return {what(), fHint, fBegin + pOffset, fLength}; }

 private:
  std::string fHint;
  size_t fBegin;
  size_t fLength;
};

// An operator does not fit its property. The place is that of the operator.
class EQueryOperatorError : public EQueryError {
 public:
  using EQueryError::EQueryError;
};

// Four lines for a terminal: the query, a mark under the place, the message, the hint. A long query is cut to what is
// around the place.
std::string DescribeQueryError(std::u16string_view pQuery, const EQueryError& pError);

}  // namespace Vantrel::Search

#pragma once

// What can be said of a regular expression by reading it: a text that each match holds, and whether a match stays in
// one line.

#include <string>
#include <string_view>

namespace Vantrel::Search {

// Both facts are on the safe side: an expression with rarer constructs has neither.
struct TExpressionFacts {
  // No part of the expression matches the end of a line or looks beyond the match. So the expression finds the same in
  // many lines at once as in each alone.
  bool fStaysInLine = false;
  // A text that every match holds, the longest that was found. Empty when none is known. Without regard to case it has
  // no letter that also equals a character beyond ASCII, such as "k", which equals the Kelvin sign.
  std::u16string fText{};
  bool fCaseSensitive = true;  // false for an expression that begins with "(?i)"
};

// The expression must be valid. Letter case counts, unless the expression says otherwise.
TExpressionFacts FactsOfExpression(std::u16string_view pExpression);

}  // namespace Vantrel::Search

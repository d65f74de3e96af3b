#pragma once

// Regular expressions, with limits on the work for one text.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Vantrel::PatternMatching {

// What an expression is matched with: a name or a path, or lines of a text, where "^" and "$" match at the end of each
// line, be it LF or CR LF.
enum class TExpressionUse : uint8_t { euNames, euLines };

// A compiled regular expression in PCRE's dialect. It also matches ill-formed UTF-16: a lone surrogate matches nothing,
// and "." stops before it. Matching allocates memory only for the first text and the first long one.
//
// The steps and the depth of one match are limited. An expression that needs more, as nested repeats can, gives up on
// that text. The text then counts as not matching. After giving up kMostGivenUp times, the expression matches nothing
// any more. So no expression holds up a scan.
//
// One thread at a time. Code that shares an expression between threads must guard it.
class TRegularExpression {
 public:
  static constexpr int64_t kMostGivenUp = 1000;

  // Compiles the expression. ErrorText tells whether that worked.
  TRegularExpression(std::u16string_view pExpression, bool pCaseSensitive,
                     TExpressionUse pUse = TExpressionUse::euNames);
  ~TRegularExpression();
  TRegularExpression(const TRegularExpression&) = delete;
  TRegularExpression& operator=(const TRegularExpression&) = delete;

  // Why and where the expression is not valid, in words for the user, UTF-8: "missing closing parenthesis (at character
  // 5)". Empty for a valid expression.
  const std::string& ErrorText() const;
  // Whether the expression matches anywhere in the text. False when it is not valid or gives up.
  bool Matches(std::u16string_view pText);
  // The same for a text of many lines, when no part of the expression can match the end of a line. The work is limited
  // for each line, not for the text. No value when the expression gives up on some line; that does not count.
  std::optional<bool> TryFindInLines(std::u16string_view pLines);
  // The number of texts on which the expression gave up.
  int64_t GivenUp() const;

 private:
  struct TCompiled;
  std::unique_ptr<TCompiled> fCompiled;
};

}  // namespace Vantrel::PatternMatching

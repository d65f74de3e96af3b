#pragma once

// Regular expressions, with limits to the work on one text.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Vantrel::PatternMatching {

// A compiled regular expression in PCRE's dialect. Text that is no well-formed UTF-16 is matched as well: a lone
// surrogate matches nothing and ends what "." takes in. Matching allocates nothing but for the first text and the first
// long one.
//
// The steps and the depth that one match may take are limited. An expression that would need more, as nested repeats
// can, gives up on that text, which then counts as not matching. One that has given up kMostGivenUp times matches
// nothing any more, so that no expression holds up a scan.
//
// One thread at a time; whoever shares an expression guards it.
class TRegularExpression {
 public:
  static constexpr int64_t kMostGivenUp = 1000;

  // Compiles the expression; IsValid tells whether that worked.
  TRegularExpression(std::u16string_view pExpression, bool pCaseSensitive);
  ~TRegularExpression();
  TRegularExpression(const TRegularExpression&) = delete;
  TRegularExpression& operator=(const TRegularExpression&) = delete;

  bool IsValid() const;
  // Why the expression is not valid, and where, for people, UTF-8: "missing closing parenthesis (at character 5)".
  // Empty for a valid one.
  const std::string& ErrorText() const;
  // Whether it matches anywhere in the text. False when it is not valid or gives up.
  bool Matches(std::u16string_view pText);
  // How many texts it has given up on.
  int64_t GivenUp() const;

 private:
  struct TCompiled;
  std::unique_ptr<TCompiled> fCompiled;
};

}  // namespace Vantrel::PatternMatching

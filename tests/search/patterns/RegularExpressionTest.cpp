// Expressions and texts, lone surrogates, limits, messages; compiled and interpreted.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>

#include "platform/text/Text.h"
#include "search/patterns/RegularExpression.h"

namespace Vantrel::PatternMatching {

namespace {

constexpr bool kSensitive = true;
constexpr bool kInsensitive = false;

std::u16string Repeat(std::u16string_view pText, size_t pTimes) {
  std::u16string result;
  for (size_t i = 0; i < pTimes; ++i) result += pText;
  return result;
}

struct TCase {
  std::u16string fExpression;
  bool fCaseSensitive;
  std::u16string fText;
  bool fMatches;
};

// Compiled for the processor, and interpreted: both have rules of their own for text that is not well-formed.
void Check(std::initializer_list<TCase> pCases) {
  for (const TCase& test : pCases)
    for (const char16_t* verb : {u"", u"(*NO_JIT)"}) {
      SCOPED_TRACE(ToUtf8(verb + test.fExpression) + " on " + ToDisplay(test.fText.substr(0, 100)));
      TRegularExpression expression(verb + test.fExpression, test.fCaseSensitive);
      EXPECT_EQ(expression.ErrorText(), "");
      EXPECT_EQ(expression.Matches(test.fText), test.fMatches);
      EXPECT_EQ(expression.GivenUp(), 0);
    }
}

}  // namespace

TEST(RegularExpression, MatchesAnywhereInTheText) {
  Check({
      {u"", kSensitive, u"", true},
      {u"", kSensitive, u"a", true},
      {u"^$", kSensitive, u"", true},
      {u"^$", kSensitive, u"a", false},
      {u".", kSensitive, u"", false},
  });
  TRegularExpression empty(std::u16string_view(), kSensitive);
  EXPECT_TRUE(empty.Matches(std::u16string_view()));  // views of nothing, which lie nowhere
}

TEST(RegularExpression, LetterCaseIsUnicodes) {
  Check({
      {u"äö", kInsensitive, u"ÄÖ", true},
      {u"äö", kSensitive, u"ÄÖ", false},
      {u"[à-ö]", kInsensitive, u"É", true},
      {u"жук", kInsensitive, u"ЖУК", true},
      {u"σ", kInsensitive, u"ς", true},                    // three letters are one: Σ σ ς
      {u"k", kInsensitive, u"\u212A", true},               // the sign for kelvin
      {u"\U00010400", kInsensitive, u"\U00010428", true},  // beyond the first plane
      {u"straße", kInsensitive, u"STRASSE", false},        // one letter never folds to two
      {u"(?i)a(?-i)b", kSensitive, u"Ab", true},
      {u"(?i)a(?-i)b", kSensitive, u"AB", false},
  });
}

TEST(RegularExpression, APairOfSurrogatesIsOneCharacterAndALoneOneIsNone) {
  const std::u16string lone = {u'a', 0xDC80, u'b'}, half = {u'a', 0xD83D, u'b'};
  Check({
      {u"^.$", kSensitive, u"😀", true},
      {u"^..$", kSensitive, u"😀", false},
      {u"^[😀-😂]$", kSensitive, u"😁", true},
      {u"a", kSensitive, lone, true},
      {u"b$", kSensitive, lone, true},
      {u"^b", kSensitive, lone, false},
      {u"a$", kSensitive, lone, false},
      {u"ab", kSensitive, lone, false},
      {u"a.b", kSensitive, half, false},
      {u"a[^x]b", kSensitive, half, false},
      {u"^.*$", kSensitive, half, false},
      {u"(?<=b)c", kSensitive, half + u"c", true},
      {u"(?<=.)b", kSensitive, lone, false},
      {u".", kSensitive, u"\xD83D", false},
      {u"b", kSensitive,
       u"\xDE00\xD83D"
       u"b",
       true},
      {u"^a", kSensitive, u"a\xD83D", true},
  });
}

TEST(RegularExpression, LongTexts) {
  for (const size_t length : {998, 1000, 1002, 4000, 70000}) {  // up to 1000 without the count of calls
    const std::u16string text = Repeat(u"ab", length / 2 - 1) + u"ac";
    SCOPED_TRACE(length);
    Check({
        {u"ac$", kSensitive, text, true},
        {u"^(ab|ac)*$", kInsensitive, text, true},
        {u"^(ab)*$", kSensitive, text, false},
        {u"^.*B.*C", kInsensitive, text, true},
        {u"cb", kSensitive, text, false},
        {u"[ab]?[ab]?x|ac$", kSensitive, text, true},
        {u"a\\Z|ca|d", kSensitive, text, false},
    });
  }
  TRegularExpression eachLetter(u"^(a|b|c)*$", kSensitive);
  EXPECT_TRUE(eachLetter.Matches(Repeat(u"ab", 45000) + u"c"));
  EXPECT_EQ(eachLetter.GivenUp(), 0);
}

// Without limits each of these would run for years, or out of memory.
TEST(RegularExpression, GivesUpOnWhatNeverEnds) {
  const std::u16string name = Repeat(u"a", 39) + u"b";
  const TCase cases[] = {
      {u"(a+)+$", kSensitive, name, false},
      {u"(*NO_JIT)(a+)+$", kSensitive, name, false},
      {u"(a|a)*c|d", kSensitive, Repeat(u"a", 60) + u"bc", false},
      {u"(*LIMIT_MATCH=4000000000)(*LIMIT_DEPTH=4000000000)(*LIMIT_HEAP=4000000000)(a+)+$", kSensitive, name, false},
      {u"(*NO_JIT)(*LIMIT_MATCH=4000000000)(*LIMIT_DEPTH=4000000000)(*LIMIT_HEAP=4000000000)(a+)+$", kSensitive, name,
       false},
      {u"(*UTF)(*UCP)(*NO_START_OPT)(*NO_AUTO_POSSESS)(\\w+)+$", kSensitive, name + u"-", false},
      {u"(?R)", kSensitive, name, false},
      {u"(*NO_JIT)(?R)", kSensitive, name, false},
      {u"(*NO_JIT)^(?:a|b)*$", kSensitive, Repeat(u"ab", 35000), false},  // too many rounds for the interpreter
      {u"(?:a|b)*[ab]*[cd]", kSensitive, Repeat(u"ab", 10000), false},    // never meets the limit of matching
      {u"(*LIMIT_MATCH=10)(a+)+$", kSensitive, u"aaaaaab", false},        // lowered
  };
  for (const TCase& test : cases) {
    SCOPED_TRACE(ToUtf8(test.fExpression));
    TRegularExpression expression(test.fExpression, test.fCaseSensitive);
    EXPECT_EQ(expression.ErrorText(), "");
    EXPECT_FALSE(expression.Matches(test.fText));
    EXPECT_EQ(expression.GivenUp(), 1);
  }
}

TEST(RegularExpression, GoesOnAfterGivingUpUntilThatWasOftenEnough) {
  TRegularExpression expression(u"^(a+)+$", kSensitive);
  const std::u16string hostile = Repeat(u"a", 39) + u"b";
  for (int64_t i = 0; i < TRegularExpression::kMostGivenUp; ++i) {
    ASSERT_EQ(expression.GivenUp(), i);
    ASSERT_TRUE(expression.Matches(u"aaa"));
    ASSERT_FALSE(expression.Matches(hostile));
  }
  EXPECT_FALSE(expression.Matches(u"aaa"));
  EXPECT_FALSE(expression.Matches(hostile));
  EXPECT_EQ(expression.GivenUp(), TRegularExpression::kMostGivenUp);
  EXPECT_EQ(expression.ErrorText(), "");
}

TEST(RegularExpression, SaysWhatIsWrongAndWhere) {
  const std::pair<std::u16string, std::string> cases[] = {
      {u"(abc", "missing closing parenthesis (at character 5)"},
      {u"[abc", "missing terminating ] for character class (at character 5)"},
      {u"abc\\", "\\ at end of pattern (at character 5)"},
      {u"*a", "quantifier does not follow a repeatable item (at character 1)"},
      {u"a{2,1}b", "numbers out of order in {} quantifier (at character 6)"},
      {u"a)b", "unmatched closing parenthesis (at character 2)"},
      {u"é😀)", "unmatched closing parenthesis (at character 3)"},
      {u"a\\Cb", "using \\C is disabled by the application (at character 4)"},
      {u"b\xDC80"
       u"a",
       "UTF-16 error: isolated low surrogate (at character 2)"},
      {u"\\x{D800}", "disallowed Unicode code point (>= 0xd800 && <= 0xdfff) (at character 8)"},
      {Repeat(u"(", 300) + u"a" + Repeat(u")", 300), "parentheses are too deeply nested (at character 252)"},
  };
  for (const auto& [text, error] : cases) {
    TRegularExpression expression(text, kSensitive);
    EXPECT_EQ(expression.ErrorText(), error);
    EXPECT_FALSE(expression.Matches(text));
    EXPECT_EQ(expression.GivenUp(), 0);
  }
}

TEST(RegularExpression, HostileExpressionsAreRefusedOrMatch) {
  const std::pair<std::u16string, std::string> refused[] = {
      {std::u16string(1 << 20, u'a'), "longer than the limit"},
      {std::u16string(1 << 20, u'('), "longer than the limit"},
      {std::u16string(60000, u'('), "too deeply nested"},
      {std::u16string(60000, u'['), "missing terminating ]"},
      {u"(?:(?:(?:a{65535}){65535}){65535}){65535}", "too large"},
      {u"((((((((a?){0,9}){0,9}){0,9}){0,9}){0,9}){0,9}){0,9}){0,9}", "too large"},
      {u"a{65536}", "number too big"},
      {Repeat(u"(?<=a|b)", 5000), "too complicated"},
  };
  for (const auto& [text, error] : refused) {
    TRegularExpression expression(text, kSensitive);
    EXPECT_NE(expression.ErrorText().find(error), std::string::npos) << expression.ErrorText();
  }
  Check({
      {Repeat(u"(", 240) + u"a" + Repeat(u")?", 240), kSensitive, u"a", true},
      {Repeat(u"(?=a*", 240) + Repeat(u")", 240) + u"b", kSensitive, u"aab", true},
      {u"^" + Repeat(u"a?", 15000) + u"$", kSensitive, u"aaa", true},
      {u"^" + Repeat(u"\\p{L}", 9000) + u"$", kSensitive, Repeat(u"ä", 9000), true},
      {u"^a{60000}$", kSensitive, Repeat(u"a", 60000), true},
      {u"(?C1)a(?C'x')b", kSensitive, u"ab", true},  // nobody listens to calls of its own
  });
}

}  // namespace Vantrel::PatternMatching

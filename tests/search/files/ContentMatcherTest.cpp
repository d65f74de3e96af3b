// Texts and regular expressions in contents: encodings, letter case, matches across blocks, lines, zeros, limits.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/files/ContentMatcher.h"
#include "tests/support/ByteStrings.h"

namespace Vantrel::Search {

namespace {

using Testing::TStringSource;

const auto kNever = [] { return false; };

bool IsFound(TContentMatcher& pMatcher, std::string_view pBytes, size_t pPiece = 1 << 20) {
  TStringSource source(pBytes, pPiece);
  return pMatcher.IsFoundIn(source, kNever);
}

bool HasText(std::u16string_view pText, std::string_view pBytes, bool pCaseSensitive = false) {
  TContentMatcher matcher({std::u16string(pText), false, pCaseSensitive});
  return IsFound(matcher, pBytes);
}

bool HasMatch(std::u16string_view pExpression, std::string_view pBytes) {
  TContentMatcher matcher({std::u16string(pExpression), true, true});
  return IsFound(matcher, pBytes);
}

std::string Utf16(std::u16string_view pText, bool pLittleEndian) {
  std::string bytes;
  for (const char16_t unit : pText) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    bytes += pLittleEndian ? low : high;
    bytes += pLittleEndian ? high : low;
  }
  return bytes;
}

// An endless hole, of which only SkipZeros finds the end.
class THoleSource final : public IByteSource {
 public:
  explicit THoleSource(std::string pEnd) : fEnd(std::move(pEnd)) {}
  int fReads = 0;

  size_t Read(char* pBuffer, size_t pLength) override {
    ++fReads;
    if (fIsSkipped) return std::exchange(fEnd, {}).copy(pBuffer, pLength);
    std::fill(pBuffer, pBuffer + pLength, '\0');
    return pLength;
  }
  uint64_t SkipZeros() override {
    fIsSkipped = true;
    return uint64_t{20} << 30;
  }

 private:
  std::string fEnd;
  bool fIsSkipped = false;
};

}  // namespace

TEST(ContentMatcher, FindsTextInEveryEncoding) {
  const std::u16string text = u"Größe 5\u20AC \U0001F600 end";
  const std::string zeros("\0\0\0", 3);
  for (const std::u16string_view wanted : {u"größe", u"\u20AC", u"\U0001F600 E", u"5\u20ac"}) {
    const std::string shown = ToUtf8(wanted);
    EXPECT_TRUE(HasText(wanted, ToUtf8(text))) << shown;
    for (const bool littleEndian : {true, false}) {
      const std::string bytes = Utf16(text, littleEndian);
      EXPECT_TRUE(HasText(wanted, Utf16(u"\uFEFF", littleEndian) + bytes)) << shown;
      EXPECT_TRUE(HasText(wanted, bytes)) << shown;
      EXPECT_TRUE(HasText(wanted, zeros + bytes + "\xFF")) << shown << " at an odd place of a binary file";
    }
    EXPECT_FALSE(HasText(wanted,
                         "gr\xF6\xDF"
                         "e 5 end"))
        << shown;
  }
}

TEST(ContentMatcher, LetterCaseCountsOnlyOnRequest) {
  struct TCase {
    const char16_t* fText;
    const char* fBytes;
    bool fAnyCase;
    bool fSameCase;
  };
  const TCase cases[] = {
      {u"Error", "an eRROR", true, false},
      {u"Error", "an Error", true, true},
      {u"a[b", "A{B", false, false},  // differ in the bit of letter case, and are no letters
      {u"ä1", "Ä1", true, false},
      {u"я", "Я", true, false},
      {u"x\u2C65y", "X\u023AY", true, false},  // the two forms differ in length
      {u"x\u023Ay", "x\u2C65y", true, false},

      {u"k", "\u212A", false, false},  // the Kelvin sign: an ASCII letter has only its ASCII twin
  };
  for (const TCase& item : cases) {
    EXPECT_EQ(HasText(item.fText, item.fBytes, false), item.fAnyCase) << item.fBytes;
    EXPECT_EQ(HasText(item.fText, item.fBytes, true), item.fSameCase) << item.fBytes;
  }
}

// Short random texts over few letters, so that near misses and overlaps are common, against a search byte by byte.
TEST(ContentMatcher, FindsWhatASlowSearchFinds) {
  std::mt19937 random(7);
  const std::u16string letters = u"aAbB\n @`\u00E4\u00C4";
  const auto make = [&](size_t pLength) {
    std::u16string text;
    while (text.size() < pLength) text += letters[random() % letters.size()];
    return text;
  };
  const auto lower = [](std::u16string pText) {
    for (char16_t& letter : pText)
      if ((letter >= u'A' && letter <= u'B') || letter == u'\u00C4') letter = static_cast<char16_t>(letter + 32);
    return pText;
  };
  const auto encoded = [](const std::u16string& pText, size_t pEncoding) {
    return pEncoding == 0 ? ToUtf8(pText) : Utf16(pText, pEncoding == 1);
  };
  int found = 0;
  for (int round = 0; round < 4'000; ++round) {
    const std::u16string text = make(random() % 250);
    const std::u16string wanted = make(1 + random() % 7);
    const bool caseSensitive = random() % 2 == 0;
    const size_t encoding = random() % 3;
    const std::string before(random() % 3, '\0');
    const std::string bytes = before + encoded(text, encoding);
    const std::string slow = before + encoded(caseSensitive ? text : lower(text), encoding);
    bool expected = false;
    for (const size_t form : {0, 1, 2})
      expected |= slow.find(encoded(caseSensitive ? wanted : lower(wanted), form)) != std::string::npos;
    found += expected;
    TContentMatcher matcher({wanted, false, caseSensitive});
    ASSERT_EQ(IsFound(matcher, bytes, 1 + random() % 90), expected) << ToUtf8(wanted) << " in [" << bytes << "]";
  }
  EXPECT_GT(found, 500);
}

TEST(ContentMatcher, FindsMatchesAcrossBlocks) {
  TContentMatcher text({u"needle", false, false});
  TContentMatcher expression({u"n[aeiou]+dle$", true, true});
  for (size_t place = TContentMatcher::kLongestLine - 8; place <= TContentMatcher::kLongestLine + 2; ++place) {
    std::string bytes(2 * TContentMatcher::kLongestLine, '.');
    bytes[place - 100] = '\n';
    bytes.replace(place, 7, "needle\n");
    for (const size_t piece : {size_t{1} << 20, size_t{4096}, size_t{1} << 18}) {
      EXPECT_TRUE(IsFound(text, bytes, piece)) << place;
      EXPECT_TRUE(IsFound(expression, bytes, piece)) << place;
    }
  }
}

TEST(ContentMatcher, SkipsHolesAndFindsWhatFollows) {
  for (const bool isExpression : {false, true}) {
    TContentMatcher matcher({u"needle", isExpression, true});
    THoleSource with("a needle\n"), without("nothing\n");
    EXPECT_TRUE(matcher.IsFoundIn(with, kNever));
    EXPECT_FALSE(matcher.IsFoundIn(without, kNever));
    EXPECT_LE(with.fReads, 4) << "the hole was read";
  }
  // The high byte of the first letter is the last zero of the hole.
  TContentMatcher matcher({u"needle", false, false});
  THoleSource source(Utf16(u"needle", false).substr(1));
  EXPECT_TRUE(matcher.IsFoundIn(source, kNever));
}

TEST(ContentMatcher, StopsWhenAsked) {
  for (const bool isExpression : {false, true}) {
    TContentMatcher matcher({u"needle", isExpression, true});
    TStringSource source("needle");
    EXPECT_FALSE(matcher.IsFoundIn(source, [] { return true; }));
    TStringSource failing("no");
    failing.fFails = true;
    EXPECT_THROW(matcher.IsFoundIn(failing, kNever), EOSError);
  }
}

TEST(ContentMatcher, ExpressionsMatchLineByLine) {
  struct TCase {
    const char16_t* fExpression;
    std::string fBytes;
    bool fIsFound;
  };
  const std::string wide = Utf16(u"first line\r\nsecond line\r\n", true);
  const std::string wideBigEndian = Utf16(u"first line\r\nsecond line\r\n", false);
  const TCase cases[] = {
      {u"^second", "first\nsecond\n", true},
      {u"first$", "first\r\nsecond", true},
      {u"^$", "a\n\nb\n", true},
      {u"^$", "a\nb\n", false},
      {u"^$", "", false},
      {u"a.b", "a\nb", false},
      {u"a\\s+b", "a\nb", false},
      {u"a[^x]b", "a\nb", false},
      {u"a(?!\\n)", "a\n", true},  // the end of the line is not a part of it
      {u"a\\z", "a\nb", true},
      {u"needle", "NEEDLE", false},
      {u"(?i)needle", "a NEEDLE", true},
      {u"(?i)k", "\u212A", true},
      {u"colou?r", "the color", true},
      {u"x{0}y{2}z", "yyz", true},
      {u"foo|b.r", "a bar", true},
      {u"gr\u00F6\u00DFe", "Die gr\u00F6\u00DFe", true},
      {u"^a$", std::string("some text\0a\0c", 13), true},
      {u"second line$", wide, true},
      {u"^second", "\xFF\xFE" + wide, true},
      {u"^second", wideBigEndian, true},
      {u"^first", "\xFE\xFF" + wideBigEndian, true},
      {u"^first",
       "\xEF\xBB\xBF"
       "first",
       true},
  };
  for (const TCase& item : cases)
    EXPECT_EQ(HasMatch(item.fExpression, item.fBytes), item.fIsFound)
        << ToUtf8(item.fExpression) << " in " << ToDisplay(FromNativeBytes(item.fBytes));
}

// Random expressions, in lines that may match by chance. The short cuts for many lines and for a text that each match
// holds must not change the answer.
TEST(ContentMatcher, ShortCutsFindWhatEachLineAloneFinds) {
  std::mt19937 random(11);
  const std::vector<std::u16string> parts = {
      u"a",     u"b",   u"ab",  u"k",   u".",     u"[ab]",    u"[^a]",  u"a*",   u"b?",      u"(ab)+",
      u"(a|b)", u"\\w", u"\\s", u"\\b", u"^",     u"$",       u"b{2}",  u"a{0}", u"(?:ba)?", u"|",
      u"\\.",   u"a++", u"b+?", u"s",   u"[a-k]", u"ka{0,2}", u"(?=b)", u"(?i)", u"\\x61",   u"[\\w.]"};
  const std::string letters = "abkKs. \n";
  int found = 0, quick = 0;
  for (int round = 0; round < 4'000; ++round) {
    std::u16string expression = random() % 8 == 0 ? u"(?i)" : u"";
    for (size_t i = 1 + random() % 5; i > 0; --i) expression += parts[random() % parts.size()];
    PatternMatching::TRegularExpression alone(expression, true);
    if (!alone.ErrorText().empty()) continue;
    TContentMatcher matcher({expression, true, true});
    const TExpressionFacts facts = FactsOfExpression(expression);
    quick += facts.fStaysInLine || facts.fText.size() > 1;
    for (int text = 0; text < 20; ++text) {
      std::string bytes;
      for (size_t i = random() % 30; i > 0; --i) bytes += letters[random() % letters.size()];
      bytes += 'b';  // so that there is a last line
      bool expected = false;
      for (size_t begin = 0; begin <= bytes.size();) {
        const size_t end = std::min(bytes.find('\n', begin), bytes.size());
        expected = expected || alone.Matches(FromUtf8(bytes.substr(begin, end - begin)));
        begin = end + 1;
      }
      found += expected;
      ASSERT_EQ(IsFound(matcher, bytes), expected) << ToUtf8(expression) << " in [" << bytes << "]";
    }
  }
  EXPECT_GT(found, 10'000);
  EXPECT_GT(quick, 1000);
}

TEST(ContentMatcher, AHostileExpressionEnds) {
  TContentMatcher matcher({u"(a+)+$", true, true});
  std::string bytes;
  for (int line = 0; line < 1500; ++line) bytes += std::string(60, 'a') + "!\n";
  EXPECT_FALSE(IsFound(matcher, bytes));
  EXPECT_EQ(matcher.GivenUp(), PatternMatching::TRegularExpression::kMostGivenUp);
  // The same with one very long line.
  TContentMatcher slow({u"(?:a|b)*[ab]*[cd]", true, true});
  EXPECT_FALSE(IsFound(slow, std::string(200'000, 'a')));
}

TEST(ContentMatcher, RefusesWhatCannotBeLookedFor) {
  EXPECT_THROW(TContentMatcher({u"", false, false}), EInvalidArgumentValue);
  EXPECT_THROW(TContentMatcher({u"a(", true, false}), EInvalidArgumentValue);
}

}  // namespace Vantrel::Search

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "platform/text/WildcardMatch.h"
#include "tests/support/UpperCase.h"

// Our own matcher, which serves Linux, against the system's two calls. Wine's call strips the blanks that a mask begins
// with also when it is told not to; Windows' does not, and neither does ours. So a list of masks in which one begins
// with a blank is asked in a second form, in name and masks: a letter that occurs nowhere else instead of each blank.
// Such a letter is like the blank when blanks count, and nobody strips it.

namespace Vantrel {

namespace {

using Testing::Upcase;

constexpr char16_t kInsteadOfBlank = u'\u4E00';

bool OneBeginsWithBlank(std::u16string_view pMasks) {
  return pMasks.starts_with(u' ') || pMasks.find(u"; ") != std::u16string_view::npos;
}

std::u16string WithoutBlanks(std::u16string pText) {
  std::replace(pText.begin(), pText.end(), u' ', kInsteadOfBlank);
  return pText;
}

bool SystemMatches(const std::u16string& pName, const std::u16string& pMasks) {
  if (OneBeginsWithBlank(pMasks)) return MatchesWildcards(WithoutBlanks(pName), WithoutBlanks(pMasks));
  return MatchesWildcards(pName, pMasks);
}

struct TCounts {
  int fMatches = 0;
  int fDifferent = 0;  // matches of one of the two calls only
};

// False when ours and the system's differ.
bool Compare(const std::u16string& pName, const std::u16string& pMasks, TCounts& pCounts) {
  const bool matches = SystemMatches(pName, pMasks);
  const bool stripped = MatchesWildcardsStripped(pName, pMasks);
  pCounts.fMatches += matches;
  pCounts.fDifferent += matches != stripped;
  const std::u16string name = Upcase(pName);
  const std::u16string masks = Upcase(pMasks);
  return OwnWildcards::Matches(pName, pMasks) == matches && OwnWildcards::MatchesFolded(name, masks) == matches &&
         OwnWildcards::MatchesStripped(pName, pMasks) == stripped &&
         OwnWildcards::MatchesFoldedStripped(name, masks) == stripped;
}

}  // namespace

TEST(WildcardsOfTheSystem, HandPickedPairs) {
  constexpr std::u16string_view kTexts =
      u"| |  |   |a| a|a | a |a b|  a  b |.|..|a.|.a|a.b|a. b|A.B.C|a..b|*|?|**|*?*|?*?|*.|*.*| *.*|*.* "
      u"|*.*;|;*.*|*.*;a|"
      u"*. *|*.a|a.*|*.?|?.*|;|;;|; ;| ;|; |a;|;a|a;;b|a ;b|a; b| a ; b |a;b|*;|;*|a;*|b;?|* | *|* *|a\\b|C:\\a\\b.c|"
      u"C:\\*|*\\b.?|a/b|\t|\ta|a\t|\u00A0a|\u3000a|\u00E9|\u00C9|*\u00E9|\u00FF|\u0178|\u0131|\u0130|I|i|\u00B5|"
      u"\u039C|\u03BC|\u03C2|\u03C3|\u03A3|\u017F|\u00DF|\u1E9E|ss|\u01C4|\u01C5|\u01C6|\u0436.\u0416|\uFF41|\uFF21|"
      u"\u10D0|\u1C90|\u212A|k|\u00E5|\u212B|e\u0301|\xD83D\xDE00|\xD83D|??|\xDE00*|\xD801\xDC28|\xD801\xDC00|\u00AD|"
      u"a\u00ADb|a\u200Db|ab|{a}|[a]|a+b^c$|a?b*c.d|aaaaab|*a*a*b|*a?a*b?|*ab*ab|aXbabYab|a*b*|*.tar.gz|x.TAR.gz|<>\"";
  std::vector<std::u16string> texts(1);
  for (const char16_t unit : kTexts) {
    if (unit == u'|') {
      texts.emplace_back();
    } else {
      texts.back() += unit;
    }
  }
  TCounts counts;
  for (const std::u16string& name : texts)
    for (const std::u16string& masks : texts)
      EXPECT_TRUE(Compare(name, masks, counts)) << "[" << ToUtf8(name) << "] [" << ToUtf8(masks) << "]";
  EXPECT_GT(counts.fMatches, 500);
  EXPECT_GT(counts.fDifferent, 20);
}

TEST(WildcardsOfTheSystem, AMillionRandomPairs) {
  constexpr int kPairs = 1'000'000;
  const struct {
    std::u16string_view fName;
    std::u16string_view fMasks;
  } alphabets[] = {
      {u"ab", u"aB*?"},
      {u"aAb.c", u"ab.*?;*C"},
      {u"a .", u"a *.;"},
      {u" ;a", u"; A*?"},
      {u"a.b\\", u"a.*\\?:;"},
      {u"\u00E9\u00C9e\u0436\u03C3\u03C2 ", u"\u00C9E\u0416\u03A3*; ?"},
      {u"\u0131\u0130iI\u01C5", u"iI\u0131\u01C4*?*"},
      {u"a\xD801\xDC28\xDC00", u"\xD801\xDC00\xDC28*?;"},
  };
  std::mt19937 random(20'261'121);
  std::array<TCounts, std::size(alphabets)> counts;
  std::u16string name;
  std::u16string masks;
  const auto fill = [&random](std::u16string& pText, std::u16string_view pAlphabet, size_t pLonger) {
    pText.resize(random() % pLonger);
    for (char16_t& unit : pText) unit = pAlphabet[random() % pAlphabet.size()];
  };
  for (int i = 0; i < kPairs; ++i) {
    const size_t which = static_cast<size_t>(i) % std::size(alphabets);
    fill(name, alphabets[which].fName, 9);
    fill(masks, alphabets[which].fMasks, 11);
    ASSERT_TRUE(Compare(name, masks, counts[which])) << "[" << ToUtf8(name) << "] [" << ToUtf8(masks) << "]";
  }
  for (size_t which = 0; which < counts.size(); ++which) {
    EXPECT_GT(counts[which].fMatches, kPairs / 200) << which;
    EXPECT_LT(counts[which].fMatches, kPairs / 10) << which;  // of 125,000
    const bool hasBlanks = alphabets[which].fMasks.find(u' ') != std::u16string_view::npos;
    if (hasBlanks) {
      EXPECT_GT(counts[which].fDifferent, 100) << which;
    }
  }
}

// Every unit against the neighbours in code order and all that could be its other case.
TEST(WildcardsOfTheSystem, LetterCaseOfEveryUnit) {
  int sameLetters = 0;
  for (int code = 1; code < 0x10000; ++code) {
    const auto unit = static_cast<char16_t>(code);
    if (unit == u';' || unit == u'*' || unit == u'?') continue;
    const std::u16string name(1, unit);
    for (const int other : {code, code - 1, code + 1, code ^ 0x20, code - 0x10, code - 0x50, code - 8,
                            static_cast<int>(UpcaseUnit(unit))}) {
      if (other <= 0 || other >= 0x10000) continue;
      const std::u16string mask(1, static_cast<char16_t>(other));
      const bool matches = MatchesWildcardsStripped(name, mask);
      ASSERT_EQ(OwnWildcards::MatchesStripped(name, mask), matches) << code << " " << other;
      sameLetters += matches && other != code && other == UpcaseUnit(unit);
    }
  }
  EXPECT_GT(sameLetters, 1'000);
}

}  // namespace Vantrel

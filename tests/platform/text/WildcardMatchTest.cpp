// Masks against a slow definition of a match; on Windows, our own matcher against the system's calls on a million
// pairs.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "platform/text/WildcardMatch.h"
#include "tests/support/UpperCase.h"

namespace Vantrel {

namespace {

using Testing::Upcase;

// The definition of a match, word for word; exponential, so for short masks only.
bool Reference(std::u16string_view pName, std::u16string_view pMask) {
  if (pMask.empty()) return pName.empty();
  if (pMask[0] == u'*') {
    for (size_t skip = 0; skip <= pName.size(); ++skip)
      if (Reference(pName.substr(skip), pMask.substr(1))) return true;
    return false;
  }
  if (pName.empty() || (pMask[0] != u'?' && FoldAscii(pMask[0]) != FoldAscii(pName[0]))) return false;
  return Reference(pName.substr(1), pMask.substr(1));
}

bool ReferenceList(std::u16string_view pName, std::u16string pMasks, bool pStripped) {
  if (pMasks == u"*.*") return true;
  for (size_t end; !pMasks.empty(); pMasks.erase(0, end == std::u16string::npos ? end : end + 1)) {
    while (pStripped && pMasks[0] == u' ') pMasks.erase(0, 1);
    end = pMasks.find(u';');
    if (Reference(pName, std::u16string_view(pMasks).substr(0, end))) return true;
  }
  return false;
}

std::u16string RandomText(std::mt19937& pRandom, std::u16string_view pAlphabet, size_t pLonger) {
  std::u16string text(pRandom() % pLonger, u' ');
  for (char16_t& unit : text) unit = pAlphabet[pRandom() % pAlphabet.size()];
  return text;
}

}  // namespace

// Run on both systems, so that the systems' calls and our own matcher are held to one answer.
TEST(WildcardMatch, RandomPairsFollowTheDefinition) {
  std::mt19937 random(777);
  int matches = 0;
  for (int i = 0; i < 50'000; ++i) {
    const std::u16string name = RandomText(random, u"aAb.c ", 8);
    const std::u16string masks = RandomText(random, u"ab.*?;*C ", 9);
    SCOPED_TRACE(ToUtf8(name) + "|" + ToUtf8(masks));
    const bool stripped = ReferenceList(name, masks, true);
    ASSERT_EQ(MatchesWildcardsStripped(name, masks), stripped);
    ASSERT_EQ(OwnWildcards::MatchesStripped(name, masks), stripped);
    ASSERT_EQ(OwnWildcards::MatchesFoldedStripped(Upcase(name), Upcase(masks)), stripped);
    const bool expected = ReferenceList(name, masks, false);
    ASSERT_EQ(OwnWildcards::Matches(name, masks), expected);
    ASSERT_EQ(OwnWildcards::MatchesFolded(Upcase(name), Upcase(masks)), expected);
    // Where both definitions agree, a system that strips blanks although told not to, as Wine does, has no excuse.
    if (expected == stripped) {
      ASSERT_EQ(MatchesWildcards(name, masks), expected);
    }
    matches += expected;
  }
  EXPECT_GT(matches, 5'000);
}

// On Windows, texts that do not fit into the buffer for the system's call.
TEST(WildcardMatch, LongTexts) {
  for (const size_t length : {1022U, 1023U, 1024U, 1025U, 40'000U}) {
    const std::u16string name = std::u16string(length - 1, u'x') + u"Y";
    const std::u16string other = std::u16string(length - 1, u'x') + u"z";
    EXPECT_TRUE(MatchesWildcards(name, name));
    EXPECT_TRUE(MatchesWildcards(name, u"x*xy"));
    EXPECT_TRUE(MatchesWildcardsStripped(name, u"a; " + name));
    EXPECT_FALSE(MatchesWildcards(name, other));
    EXPECT_FALSE(MatchesWildcards(name, u"x*xz"));
    EXPECT_FALSE(MatchesWildcardsStripped(other, u" " + name));
  }
}

}  // namespace Vantrel

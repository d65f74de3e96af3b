#include <gtest/gtest.h>

#include <random>

#include "platform/Text.h"
#include "platform/WildcardMatch.h"

namespace Kiv {

namespace {

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

bool ReferenceList(std::u16string_view pName, std::u16string pMasks) {
  if (pMasks == u"*.*") return true;
  for (size_t end; !pMasks.empty(); pMasks.erase(0, end == std::u16string::npos ? end : end + 1)) {
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

// Run on both systems, so that the system's call and our own matcher are held to one answer.
TEST(WildcardMatch, RandomPairsFollowTheDefinition) {
  std::mt19937 random(777);
  int matches = 0;
  for (int i = 0; i < 50'000; ++i) {
    const std::u16string name = RandomText(random, u"aAb.c", 8);
    const std::u16string masks = RandomText(random, u"ab.*?;*C", 9);
    const bool expected = ReferenceList(name, masks);
    ASSERT_EQ(MatchesWildcards(name, masks), expected) << ToUtf8(name) << " " << ToUtf8(masks);
    matches += expected;
  }
  EXPECT_GT(matches, 5'000);
}

TEST(WildcardMatch, DotsSpacesAndLists) {
  EXPECT_TRUE(MatchesWildcards(u"noextension", u"*.*"));
  EXPECT_FALSE(MatchesWildcards(u"noextension", u"*.*;*.x"));
  EXPECT_FALSE(MatchesWildcards(u"noextension", u"*."));
  EXPECT_FALSE(MatchesWildcards(u"a", u"a ;b"));
  EXPECT_TRUE(MatchesWildcards(u"my file.JPG", u"*.png;* *.jpg"));
  EXPECT_FALSE(MatchesWildcards(u"a", u""));
  EXPECT_FALSE(MatchesWildcards(u"a", u";;"));
}

TEST(WildcardMatch, LettersThatAreOneLetter) {
  const struct {
    const char16_t* fA;
    const char16_t* fB;
    bool fSame;
  } pairs[] = {{u"\u00E9", u"\u00C9", true},  {u"\u00FF", u"\u0178", true},  {u"\u0436", u"\u0416", true},
               {u"\u00B5", u"\u039C", false}, {u"\u0131", u"I", false},      {u"\u017F", u"S", false},
               {u"\u03C2", u"\u03A3", false}, {u"\u00DF", u"\u1E9E", false}, {u"\u01C5", u"\u01C4", false}};
  for (const auto& pair : pairs) {
    EXPECT_EQ(MatchesWildcards(pair.fA, pair.fB), pair.fSame) << ToUtf8(pair.fA);
    EXPECT_EQ(MatchesWildcards(pair.fB, pair.fA), pair.fSame) << ToUtf8(pair.fA);
  }
}

}  // namespace Kiv

// Every shape of matcher against the general match.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "platform/text/Text.h"
#include "platform/text/WildcardMatch.h"
#include "search/patterns/WildcardMatcher.h"

namespace Vantrel::PatternMatching {

namespace {

using enum TWildcardShape;

struct TCounts {
  int fMatches = 0;
  int fMisses = 0;
};

// Wine strips the blanks that a mask begins with although it is told not to. Then another letter stands in for all
// blanks, which changes no answer where blanks count.
bool NeedsStandIn(std::u16string_view pMasks) {
  return pMasks.starts_with(u' ') || pMasks.find(u"; ") != std::u16string_view::npos;
}

std::u16string WithoutBlanks(std::u16string pText) {
  std::replace(pText.begin(), pText.end(), u' ', u'\u4E00');
  return pText;
}

// Matchers hold their own state, so each is asked about several names, and keeps one text for all.
class TComparison {
 public:
  void Compare(const std::u16string& pMasks, const std::vector<std::u16string>& pNames) {
    static const bool systemStrips = MatchesWildcards(u"a", u" a");
    auto matcher = CreateWildcardMatcher(pMasks);
    const bool general = matcher->Shape() == wsGeneral || matcher->Shape() == wsMixed;
    const bool standIn = NeedsStandIn(pMasks);
    // Fast shapes see the blanks themselves even then; matchers that ask the system cannot.
    const bool standInForMatcher = standIn && systemStrips && general;
    const std::u16string masks = standIn ? WithoutBlanks(pMasks) : pMasks;
    if (standInForMatcher) matcher = CreateWildcardMatcher(masks);
    const auto generalMatcher = CreateGeneralMatcher(masks);
    for (const std::u16string& name : pNames) {
      const std::u16string asked = standIn ? WithoutBlanks(name) : name;
      const bool expected = MatchesWildcards(asked, masks);
      fText.Set(standInForMatcher ? asked : name);
      ASSERT_EQ(matcher->Matches(fText), expected) << "[" << ToUtf8(name) << "] [" << ToUtf8(pMasks) << "]";
      fText.Set(asked);
      ASSERT_EQ(generalMatcher->Matches(fText), expected) << "[" << ToUtf8(name) << "] [" << ToUtf8(pMasks) << "]";
      TCounts& counts = fCounts[matcher->Shape()];
      ++(expected ? counts.fMatches : counts.fMisses);
    }
  }
  std::map<TWildcardShape, TCounts> fCounts;

 private:
  TMatchText fText;
};

// Masks of every shape, from few letters so that many match.
class TRandomMasks {
 public:
  explicit TRandomMasks(unsigned pSeed) : fRandom(pSeed) {}

  size_t Below(size_t pEnd) { return fRandom() % pEnd; }

  std::u16string Text(std::u16string_view pAlphabet, size_t pLongest) {
    std::u16string text(Below(pLongest + 1), u' ');
    for (char16_t& unit : text) unit = pAlphabet[Below(pAlphabet.size())];
    return text;
  }
  std::u16string Name() { return Text(Below(8) == 0 ? u"a\u00E9\u0416. *?;" : u"aAbB. ", 9); }
  std::u16string Part() { return Text(Below(8) == 0 ? u"aB\u00C9\u0436. " : u"aAb. ", 3); }

  std::u16string Mask() {
    switch (Below(8)) {
      case 0:
        return u"*" + Part() + u"*";
      case 1:
        return Part() + u"*";
      case 2:
        return u"*" + Part();
      case 3:
        return Part();
      case 4:
        return Part() + u"*" + Part();
      case 5:
        return Part() + u"**" + Part() + u"*" + Part();
      case 6:
        return Extension();
      default:
        return Text(u"aB.*?*", 7);
    }
  }
  std::u16string Masks() {
    const size_t count = Below(3) == 0 ? 1 + Below(6) : 1;
    const bool extensionsOnly = Below(2) == 0;
    std::u16string masks;
    for (size_t i = 0; i < count; ++i) {
      if (i > 0) masks += u';';
      masks += count > 1 && extensionsOnly ? Extension() : Mask();
    }
    if (Below(10) == 0) masks.insert(Below(masks.size() + 1), 1, u';');
    return masks;
  }

 private:
  std::u16string Extension() { return u"*." + Text(u"aAb ", 3); }

  std::mt19937 fRandom;
};

}  // namespace

TEST(WildcardMatcher, RandomPairsOfEveryShape) {
  TComparison comparison;
  TRandomMasks random(4'711);
  for (int i = 0; i < 50'000 && !testing::Test::HasFailure(); ++i) {
    std::vector<std::u16string> names;
    for (int name = 0; name < 8; ++name) names.push_back(random.Name());
    comparison.Compare(random.Masks(), names);
  }
  for (const TWildcardShape shape : {wsPlain, wsExtensions, wsMixed, wsGeneral}) {
    EXPECT_GT(comparison.fCounts[shape].fMatches, 1'000) << static_cast<int>(shape);
    EXPECT_GT(comparison.fCounts[shape].fMisses, 1'000) << static_cast<int>(shape);
  }
  EXPECT_GT(comparison.fCounts[wsAll].fMatches, 1'000);
  EXPECT_EQ(comparison.fCounts[wsAll].fMisses, 0);
}

TEST(WildcardMatcher, ShapesOfHandPickedMasks) {
  std::vector<std::u16string> names = {std::u16string(3'000, u'x') + u".jpg", u""};
  for (const char16_t unit : std::u16string_view(
           u"|a|ab|aa|aaa|.|..|a.|.jpg|x.JPG|x.jpg|x.jpeg|x.Tar.Gz|x.gz|tar.gz|x.tar.gzz|jpg|a.jpg.b|x.jpg |"
           u" x.jpg|cache-1|Cache|my cache.tmp|\u00E9t\u00E9|\u00C9T\u00C9.JPG|x;y|a*b|C:\\a.jpg\\b|/a/b.png|"
           u"b.png|readme|README.md|")) {
    if (unit == u'|')
      names.emplace_back();
    else
      names.back() += unit;
  }
  const struct {
    std::u16string fMasks;
    TWildcardShape fShape;
  } rows[] = {
      {u"*", wsAll},
      {u"***", wsAll},
      {u"*.*", wsAll},
      {u"a;*", wsAll},
      {u"*.*;*.x", wsMixed},
      {u"*.*;", wsPlain},
      {u"*cache*", wsPlain},
      {u"**CACHE**", wsPlain},
      {u"cache*", wsPlain},
      {u"*.jpg", wsPlain},
      {u"*.", wsPlain},
      {u"a*a", wsPlain},
      {u"a*a*a", wsPlain},
      {u"readme", wsPlain},
      {u" x.jpg", wsPlain},
      {u"*\u00C9*", wsPlain},
      {u";", wsPlain},
      {u"readme;", wsPlain},
      {u"*.jpg;*.png;*.jpeg;*.gz", wsExtensions},
      {u"*.jpg;*.png;*.;*.\u00E9;", wsExtensions},
      {u"*.jpg;*.png;*.jpeg;*.tar.gz?", wsMixed},
      {u"*.jpg;*.png;*.gif;*.bmp;*.tar.gz;cache*", wsMixed},
      {u"a;;b", wsMixed},
      {u"", wsGeneral},
      {u"?", wsGeneral},
      {u"*a*b*", wsGeneral},
      {u"?.jpg;*a*p*", wsGeneral},
  };
  TComparison comparison;
  for (const auto& row : rows) {
    comparison.Compare(row.fMasks, names);
    EXPECT_EQ(CreateWildcardMatcher(row.fMasks)->Shape(), row.fShape) << ToUtf8(row.fMasks);
  }
}

// Folding goes eight units at a time, so every length and every place of a letter beyond ASCII.
TEST(MatchText, FoldsEveryLengthAnewForEachText) {
  TMatchText text;
  for (size_t length = 40; length-- > 0;) {
    for (size_t place = 0; place <= length; ++place) {
      std::u16string lower(length, u'z');
      std::u16string upper(length, u'Z');
      for (size_t at = 0; at < length; at += 3) lower[at] = upper[at] = u"@[`{"[at % 4];
      if (place < length) lower[place] = u'\u0436', upper[place] = u'\u0416';
      text.Set(lower);
      ASSERT_EQ(text.Folded(), upper) << length << " " << place;
      ASSERT_EQ(text.Text(), lower);
    }
  }
}

}  // namespace Vantrel::PatternMatching

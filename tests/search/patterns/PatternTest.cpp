// Single patterns: text form, matching, folders on the way, targets; the older list.

#include <gtest/gtest.h>

#include <random>

#include "model/statistics/FileTypeGroups.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/FileGroupPattern.h"
#include "search/patterns/PatternTargets.h"
#include "search/patterns/PatternText.h"
#include "search/patterns/Patterns.h"
#include "search/patterns/RegExPattern.h"
#include "search/patterns/WildcardPattern.h"
#include "tests/support/Failures.h"

namespace Vantrel::PatternMatching {

namespace {

using Vantrel::Testing::MessageOf;

using enum TPatternType;

TRef<IPattern> Parse(std::u16string_view pText, char16_t pDelimiter = u'/') {
  return ParsePattern(pText, ptyInclude, pDelimiter);
}

}  // namespace

TEST(PatternText, PrefixesAndBodies) {
  constexpr auto kWildcard = TPatternClass::pcWildcard;
  constexpr auto kRegEx = TPatternClass::pcRegEx;
  constexpr auto kExact = TPatternClass::pcExact;
  const struct {
    const char16_t* fText;
    TPatternClass fClass;
    TPatternType fType;
    bool fActive;
    const char16_t* fPattern;
    TPatternTarget fTarget;
  } cases[] = {
      {u"<||(+)/^a.*/i", kRegEx, ptyInclude, false, u"^a.*", NameTarget()},
      {u"/i", kWildcard, ptyInclude, true, u"/i", FullPathTarget()},
      {u"/abc//i", kRegEx, ptyInclude, true, u"abc/", FullPathTarget()},
      {u"\t  <|| x  ", kWildcard, ptyInclude, false, u" x", NameTarget()},
      {u"(-)<||a", kWildcard, ptyExclude, true, u"<||a", NameTarget()},
      {u"\"/srv", kExact, ptyInclude, true, u"/srv", FullPathTarget()},
      {u"(Name)(Owner)x", kWildcard, ptyInclude, true, u"(Owner)x", NameTarget()},
      {u"(Percent)x", kWildcard, ptyInclude, true, u"(Percent)x", NameTarget()},
      {u"(PercentOfRoot)x", kWildcard, ptyInclude, true, u"(PercentOfRoot)x", NameTarget()},
  };
  for (const auto& expected : cases) {
    const TRef<IPattern> pattern = Parse(expected.fText);
    EXPECT_EQ(pattern->PatternClass(), expected.fClass) << ToUtf8(expected.fText);
    EXPECT_EQ(pattern->GetPatternType(), expected.fType) << ToUtf8(expected.fText);
    EXPECT_EQ(pattern->GetActive(), expected.fActive) << ToUtf8(expected.fText);
    EXPECT_EQ(ToUtf8(pattern->GetPattern()), ToUtf8(expected.fPattern)) << ToUtf8(expected.fText);
    EXPECT_EQ(pattern->GetTarget(), expected.fTarget) << ToUtf8(expected.fText);
  }
  EXPECT_EQ(Parse(u"a/b", u'\\')->GetTarget(), NameTarget()) << "the delimiter is the root's";
  EXPECT_EQ(Parse(u"a\\b", u'\\')->GetTarget(), FullPathTarget());
  for (const char16_t* empty : {u"", u"  ", u"(-)", u"<||", u"//", u"//i", u"\"\"", u"(Owner)", u"(Group)"})
    EXPECT_NE(MessageOf<EInvalidArgumentValue>([&] { Parse(empty); }).find("\"pPattern\""), std::string::npos)
        << ToUtf8(empty);
}

TEST(PatternText, ShowsHowATextIsMatched) {
  auto shown = [](const char16_t* pText, char16_t pDelimiter, const TPatternTarget& pTarget) {
    return ToUtf8(TWildcardPattern(pText, pTarget, ptyInclude, pDelimiter).ToString());
  };
  EXPECT_EQ(shown(u"foo", u'/', NameTarget()), "*foo*");
  EXPECT_EQ(shown(u"C:\\Data", u'\\', FullPathTarget()), "C:\\Data*");
  EXPECT_EQ(shown(u"/data", u'/', FullPathTarget()), "/data*");
  EXPECT_EQ(shown(u"/data", u'/', NameTarget()), "*/data*");
  EXPECT_EQ(shown(u"*.tmp", u'/', NameTarget()), "*.tmp");
  EXPECT_EQ(shown(u";foo", u'/', NameTarget()), ";foo*");
  EXPECT_EQ(shown(u"  ", u'/', NameTarget()), "*  *");
  EXPECT_EQ(ToUtf8(TRegExPattern(u"a", NameTarget(), ptyInclude, u'/', false).ToString()), "/a/i");
  EXPECT_EQ(ToUtf8(TExactPattern(u"a\"b", NameTarget(), ptyInclude, u'/').ToString()), "\"a\"\"b\"");

  EXPECT_EQ(ToUtf8(Parse(u"(-)*.tmp")->ToExpression()), "name:!=*.tmp");
  EXPECT_EQ(ToUtf8(Parse(u"\"a b\"")->ToExpression()), "name:=\"a b\"");
  EXPECT_EQ(ToUtf8(Parse(u"(Owner)/^r/i")->ToExpression()), "owner:~\"(?i)^r\"");
  EXPECT_EQ(ToUtf8(Parse(u"(Group)Audio")->ToExpression()), "filetype:Audio");
}

// What patterns match in scans is in pattern_test.py.
TEST(Pattern, MatchesStrings) {
  EXPECT_FALSE(Parse(u"/(/")->MatchesString(u"(")) << "does not compile";
  EXPECT_FALSE(Parse(u"(Group)Nonsense")->MatchesString(u"Nonsense"));
  EXPECT_TRUE(Parse(u"\"C:\\Data\"", u'\\')->MatchesString(u"C:\\Data\\"));

  EXPECT_TRUE(Parse(u"*")->MatchesAll());
  EXPECT_FALSE(Parse(u"**")->MatchesAll());
  EXPECT_FALSE(Parse(u"(-)*")->MatchesAll());
  EXPECT_EQ(ToUtf8(Parse(u"(Group)Nonsense")->GetErrorText()), "No file group found matching \"Nonsense\"");
  EXPECT_NE(Parse(u"/(/")->GetErrorText(), u"");
  EXPECT_EQ(Parse(u"/a/")->GetErrorText(), u"");
}

TEST(Pattern, TextsAreFilledInWhenTheyAreSet) {
#ifdef _WIN32
  _putenv_s("VANTREL_TEST_PART", "re*port");
#else
  setenv("VANTREL_TEST_PART", "re*port", 1);
#endif
  EXPECT_TRUE(Parse(u"x%VANTREL_TEST_PART%.*")->MatchesString(u"xre-port.txt"));
  EXPECT_FALSE(Parse(u"(FullPath)x%VANTREL_TEST_PART%.*")->MatchesString(u"xre-port.txt")) << "paths stay as typed";
  const std::u16string today = CurrentDateText();
  ASSERT_EQ(today.size(), 10u);
  EXPECT_TRUE(Parse(u"a%date%-%DATE%b")->MatchesString(u"a" + today + u"-" + today + u"b"));

  const TRef<IPattern> pattern = Parse(u"/^a/");
  EXPECT_TRUE(pattern->MatchesString(u"abc"));
  pattern->SetPattern(u"^b");
  EXPECT_FALSE(pattern->MatchesString(u"abc"));
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([&] { pattern->SetPattern(u""); }),
            "TCustomPattern.SetPattern: Empty patterns are not allowed!");
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([&] { pattern->Assign(*Parse(u"b")); }),
            "TCustomPattern.Assign: the patterns are of different classes");
}

TEST(Pattern, FoldersOnTheWayToAPath) {
  const struct {
    const char16_t* fPattern;
    const char16_t* fFolder;
    bool fReached;
  } windows[] = {
      {u"C:\\Data\\*\\Logs\\*.log", u"c:\\data\\X\\", true},
      {u"C:\\Data\\*\\Logs\\*.log", u"C:\\Other", false},
      {u"C:\\Data", u"C:\\DataX", true},  // "C:\Data*" takes it in
      {u"\"C:\\Data\\x\"", u"C:\\Data", true},
      {u"\"C:\\Data\\x\"", u"C:\\Data\\y", false},
      {u"Data\\x", u"C:\\Other", true},  // no whole path: could be anywhere
      {u"/^C:.Data/", u"C:\\Other", true},
      {u"C:\\a\\*;D:\\b\\*", u"D:\\b", true},
      {u"C:\\Da?a\\x*y.log", u"C:\\Data\\x1\\sub", true},  // "*" crosses folders
      {u"C:\\Da?a\\x.log", u"C:\\Data\\sub", false},
  };
  for (const auto& expected : windows)
    EXPECT_EQ(Parse(expected.fPattern, u'\\')->FullPathCanBeReached(expected.fFolder), expected.fReached)
        << ToUtf8(expected.fPattern) << " " << ToUtf8(expected.fFolder);
}

// Whatever a mask matches must be reachable through every folder on the way: tried with random masks and paths, where
// the masks' own matcher says what they match.
TEST(Pattern, NothingThatMatchesIsOutOfReach) {
  std::mt19937 random(4242);
  int matches = 0;
  for (int i = 0; i < 200'000; ++i) {
    std::u16string mask = u"/";
    std::u16string path = u"/";
    for (size_t length = random() % 8; length > 0; --length) mask += u"ab/*?/;"[random() % 7];
    for (size_t length = 1 + random() % 7; length > 0; --length) path += u"abAB/"[random() % 5];
    TWildcardPattern pattern(mask, FullPathTarget(), ptyInclude, u'/');
    if (path.find(u"//") != std::u16string::npos || path.ends_with(u'/') || !pattern.MatchesString(path)) continue;
    ++matches;
    for (size_t at = path.rfind(u'/'); at > 0; at = path.rfind(u'/', at - 1))
      ASSERT_TRUE(pattern.FullPathCanBeReached(path.substr(0, at))) << ToUtf8(mask) << " " << ToUtf8(path);
  }
  EXPECT_GT(matches, 2'000);
}

TEST(PatternTargets, FormatIdentifiers) {
  TPatternTarget parsed;
  EXPECT_TRUE(TryParseFormatId(u"{de632de0-4253-4bab-85c4-ca3be18aa0f6}", parsed.fFormatId));
  EXPECT_EQ(parsed.fFormatId, FullPathTarget().fFormatId);
  for (const char16_t* wrong : {u"", u"DE632DE0-4253-4BAB-85C4-CA3BE18AA0F6", u"{DE632DE0-4253-4BAB-85C4CA3BE18AA0-F6}",
                                u"{GE632DE0-4253-4BAB-85C4-CA3BE18AA0F6}"})
    EXPECT_FALSE(TryParseFormatId(wrong, parsed.fFormatId)) << ToUtf8(wrong);
  EXPECT_EQ(MessageOf<EInvalidArgumentValue>([] { TargetOfColumn(TColumn::mdPercentOfRoot); }),
            "Given TMetaData cannot be converted to TPatternTarget");
}

TEST(OlderPatterns, UncheckedMasksDoNotCount) {
  TPatterns patterns;
  patterns.AssignFromString(u"*.txt\t<||*.doc\t\tread me*");
  EXPECT_EQ(patterns.ToString(), u"*.txt\t<||*.doc\tread me*");
  EXPECT_TRUE(patterns.Matches(u"a.TXT"));
  EXPECT_FALSE(patterns.Matches(u"a.doc"));
  EXPECT_EQ(patterns.GetMatchingPattern(u"Read me.first"), u"read me*");
  EXPECT_EQ(patterns.GetMatchingPattern(u"a.doc"), u"");
  TPatterns checked;
  checked.AssignWithoutUnchecked(patterns);
  EXPECT_EQ(checked.ToString(), u"*.txt\tread me*");
  EXPECT_TRUE(checked.Matches(u"a.txt"));
  checked.AssignFromString(u" *.jpg");
  EXPECT_TRUE(checked.Matches(u"a.jpg")) << "a blank in front of a mask counts";
  EXPECT_EQ(checked.GetMatchingPattern(u"a.jpg"), u" *.jpg");
  patterns.AssignFromString(u"");
  EXPECT_FALSE(patterns.Matches(u"a"));
  patterns.SetMatchAll(true);
  EXPECT_TRUE(patterns.Matches(u"a"));
}

}  // namespace Vantrel::PatternMatching

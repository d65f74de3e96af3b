// What each condition matches, and what it asks of a file.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "model/statistics/TopSizeList.h"
#include "platform/text/Utf.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/PatternTargets.h"
#include "search/query/AdaptedExpression.h"
#include "search/query/SearchItem.h"
#include "search/query/TextTest.h"
#include "tests/search/query/QueryText.h"
#include "tests/support/FakeTree.h"

namespace Vantrel::Search {

namespace {

constexpr int64_t kMega = 1 << 20;

TKivFileTime Date(std::string_view pIso) {
  TKivFileTime time;
  EXPECT_TRUE(TryParseIso(pIso, time)) << pIso;
  return time;
}

// Answers by name, and notes what was asked.
class TFakeFacts : public IFileFacts {
 public:
  bool ContentsMatch(TSearchItem& pItem, const TContentSearch& pSearch) override {
    fAsked += "c";
    return fContents[std::u16string(pItem.NameText())].find(pSearch.fText) != std::u16string::npos;
  }
  TMetaDataValue GetProperty(TSearchItem& pItem, TFileProperty pProperty) override {
    fAsked += "p";
    const auto found = fProperties.find({std::u16string(pItem.NameText()), pProperty});
    return found == fProperties.end() ? TMetaDataValue() : found->second;
  }
  bool IsInvalidShortcut(TSearchItem& pItem) override { return pItem.NameText() == u"dead.lnk"; }
  bool IsEmptyFolder(TSearchItem& pItem) override { return pItem.IsFolder(); }
  std::u16string GetOwner(TSearchItem& pItem) override { return pItem.NameText() == u"b.TXT" ? u"asked" : u""; }

  std::string fAsked;
  std::map<std::u16string, std::u16string> fContents;
  std::map<std::pair<std::u16string, TFileProperty>, TMetaDataValue> fProperties;
};

struct TFile {
  const char16_t* fFolder;
  TTopSizeEntry fEntry;
};

TFile File(const char16_t* pFolder, const char16_t* pName, int64_t pSize, TKivFileTime pModified = {},
           TAttributes pAttributes = 0, const char16_t* pOwner = nullptr) {
  TFile file{pFolder, {}};
  file.fEntry.fName = pName;
  file.fEntry.fSize = pSize;
  file.fEntry.fAllocated = pSize + 1;
  file.fEntry.fLastChangeDate = pModified;
  file.fEntry.fAttributes = pAttributes;
  file.fEntry.fOwnerKey = pOwner ? InternKey(pOwner) : kNoKey;
  return file;
}

class Condition : public testing::Test {
 protected:
  Condition() {
    fFacts.fContents[u"a.txt"] = u"hello";
    fFacts.fProperties[{u"c.tar.gz", TFileProperty::fpKeywords}] = u"holiday; Family";
    fFacts.fProperties[{u"a.txt", TFileProperty::fpPages}] = int64_t{12};
    fFacts.fProperties[{u"a.txt", TFileProperty::fpTitle}] = u"Annual report";
    fFacts.fProperties[{u"song.mp3", TFileProperty::fpDateTaken}] = Date("2024-05-01T12:00:00Z");
  }

  // The names of the matching files, in order, and of the folder.
  std::string Found(std::u16string_view pQuery, const TQuerySettings& pSettings = TestSettings()) {
    const TAdaptedExpression adapted = AdaptExpression(ParseQuery(pQuery, pSettings), kAllSearchAbilities);
    std::string found;
    TSearchItem item(u'/', &fFacts);
    for (const TFile& file : fFiles) {
      item.SetFolder(file.fFolder, std::u16string_view(file.fFolder) == u"/data" ? 1 : 2);
      item.SetEntry(TEntryView(file.fEntry));
      if (adapted.Matches(item)) found += ToUtf8(file.fEntry.fName) + " ";
    }
    item.SetFolder(u"/data", 1);
    item.SetEntry(TEntryView(*fFolder));
    if (adapted.Matches(item)) found += "sub/ ";
    return found;
  }

  const TRef<Testing::TFakeFolder> fFolder = MakeRef<Testing::TFakeFolder>(u"sub", TSizeValues{});
  TFakeFacts fFacts;
  const std::vector<TFile> fFiles = {
      File(u"/data", u"a.txt", 10, Date("2024-05-01T12:00:00Z"), kAttributeHidden | kAttributeReadOnly, u"root"),
      File(u"/data", u"b.TXT", 5 * kMega, Date("2023-12-31T12:00:00Z"), kAttributeHidden),
      File(u"/data/sub", u"c.tar.gz", 10 * kMega, Date("2024-06-14T12:00:00Z")),
      File(u"/data/sub", u"song.mp3", 0, {}, kAttributeReparsePoint, u"Anna"),
      File(u"/data/sub2", u"Caf\xE9", 7, Date("2024-06-15T12:00:00Z")),
      File(u"/data/sub2", u"dead.lnk", 1, Date("2030-01-01T00:00:00Z")),
  };
};

struct TFinding {
  const char16_t* fQuery;
  const char* fFound;
};

}  // namespace

TEST_F(Condition, FindsWhatItSays) {
  const TFinding findings[] = {
      {u"", "a.txt b.TXT c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk sub/ "},
      {u"TXT", "a.txt b.TXT "},
      {u"name:!=*.txt", "c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk sub/ "},
      {u"a*t", "a.txt "},
      {u"*.t??", "a.txt b.TXT "},
      {u"=A.TXT", "a.txt "},
      {u"~TXT$", "b.TXT "},
      {u"name:~\"(?i)^[ab]\\.txt$\"", "a.txt b.TXT "},
      {u"CAF\xC9", "Caf\xC3\xA9 "},
      {u"ext:txt,MP3", "a.txt b.TXT song.mp3 "},
      {u".tar.gz", "c.tar.gz "},
      {u"ext:.", "Caf\xC3\xA9 sub/ "},
      {u"audio", "song.mp3 "},
      {u"filetype:\"Miscellaneous Files\"", "Caf\xC3\xA9 "},
      {u"filetype:!=text", "c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk sub/ "},
      {u"path:sub", "c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk "},
      {u"path:=SUB", "c.tar.gz song.mp3 "},
      {u"path:/data/sub/", "c.tar.gz song.mp3 "},
      {u"path:/data/sub", "c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk "},
      {u"path:=/data/sub", "c.tar.gz song.mp3 "},
      {u"sub/so", "song.mp3 "},
      {u"/data/?.txt", "a.txt b.TXT "},
      {u"size:5", "b.TXT "},
      {u"size:=5-10", "b.TXT c.tar.gz "},
      {u"size:<8B", "song.mp3 Caf\xC3\xA9 dead.lnk "},
      {u"size:!=0B", "a.txt b.TXT c.tar.gz Caf\xC3\xA9 dead.lnk "},
      {u"allocated:=8B", "Caf\xC3\xA9 "},
      {u"modified:2024", "a.txt c.tar.gz Caf\xC3\xA9 "},
      {u"modified:<2024", "b.TXT "},
      {u"modified:!=2024", "b.TXT dead.lnk "},
      {u"modified:<2days", "c.tar.gz Caf\xC3\xA9 dead.lnk "},
      {u"modified:2 days", "c.tar.gz Caf\xC3\xA9 "},
      {u"modified:>=2days", "a.txt b.TXT "},
      {u"attribute:h", "a.txt b.TXT "},
      {u"attribute:hr", "a.txt "},
      {u"attribute:!=hr", "b.TXT c.tar.gz song.mp3 Caf\xC3\xA9 dead.lnk sub/ "},
      {u"attribute:l,d", "song.mp3 sub/ "},
      {u"owner:ROOT", "a.txt "},
      {u"owner:=ann*", "song.mp3 "},
      {u"owner:asked", "b.TXT "},
      {u"owner:=\"\"", "c.tar.gz Caf\xC3\xA9 dead.lnk sub/ "},
      {u"keyword:=family", "c.tar.gz "},
      {u"keyword:!=family", "a.txt b.TXT song.mp3 Caf\xC3\xA9 dead.lnk sub/ "},
      {u"mdata:title:REPORT", "a.txt "},
      {u"mdata:pages:10-12", "a.txt "},
      {u"mdata:pages:!=12", ""},
      {u"datetaken:2024-05-01", "song.mp3 "},
      {u"content:hell", "a.txt "},
      {u"content:!=hell size:<8B", "song.mp3 Caf\xC3\xA9 dead.lnk "},
      {u"mdata:brokenlink:yes", "dead.lnk "},
      {u"mdata:emptyfolder:yes", "sub/ "},
      {u"mdata:depth:1", "a.txt b.TXT sub/ "},
      {u"mdata:depth:>1 ext:gz", "c.tar.gz "},
      {u"mdata:pathlength:<=11", "a.txt b.TXT sub/ "},
      {u"(ext:gz OR size:0B) (owner:anna OR tar)", "c.tar.gz song.mp3 "},
  };
  for (const TFinding& finding : findings) EXPECT_EQ(Found(finding.fQuery), finding.fFound) << ToUtf8(finding.fQuery);
}

TEST_F(Condition, UnicodeFormsOnAndOff) {
  TQuerySettings settings = TestSettings();
  EXPECT_EQ(Found(u"cafe\x301", settings), "");
  settings.fNormalizesUnicode = true;
  EXPECT_EQ(Found(u"cafe\x301", settings), "Caf\xC3\xA9 ");
  EXPECT_EQ(Found(u"caf\xE9", settings), "Caf\xC3\xA9 ");
  EXPECT_EQ(Found(u"*\xE9", settings), "Caf\xC3\xA9 ");
}

TEST_F(Condition, CheapOnesComeFirstAndTheRestIsNotAsked) {
  EXPECT_EQ(Found(u"content:hello mdata:title:x name:a.txt"), "");
  EXPECT_EQ(fFacts.fAsked, "p") << "only of a.txt, and not its contents";
  fFacts.fAsked.clear();
  EXPECT_EQ(Found(u"content:x OR (name:b OR size:<6MB)"), "a.txt b.TXT song.mp3 Caf\xC3\xA9 dead.lnk sub/ ");
  EXPECT_EQ(fFacts.fAsked, "c") << "only of c.tar.gz";
}

TEST_F(Condition, AHostileExpressionEndsWithOneWarning) {
  const TAdaptedExpression adapted = AdaptExpression(ParseQuery(u"name:~\"^(a+)+$\""), 0);
  TTopSizeEntry file;
  file.fName = std::u16string(200, u'a') + u"b";
  TSearchItem item(u'/');
  item.SetEntry(TEntryView(file));
  EXPECT_FALSE(adapted.Matches(item));
  EXPECT_FALSE(adapted.Matches(item));
  ASSERT_EQ(adapted.Warnings().size(), 1u);
  EXPECT_EQ(adapted.Warnings()[0], u"/^(a+)+$/ takes too many steps on 2 texts, which count as not matching");
}

// A pattern of a scan, written as a query, finds what the pattern matches.
TEST_F(Condition, PatternsAsQueries) {
  const char16_t* patterns[] = {
      u"*.txt;*.mp3",   u"a",          u"\"a.txt\"",        u"/^[ac]/",           u"/TXT$/i",
      u"(FullPath)sub", u"/data/sub/", u"(ParentPath)sub2", u"(Extension)\"gz\"", u"(Group)Audio",
      u"c;x b;=a",      u"\"?.txt\"",  u"\"c.tar.gz\""};
  for (const char16_t* text : patterns) {
    for (const auto type : {PatternMatching::TPatternType::ptyInclude, PatternMatching::TPatternType::ptyExclude}) {
      const auto pattern = PatternMatching::TPatternList(u'/').Add(text, type);
      std::string matching;
      PatternMatching::TPatternItem item(u'/');
      for (const TFile& file : fFiles) {
        const auto* column = PatternMatching::ColumnOfTarget(pattern->GetTarget());
        const std::u16string folder = file.fFolder;
        TTopSizeEntry entry = file.fEntry;
        item.SetObject(TEntryView(entry));
        bool matches = pattern->Matches(item);
        if (column->fColumn == TColumn::mdFullPath) matches = pattern->MatchesString(folder + u'/' + entry.fName);
        if (column->fColumn == TColumn::mdParentPath) matches = pattern->MatchesString(folder);
        if (matches == (type == PatternMatching::TPatternType::ptyInclude)) matching += ToUtf8(entry.fName) + " ";
      }
      std::string found = Found(pattern->ToExpression());
      if (const size_t folder = found.find("sub/ "); folder != std::string::npos) found.erase(folder);
      EXPECT_EQ(found, matching) << ToUtf8(pattern->ToExpression());
    }
  }
}

// The quick comparison must never differ from that of folded texts.
TEST(TextTest, PlainComparisonsAnswerLikeFoldedOnes) {
  for (uint32_t unit = 0x80; unit < 0x10000; ++unit)
    ASSERT_GE(UpcaseUnit(static_cast<char16_t>(unit)), 0x80) << "a letter beyond ASCII folds to ASCII: " << unit;
  std::mt19937 random(5);
  const auto text = [&](size_t pMost, std::u16string_view pUnits) {
    std::u16string result;
    for (size_t count = random() % (pMost + 1); count > 0; --count) result += pUnits[random() % pUnits.size()];
    return result;
  };
  int matches = 0;
  for (int run = 0; run < 100'000; ++run) {
    const auto comparison = static_cast<TStringOperator>(random() % 12);
    const bool isMask = comparison == TStringOperator::Matches || comparison == TStringOperator::NotMatches;
    const TTextTest test(comparison, text(4, isMask ? u"aB.**@`" : u"aB.@`\x1F"));
    const std::u16string name = text(12, u"AbaB.@`\x1F\xE9\x212A\x161");
    if (!test.IsPlain()) continue;
    ASSERT_EQ(test.MatchesPlain(name), test.Matches(name)) << ToUtf8(test.Value()) << " in " << ToUtf8(name);
    const PatternMatching::TUnitSet units = PatternMatching::TMatchText(name).Units();
    ASSERT_EQ(test.MatchesPlain(name, units), test.Matches(name)) << ToUtf8(test.Value()) << " in " << ToUtf8(name);
    matches += test.MatchesPlain(name) != IsNegated(comparison);
  }
  EXPECT_GT(matches, 10'000);
}

TEST(TextTest, OptionsAndSemicolons) {
  const auto caseSensitive = static_cast<TStringOperatorOptions>(TStringOperatorOption::CaseSensitive);
  const auto wholeWord = static_cast<TStringOperatorOptions>(TStringOperatorOption::WholeWord);
  EXPECT_FALSE(TTextTest(TStringOperator::Contains, u"AB", caseSensitive).Matches(u"ab"));
  EXPECT_TRUE(TTextTest(TStringOperator::Contains, u"ab", caseSensitive).Matches(u"xab"));
  EXPECT_TRUE(TTextTest(TStringOperator::Contains, u"AB", wholeWord).Matches(u"xab ab.c"));
  EXPECT_FALSE(TTextTest(TStringOperator::Contains, u"ab", wholeWord)
                   .Matches(u"xab ab_ ab1 \xE9"
                            u"ab"));
  EXPECT_TRUE(TTextTest(TStringOperator::Matches, u"a;b*").Matches(u"A;bc"));
  EXPECT_FALSE(TTextTest(TStringOperator::Matches, u"a;b*").Matches(u"a"));
}

}  // namespace Vantrel::Search

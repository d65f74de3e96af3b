// Lists: reading back, order, matching while others change them, the filtering enumerator.

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/FileFilterEnumerator.h"
#include "search/patterns/FileGroupPattern.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/PatternTargets.h"
#include "search/patterns/PatternText.h"
#include "search/patterns/RegExPattern.h"
#include "search/patterns/WildcardPattern.h"
#include "tests/support/Failures.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::PatternMatching {

namespace {

using enum TPatternType;

TRef<TPatternList> ListOf(std::initializer_list<const char16_t*> pPatterns) {
  auto list = MakeRef<TPatternList>(u'/');
  for (const char16_t* pattern : pPatterns) list->Add(pattern, ptyInclude);
  return list;
}

std::u16string Shown(const IPatterns& pList) {
  auto options = TPatternsToStringRepresentationOptions::Default();
  options.Delimiter = u" | ";
  return pList.ToString(options);
}

// Takes elements as an XML file would keep them.
struct TElements : IElementWriter {
  std::vector<std::pair<std::u16string, TElementAttributes>> fElements;
  int fOpen = 0;
  void BeginElement(std::u16string_view pName, const TElementAttributes& pAttributes) override {
    fElements.emplace_back(pName, pAttributes);
    ++fOpen;
  }
  void EndElement() override { --fOpen; }
};

TRef<TPatternList> ThroughElements(const TPatternList& pList) {
  TElements elements;
  pList.WriteToXML(elements);
  EXPECT_EQ(elements.fOpen, 0);
  EXPECT_EQ(elements.fElements.at(0).first, u"TPatternList");
  auto read = MakeRef<TPatternList>(pList.GetPathDelimiter());
  read->ReadProperties(elements.fElements[0].second);
  for (size_t i = 1; i < elements.fElements.size(); ++i) {
    EXPECT_EQ(elements.fElements[i].first, u"Pattern");
    read->ReadFromXML(elements.fElements[i].second);
  }
  return read;
}

// Any pattern that can be typed, with all that makes reading it back hard: prefixes, quotes, slashes, blanks, columns.
TRef<IPattern> RandomPattern(std::mt19937& pRandom, char16_t pDelimiter) {
  static const std::u16string_view kPieces[] = {u"a",       u"*",  u"?",      u";",      u" ",  u".",
                                                u"\"",      u"/",  u"\\",     u"(+)",    u"()", u"<||",
                                                u"(Owner)", u"/i", u"%DATE%", u"\u00E4", u"C:"};
  std::u16string text;
  for (size_t pieces = 1 + pRandom() % 5; pieces > 0; --pieces) text += kPieces[pRandom() % std::size(kPieces)];
  static const TPatternTarget kTargets[] = {NameTarget(), FullPathTarget(), TargetOfColumn(TColumn::mdOwner),
                                            TargetOfColumn(TColumn::mdExtension)};
  const TPatternTarget target = kTargets[pRandom() % std::size(kTargets)];
  const TPatternType type = pRandom() % 2 == 0 ? ptyInclude : ptyExclude;
  TRef<IPattern> pattern;
  switch (pRandom() % 4) {
    case 0:
      // A mask in quotes reads as an exact text; there is no way to write it when it asks for names without a dot.
      if (text.starts_with(u'"')) text.insert(0, u"x");
      pattern = MakeRef<TWildcardPattern>(text, target, type, pDelimiter);
      break;
    case 1:
      pattern = MakeRef<TRegExPattern>(text, target, type, pDelimiter, pRandom() % 2 == 0);
      break;
    case 2:
      pattern = MakeRef<TExactPattern>(text, target, type, pDelimiter);
      break;
    default:
      pattern = MakeRef<TFileGroupPattern>(u"Audio", type, pDelimiter);
  }
  pattern->SetActive(pRandom() % 3 != 0);
  return pattern;
}

}  // namespace

TEST(PatternList, RandomListsReadBackEqual) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 20'000; ++round) {
    auto list = MakeRef<TPatternList>(round % 2 == 0 ? u'/' : u'\\');
    for (size_t count = 1 + random() % 4; count > 0; --count)
      list->Add(RandomPattern(random, list->GetPathDelimiter()));
    list->SetEmptyPatternListMatchesAll(random() % 2 == 0);
    ASSERT_TRUE(ThroughElements(*list)->Equal(*list)) << ToUtf8(Shown(*list));

    // Line breaks keep the patterns apart, as they do in files.
    auto options = TPatternsToStringRepresentationOptions::Default();
    options.Delimiter = u"\n";
    const std::u16string text = list->ToString(options);
    auto read = MakeRef<TPatternList>(list->GetPathDelimiter());
    read->SetEmptyPatternListMatchesAll(list->GetEmptyPatternListMatchesAll());
    for (std::u16string_view rest = text; !rest.empty();) {
      const size_t end = std::min(rest.find(u'\n'), rest.size());
      read->Add(rest.substr(0, end), ptyInclude);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    ASSERT_TRUE(read->Equal(*list)) << ToUtf8(text) << "\nread back as\n" << ToUtf8(Shown(*read));
  }
}

TEST(PatternList, TextFollowsTheOptions) {
  const auto list = ListOf({u"*.c", u"(-)*.o", u"<||(-)/^x/", u"(Owner)root"});
  TPatternsToStringRepresentationOptions options;
  options.Delimiter = u",";
  EXPECT_EQ(list->ToString(options), u"(+)*.c,(-)*.o,(-)/^x/,(+)(Owner)*root*");
  options.AddUncheckedPrefixForInactivePatterns = true;
  options.IncludedPatternTypes = {ptyExclude};
  EXPECT_EQ(list->ToString(options), u"*.o,<||/^x/");
  options.ActivePatternsOnly = true;
  EXPECT_EQ(list->ToString(options), u"*.o");
  options.IncludedPatternTypes = {ptyInclude, ptyExclude};
  options.IncludedPatternTargets = {TargetOfColumn(TColumn::mdOwner)};
  EXPECT_EQ(list->ToString(options), u"(+)(Owner)*root*");
  EXPECT_EQ(MakeRef<TPatternList>(u'/')->ToString(options), u"");
}

TEST(PatternList, RefusesWhatItCannotRead) {
  auto list = MakeRef<TPatternList>(u'/');
  auto messageOf = [&](const TElementAttributes& pAttributes) {
    return Vantrel::Testing::MessageOf<EInvalidArgumentValue>([&] { list->ReadFromXML(pAttributes); });
  };
  TElementAttributes attributes = ListOf({u"*.c"})->GetItem(0)->WriteToXML();
  EXPECT_EQ(attributes[0].second, u"TWildcardPattern");
  attributes[0].second = u"TOther";
  EXPECT_EQ(messageOf(attributes), "Class \"TOther\" is no knonw class derived by TCustomPattern.");
  attributes[0].second = u"TExactPattern";
  attributes[1].second = u"";
  EXPECT_EQ(messageOf(attributes), "Empty patterns are not allowed!");
  attributes[1].second = u"a";
  attributes[3].second = u"{}";
  EXPECT_EQ(messageOf(attributes), "The pattern \"a\" names no column to look at");
  EXPECT_EQ(list->Count(), 0);
  EXPECT_THROW(list->AddStrings({u"a", u"(-)"}, ptyInclude), EInvalidArgumentValue);
  EXPECT_EQ(list->Count(), 0) << "not even the good one";
  EXPECT_THROW(list->GetItem(0), EInvalidArgumentValue);
}

TEST(PatternList, CheapPatternsComeFirst) {
  const auto list = ListOf({u"(-)(Owner)a", u"/r/", u"(-)b", u"\"c\"", u"d", u"e", u"/x*"});
  list->SetAutoSort(true);
  // Costs: 50+4+6, 10+6+2, 10+4+6, 10+2+2, 10+4+2 twice, 20+4+2.
  EXPECT_EQ(Shown(*list), u"(+)\"c\" | (+)*d* | (+)*e* | (+)/r/ | (-)*b* | (+)/x* | (-)(Owner)*a*");
  list->Add(u"\"f\"", ptyInclude);
  EXPECT_EQ(list->GetItem(1)->GetPattern(), u"f");
}

TEST(PatternList, ActivateTellsOnce) {
  struct TObserver : TInterfaced<IPatternsObserver> {
    int fCalls = 0;
    void PatternsChanged(IPatterns&) override { ++fCalls; }
  };
  auto observer = MakeRef<TObserver>();
  const auto list = ListOf({u"a", u"b", u"(-)c", u"(Owner)d"});
  list->Subscribe(observer);
  list->Activate({NameTarget()}, {ptyInclude}, false);
  EXPECT_EQ(Shown(*list), u"<||(+)*a* | <||(+)*b* | (-)*c* | (+)(Owner)*d*");
  EXPECT_EQ(observer->fCalls, 1);
  list->Activate({FullPathTarget()}, {ptyInclude, ptyExclude}, false);
  EXPECT_EQ(observer->fCalls, 1) << "none was touched";
  EXPECT_EQ(list->Count(true, {}), 2);
  EXPECT_EQ(list->Count(true, {ptyInclude}), 1);
  EXPECT_EQ(list->Clone()->IndexOf(*ParsePattern(u"(-)*c*", ptyInclude, u'/')), 2) << "matches like \"c\"";
}

TEST(PatternList, MatchesAndStopsWalks) {
  auto storage = Testing::TMemoryStorage::Create(u"/m");
  storage->Top().AddFolder(u"Sub");
  storage->Top().AddFile(u"a.tmp", 1);
  TPatternItem item(u'/');
  const auto enumerator = storage->CreateEnumerator();
  item.SetFolder(u"/m");
  auto stand = [&] {
    EXPECT_TRUE(enumerator->Next());
    item.SetEntry(*enumerator);
  };
  stand();  // on the folder
  EXPECT_FALSE(ListOf({})->StopTraversing(item));
  EXPECT_FALSE(ListOf({u"*.jpg"})->StopTraversing(item)) << "what is to be found may lie beneath";
  EXPECT_TRUE(ListOf({u"*.jpg", u"(-)sub"})->StopTraversing(item));
  EXPECT_FALSE(ListOf({u"<||(-)sub"})->StopTraversing(item));
  EXPECT_TRUE(ListOf({u"*.jpg", u"/m/other/*"})->StopTraversing(item));
  EXPECT_FALSE(ListOf({u"/m/other/*", u"/m/s*"})->StopTraversing(item));
  stand();  // on the file
  EXPECT_TRUE(ListOf({})->StopTraversing(item));
  const auto list = ListOf({u"<||a*", u"(-)*.tmp", u"/a/"});
  EXPECT_TRUE(list->Matches(item, ptyInclude));
  EXPECT_TRUE(list->Matches(item, ptyExclude));
  EXPECT_EQ(list->GetMatchingPattern(item)->GetPattern(), u"*.tmp");
  EXPECT_FALSE(ListOf({u"<||*"})->Matches(item, ptyInclude));
  EXPECT_TRUE(ListOf({u"b", u"*"})->MatchesAll());
  EXPECT_FALSE(ListOf({u"*", u"(-)b"})->MatchesAll());
  EXPECT_FALSE(ListOf({u"*"})->Matches(item, ptyExclude)) << "all is let in, so nothing is kept out";
  const auto empty = ListOf({});
  EXPECT_FALSE(empty->MatchesAll());
  empty->SetEmptyPatternListMatchesAll(true);
  EXPECT_TRUE(empty->Matches(item, ptyInclude));
}

TEST(PatternList, ChangesWhileOthersRead) {
  const auto list = ListOf({u"*.c", u"(-)/o$/"});
  std::atomic<bool> stop{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      auto storage = Testing::TMemoryStorage::Create(u"/m");
      storage->Top().AddFile(u"a.c", 1);
      const auto entry = storage->CreateEnumerator();
      entry->Next();
      TPatternItem item(u'/');
      item.SetFolder(u"/m");
      item.SetEntry(*entry);
      while (!stop) {
        EXPECT_TRUE(list->Matches(item, ptyInclude));
        EXPECT_FALSE(list->Matches(item, ptyExclude));
      }
    });
  }
  for (int i = 0; i < 500; ++i) {
    const TRef<IPattern> added = list->Add(u"(-)x*", ptyInclude);
    list->SetAutoSort(i % 2 == 0);
    list->Remove(*added);
  }
  stop = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(list->Count(), 2);
}

TEST(FileFilterEnumerator, PassesOnWhatTheListLetsIn) {
  auto storage = Testing::TMemoryStorage::Create(u"/m");
  storage->Folder(u"keep/deep").AddFile(u"1.jpg", 1);
  storage->Folder(u"keep/deep").AddFile(u"1.tmp", 1);
  storage->Folder(u"cache-1").AddFile(u"2.jpg", 1);
  storage->Folder(u"keep").AddFile(u"old.jpg", 1);
  storage->Top().AddFile(u"3.JPG", 1);
  const auto list = ListOf({u"*.jpg", u"(-)/^cache-/i", u"(-)\"OLD.jpg\""});
  std::vector<std::u16string> seen;
  const std::function<void(IHierarchicalEnumerator&)> walk = [&](IHierarchicalEnumerator& pListing) {
    while (pListing.Next()) {
      seen.push_back(pListing.GetFullPath());
      if (pListing.IsFolder()) walk(*pListing.GetChildHierarchicalEnumerator());
    }
  };
  walk(*MakeRef<Enumerators::TFileFilterEnumerator>(storage->CreateEnumerator(), list));
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::u16string>{u"/m/3.JPG", u"/m/keep", u"/m/keep/deep", u"/m/keep/deep/1.jpg"}));
}

}  // namespace Vantrel::PatternMatching

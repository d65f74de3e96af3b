// Filtered scans against a recount of the rest; counts, unopened branches, warnings.

#include <gtest/gtest.h>

#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"
#include "tests/support/Recount.h"

namespace Vantrel {
namespace {

using namespace Vantrel::PatternMatching;
using namespace Vantrel::Testing;

// What a reader of the patterns below would strike out by hand, with why.
enum class TVerdict { veTaken, veCache, veTemporary, veOfBert, veNotListed };

TVerdict Judge(const TMemoryEntry& pEntry) {
  const std::u16string& name = pEntry.fName;
  if (!pEntry.IsFolder() && !name.ends_with(u".txt") && !name.ends_with(u".TMP") && !name.ends_with(u".jpg"))
    return TVerdict::veNotListed;
  if (name.ends_with(u".TMP")) return TVerdict::veTemporary;
  if (name.starts_with(u"cache-") || name.starts_with(u"Cache-")) return TVerdict::veCache;
  if (pEntry.fOwner == u"bert") return TVerdict::veOfBert;
  return TVerdict::veTaken;
}

// Marks as removed what the patterns leave out, and counts it, so that the recount of the rest is what a scan must
// find.
void StrikeOut(TMemoryEntry& pFolder, std::map<TVerdict, int64_t>& pCounts) {
  for (TMemoryEntry& child : pFolder.fChildren) {
    const TVerdict verdict = Judge(child);
    child.fRemoved = verdict != TVerdict::veTaken;
    if (child.fRemoved)
      ++pCounts[verdict];
    else if (child.IsFolder() && child.fCanDescend)
      StrikeOut(child, pCounts);
  }
}

struct TFilteredRoot : TMemoryRoot {
  TFilteredRoot(std::shared_ptr<TMemoryStorage> pStorage, int pThreads, TRef<IPatterns> pPatterns)
      : TMemoryRoot(std::move(pStorage)) {
    fOptions->MaximumThreads = pThreads;
    fOptions->CollectOwners = true;
    Root().SetScanFilter(MakeRef<TPatternFilter>(std::move(pPatterns)));
    Scan();
  }
  std::string Exclusions() const {
    std::string text = std::to_string(fRoot->GetProgress().fExcludedObjects);
    for (const TExclusion& exclusion : fRoot->GetExclusions())
      text += "; " + std::to_string(exclusion.fObjects) + " " + ToUtf8(exclusion.fReason);
    return text;
  }
};

TRef<TPatternList> ListOf(std::initializer_list<const char16_t*> pPatterns) {
  auto list = MakeRef<TPatternList>(u'/');
  list->SetAutoSort(true);
  for (const char16_t* pattern : pPatterns) list->Add(pattern, TPatternType::ptyInclude);
  return list;
}

TEST(PatternFilter, TreesAndCountsAreThoseOfTheRest) {
  const std::vector<std::u16string> names = {u"report", u"cache-", u"Cache-", u"old", u"data"};
  for (unsigned round = 0; round < 12; ++round) {
    auto storage = TMemoryStorage::Create(u"/memory");
    TRandomTree random(31 + round,
                       {names, names, {u".txt", u".TMP", u".jpg", u"", u".tar.gz"}, {u"root", u"anna", u"bert"}});
    random.Fill(storage->Top(), 5);
    std::vector<std::unique_ptr<TFilteredRoot>> scans;
    for (int threads : {1, 2, 16})
      scans.push_back(std::make_unique<TFilteredRoot>(
          storage, threads,
          ListOf({u"*.txt;*.tmp", u"*.jpg", u"(-)*.tmp", u"(-)/^cache-/i", u"(-)(Owner)\"bert\"", u"<||(-)*"})));
    std::map<TVerdict, int64_t> counts;
    StrikeOut(storage->Top(), counts);
    int64_t all = 0;
    std::string expected;
    auto expect = [&](TVerdict pVerdict, const char* pReason) {
      all += counts[pVerdict];
      if (counts[pVerdict] > 0) expected += "; " + std::to_string(counts[pVerdict]) + " " + pReason;
    };
    expect(TVerdict::veTemporary, "by *.tmp");
    expect(TVerdict::veCache, "by /^cache-/i");
    expect(TVerdict::veOfBert, "by (Owner)\"bert\"");
    expect(TVerdict::veNotListed, "matching no pattern to include");
    const TRecount recount = RecountStorage(storage->Top(), {});
    for (const auto& scan : scans) {
      TRecount found = ReadTree(*scan->fRoot->GetTopFolder());
      for (auto& [path, folder] : found) folder.fAges.clear();  // the scans and the recount begin at different times
      TRecount wanted = recount;
      for (auto& [path, folder] : wanted) folder.fAges.clear();
      EXPECT_EQ(Difference(wanted, found), "");
      EXPECT_EQ(scan->Exclusions(), std::to_string(all) + expected);
    }
  }
}

TEST(PatternFilter, ExcludedBranchesAreNotListed) {
  auto storage = TMemoryStorage::Create(u"/memory");
  storage->Folder(u"cache/deep").AddFile(u"x", 1);
  storage->Folder(u"srv/www/site").AddFile(u"x.html", 1);
  storage->Folder(u"srv/ftp/pub").AddFile(u"x.html", 1);
  int64_t before = storage->CountNextCalls();
  TFilteredRoot scan(storage, 4, ListOf({u"(-)cache", u"/memory/srv/www/*.html"}));
  // Listed are the top (2 entries), srv (2), www (1) and site (1), each with a call that finds the end.
  EXPECT_EQ(storage->CountNextCalls() - before, 2 + 2 + 1 + 1 + 4);
  EXPECT_EQ(scan.Exclusions(), "2; 1 by *cache*; 1 outside the paths to include");
  EXPECT_EQ(scan.fRoot->GetTopFolder()->GetFiles(), 1);
}

TEST(PatternFilter, TakesTheListAsItIsWhenAScanBegins) {
  auto storage = TMemoryStorage::Create(u"/memory");
  storage->Top().AddFile(u"a.tmp", 1);
  storage->Top().AddFile(u"b.txt", 2);
  const auto list = ListOf({u"<||(-)*.tmp"});
  TFilteredRoot scan(storage, 1, list);
  EXPECT_EQ(scan.Exclusions(), "0");
  list->GetItem(0)->SetActive(true);
  scan.Scan();
  EXPECT_EQ(scan.Exclusions(), "1; 1 by *.tmp");
  list->Clear();
  scan.Scan();
  EXPECT_EQ(scan.Exclusions(), "0");
  EXPECT_EQ(scan.fRoot->GetTopFolder()->GetFiles(), 2);
}

TEST(PatternFilter, WarnsOfExpressionsThatGiveUp) {
  auto storage = TMemoryStorage::Create(u"/memory");
  storage->Top().AddFile(std::u16string(40, u'a') + u"!", 1);
  storage->Top().AddFile(u"ab", 1);
  TFilteredRoot scan(storage, 2, ListOf({u"(-)/^(a+)+$/"}));
  EXPECT_EQ(scan.fRoot->GetTopFolder()->GetFiles(), 2);
  const auto warnings = scan.fRoot->GetScanFilter()->GetWarnings();
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(ToUtf8(warnings[0]), "/^(a+)+$/ takes too many steps on 1 text, which counts as not matching");
}

}  // namespace
}  // namespace Vantrel

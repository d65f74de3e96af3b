// Wrappers: sums, caching, filters, depth.

#include <gtest/gtest.h>

#include <functional>

#include "scan/storage/NestedEnumerators.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Enumerators {
namespace {

using Testing::TMemoryStorage;

constexpr int64_t kDay = TKivFileTime::kTicksPerDay;

Testing::TMemoryEntry& Dated(Testing::TMemoryEntry& pEntry, int64_t pChangeDay) {
  pEntry.fValues.fLastChangeDate = {pChangeDay * kDay};
  return pEntry;
}

// Two files of 10 and 20 bytes at the top, "sub" (day 9) with 300 bytes of day 5, "sub/deep" (day 8) with 4000 of
// day 4.
std::shared_ptr<TMemoryStorage> SmallTree() {
  auto storage = TMemoryStorage::Create();
  Dated(storage->Top().AddFile(u"a", 10, 4096), 1);
  Dated(storage->Top().AddFile(u"b", 20, 4096), 2);
  Dated(storage->Folder(u"sub"), 9);
  Dated(storage->Folder(u"sub").AddFile(u"c", 300, 4096), 5);
  Dated(storage->Folder(u"sub/deep"), 8);
  Dated(storage->Folder(u"sub/deep").AddFile(u"d", 4000, 4096), 4);
  return storage;
}

void ListAll(IHierarchicalEnumerator& pEnumerator) {
  while (pEnumerator.Next())
    if (pEnumerator.IsFolder()) ListAll(*pEnumerator.GetChildHierarchicalEnumerator());
}

TEST(SummarizingEnumerator, AddsUpWhatLiesBeneath) {
  auto storage = SmallTree();
  auto top = MakeRef<TSummarizingEnumerator>(storage->CreateEnumerator(), false);
  ASSERT_TRUE(top->Next());
  EXPECT_EQ(top->Child(), (TEntrySums{10, 4096, 1, 0, {}, {1 * kDay}}));
  ASSERT_TRUE(top->Next());
  ASSERT_TRUE(top->Next());
  ASSERT_EQ(top->GetObjectName(), u"sub");
  ListAll(*top->GetChildHierarchicalEnumerator());
  EXPECT_EQ(top->Child(), (TEntrySums{4300, 8192, 2, 2, {}, {9 * kDay}}));
  EXPECT_EQ(top->Summarized(), (TEntrySums{4330, 16384, 4, 2, {}, {9 * kDay}}));

  auto late = top->CreateChildEnumerator(u"sub", kAttributeDirectory);
  EXPECT_FALSE(top->Next());
  ListAll(*late);
  EXPECT_EQ(top->Child(), TEntrySums{}) << "no entry is current any more";
  EXPECT_EQ(top->Summarized().fPlainSize, 4330 + 4300) << "but all that is listed counts";
}

TEST(SummarizingEnumerator, FolderDatesCanBeThoseOfFilesOnly) {
  auto storage = SmallTree();
  auto top = MakeRef<TSummarizingEnumerator>(storage->CreateEnumerator(), true);
  ListAll(*top);
  EXPECT_EQ(top->Summarized().fLastChangeDate, TKivFileTime{5 * kDay});
}

TEST(SummarizingEnumerator, ChainOfTenThousandLevelsIsReleased) {
  auto storage = TMemoryStorage::Create();
  Testing::TMemoryEntry* folder = &storage->Top();
  for (int i = 0; i < 10'000; ++i) folder = &folder->AddFolder(u"x");
  TRef<IHierarchicalEnumerator> enumerator = MakeRef<TSummarizingEnumerator>(storage->CreateEnumerator(), false);
  for (int i = 0; i < 10'000; ++i) enumerator = enumerator->CreateChildEnumerator(u"x", kAttributeDirectory);
  EXPECT_EQ(storage->CountLiveEnumerators(), 10'001);
  enumerator.reset();
  EXPECT_EQ(storage->CountLiveEnumerators(), 0);
}

// Counts how often the wrapped enumerator is asked.
class TCountingEnumerator : public TBaseNestedHierarchicalEnumerator {
 public:
  TCountingEnumerator(TRef<IHierarchicalEnumerator> pNested, int& pQuestions)
      : TBaseNestedHierarchicalEnumerator(std::move(pNested)), fQuestions(pQuestions) {}
  int64_t GetSize() const override { return ++fQuestions, TBaseNestedHierarchicalEnumerator::GetSize(); }
  std::u16string GetFullPath() const override { return ++fQuestions, TBaseNestedHierarchicalEnumerator::GetFullPath(); }
  TMetaDataValue GetValue(TColumn pColumn) const override {
    return ++fQuestions, TBaseNestedHierarchicalEnumerator::GetValue(pColumn);
  }

 protected:
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override { return pNested; }

 private:
  int& fQuestions;
};

TEST(CachingEnumerator, AsksOncePerEntryAndColumn) {
  auto storage = SmallTree();
  int questions = 0;
  TRef<IHierarchicalEnumerator> counting = MakeRef<TCountingEnumerator>(storage->CreateEnumerator(), questions);
  auto caching = MakeRef<TCachingEnumerator>(counting);
  const char16_t* paths[] = {u"/memory/a", u"/memory/b"};
  const int64_t sizes[] = {10, 20};
  for (int entry = 0; entry < 2; ++entry) {
    ASSERT_TRUE(caching->Next());
    questions = 0;
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(caching->GetSize(), sizes[entry]);
      EXPECT_EQ(caching->GetFullPath(), paths[entry]);
      EXPECT_EQ(caching->GetValue(TColumn::mdSize), TMetaDataValue(sizes[entry]));
    }
    EXPECT_EQ(questions, 3);
  }
}

TEST(CachingEnumerator, FormattedTextFollowsTheFormat) {
  auto storage = SmallTree();
  auto caching = MakeRef<TCachingEnumerator>(storage->CreateEnumerator());
  ASSERT_TRUE(caching->Next());
  TValueFormat plain;
  plain.fPlainByteValues = true;
  TValueFormat withUnits;
  EXPECT_EQ(caching->GetFormattedValue(TColumn::mdSize, plain), u"10");
  EXPECT_NE(caching->GetFormattedValue(TColumn::mdSize, withUnits), u"10");
  EXPECT_EQ(caching->GetFormattedValue(TColumn::mdSize, plain), u"10");
  ASSERT_TRUE(caching->Next());
  EXPECT_EQ(caching->GetFormattedValue(TColumn::mdSize, plain), u"20");
}

class TLargeFilesOnly : public TBaseFilterEnumerator {
 public:
  explicit TLargeFilesOnly(TRef<IHierarchicalEnumerator> pNested) : TBaseFilterEnumerator(std::move(pNested)) {}

 protected:
  bool IsIncluded() override { return IsFolder() || GetSize() >= 20; }
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override {
    return MakeRef<TLargeFilesOnly>(std::move(pNested));
  }
};

TEST(FilterEnumerator, LeavesOutWhatIsRejectedAndPassesErrorsOn) {
  auto storage = SmallTree();
  auto filter = MakeRef<TLargeFilesOnly>(storage->CreateEnumerator());
  ASSERT_TRUE(filter->Next());
  EXPECT_EQ(filter->GetObjectName(), u"b");
  ASSERT_TRUE(filter->Next());
  EXPECT_EQ(filter->GetObjectName(), u"sub");
  EXPECT_FALSE(filter->Next());
  EXPECT_EQ(filter->GetErrorCode(), 0U);

  storage->Top().FailListing(3, 1117);
  filter->Reset();
  ASSERT_TRUE(filter->Next());
  EXPECT_FALSE(filter->Next()) << "the listing broke off behind b";
  EXPECT_EQ(filter->GetErrorCode(), 1117U);
}

}  // namespace
}  // namespace Vantrel::Enumerators

// The lists of scanned roots: their sums against the recount, what their rows stand for, filling them during a scan.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <set>

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Text.h"
#include "presentation/lists/RootLists.h"
#include "presentation/lists/StatisticsLists.h"
#include "presentation/lists/TopFilesList.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/Recount.h"

namespace Vantrel::Presentation {
namespace {

using namespace Vantrel::Testing;
const std::map<std::u16string, std::u16string> kFileTypes = {{u".txt", u"Text"},
                                                             {u".jpg", u"Images"},
                                                             {u".qqq", u"Miscellaneous Files"},
                                                             {u"<no extension>", u"Miscellaneous Files"},
                                                             {u".vhdproj", u"Software Development, Virtualization"}};

void FillRandomly(TMemoryEntry& pFolder, std::mt19937& pRandom, int pDepth) {
  static const char16_t* const kExtensions[] = {u".txt", u".JPG", u".jpg", u"", u".qqq", u".vhdproj"};
  static const char16_t* const kOwners[] = {u"", u"anna", u"bert"};
  for (uint32_t i = pRandom() % 8; i > 0; --i) {
    const std::u16string name = u"f" + FromUtf8(std::to_string(pFolder.fChildren.size()));
    // Few sizes, so that some are equal.
    TMemoryEntry& file = pFolder.AddFile(name + kExtensions[pRandom() % 6], pRandom() % 40 * 1000, pRandom() % 50'000);
    file.fValues.fLastChangeDate.fTicks =
        TKivFileTime::Now().fTicks - (int64_t(pRandom() % 500) * 24 + 12) * 3600 * TKivFileTime::kTicksPerSecond;
    file.fOwnerId = 1 + pRandom() % 3;
    file.fOwner = kOwners[file.fOwnerId - 1];
  }
  for (uint32_t i = pDepth > 0 ? 3 : 0; i > 0; --i)
    FillRandomly(pFolder.AddFolder(u"d" + FromUtf8(std::to_string(i))), pRandom, pDepth - 1);
}

struct TScannedRoot : TMemoryRoot {
  explicit TScannedRoot(
      uint32_t pSeed, const std::function<void(TGlobalOptions&)>& pSetUp = [](TGlobalOptions&) {}) {
    std::mt19937 random(pSeed);
    FillRandomly(Top(), random, 3);
    fOptions->CollectOwners = true;
    fOptions->NumberOfTopFiles = 20;
    pSetUp(*fOptions);
    Scan();
  }

  TRecountedFolder Recounted() {
    TRecountSettings settings;
    settings.fNow = fRoot->GetScanTimeStamp();
    return RecountStorage(Top(), settings)[fPath];
  }
};

template <class TValue>
TValue Cell(const TList& pList, size_t pRow, std::u16string_view pCaption) {
  for (size_t i = 0; i < pList.fColumns.size(); ++i)
    if (pList.fColumns[i].fCaption == pCaption) return std::get<TValue>(pList.fRows.at(pRow).fValues.at(i));
  throw std::out_of_range("no column " + ToUtf8(pCaption));
}

void ExpectSums(const TList& pList, size_t pRow, const TBasicSizeValues& pExpected, double pShare) {
  EXPECT_EQ(Cell<int64_t>(pList, pRow, u"Size"), pExpected.fSize);
  EXPECT_EQ(Cell<int64_t>(pList, pRow, u"Allocated"), pExpected.fAllocated);
  EXPECT_EQ(Cell<int64_t>(pList, pRow, u"Files"), pExpected.fFiles);
  EXPECT_NEAR(Cell<double>(pList, pRow, u"% of Root"), pShare, 1e-12);
}

// One of the two sizes: what lists are ordered by, and shares reckoned from.
using TBasis = int64_t TBasicSizeValues::*;

double Share(const TBasicSizeValues& pPart, const TBasicSizeValues& pWhole, TBasis pBasis) {
  return static_cast<double>(pPart.*pBasis) / static_cast<double>(pWhole.*pBasis);
}

// A row for each key of the recount and no other, by size and then by key.
void ExpectKeys(const TList& pList, std::u16string_view pKeyCaption,
                const std::map<std::u16string, TBasicSizeValues>& pExpected, const TBasicSizeValues& pWhole,
                TBasis pBasis) {
  ASSERT_EQ(pList.fRows.size(), pExpected.size());
  std::set<std::pair<int64_t, std::u16string>> order;
  for (const auto& [key, values] : pExpected) order.emplace(-(values.*pBasis), key);
  size_t row = 0;
  for (const auto& [negative, key] : order) {
    EXPECT_EQ(Cell<std::u16string>(pList, row, pKeyCaption), key);
    ExpectSums(pList, row++, pExpected.at(key), Share(pExpected.at(key), pWhole, pBasis));
  }
}

}  // namespace

TEST(RootLists, SumsAreThoseOfARecount) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    const bool byAllocated = seed % 2 == 0;
    const TBasis basis = byAllocated ? &TBasicSizeValues::fAllocated : &TBasicSizeValues::fSize;
    TScannedRoot live(seed, [&](TGlobalOptions& pOptions) { pOptions.UseAllocatedForShares = byAllocated; });
    const TRecountedFolder expected = live.Recounted();
    const TBasicSizeValues whole = expected.fValues;
    ASSERT_GT(whole.fSize, 0);
    const TList extensions = ExtensionsList(*live.fRoot);
    ExpectKeys(extensions, u"Extension", expected.fExtensions, whole, basis);
    for (size_t i = 0; i < extensions.fRows.size(); ++i)
      EXPECT_EQ(Cell<std::u16string>(extensions, i, u"File Type"),
                kFileTypes.at(Cell<std::u16string>(extensions, i, u"Extension")));
    ExpectKeys(UsersList(*live.fRoot), u"Owner", expected.fOwners, whole, basis);

    // An extension of two groups counts in both.
    std::map<std::u16string, TBasicSizeValues> types;
    for (const auto& [extension, values] : expected.fExtensions) {
      const std::u16string captions = u", " + kFileTypes.at(extension) + u", ";
      for (const char16_t* caption :
           {u"Text", u"Images", u"Miscellaneous Files", u"Software Development", u"Virtualization"})
        if (captions.find(u", " + std::u16string(caption) + u", ") != std::u16string::npos) types[caption] += values;
    }
    const TList fileTypes = FileTypesList(*live.fRoot);
    ASSERT_EQ(fileTypes.fRows.size(), 18u) << "groups without files, too";
    EXPECT_EQ(Cell<std::u16string>(fileTypes, 0, u"File Type"), u"Audio");
    EXPECT_EQ(Cell<std::u16string>(fileTypes, 17, u"File Type"), u"Miscellaneous Files");
    for (size_t i = 0; i < fileTypes.fRows.size(); ++i) {
      const TBasicSizeValues& sums = types[Cell<std::u16string>(fileTypes, i, u"File Type")];
      ExpectSums(fileTypes, i, sums, Share(sums, whole, basis));
    }

    const TList ages = FileAgesList(*live.fRoot);
    ASSERT_EQ(ages.fRows.size(), 7u);
    for (int i = 0; i < 7; ++i) {
      const auto interval = expected.fAges.find(i);
      const TBasicSizeValues values = interval == expected.fAges.end() ? TBasicSizeValues() : interval->second;
      ExpectSums(ages, static_cast<size_t>(i), values, Share(values, whole, basis));
    }
    EXPECT_EQ(Cell<std::u16string>(ages, 0, u"Age"), u"up to 1 day");
    EXPECT_EQ(Cell<std::u16string>(ages, 6, u"Age"), u"over 2 years");  // empty: the files are younger
  }
}

TEST(RootLists, SayWhatTheScanDidNotCollect) {
  TScannedRoot live(1, [](TGlobalOptions& pOptions) {
    pOptions.CollectExtensions = pOptions.CollectOwners = false;
    pOptions.NumberOfTopFiles = 0;
    pOptions.FileAgesDateType = TDateType::dtNone;
  });
  const struct {
    TList fList;
    std::u16string fTitle;
  } cases[] = {{TopFilesList(*live.fRoot), u"Largest files of /memory (not collected)"},
               {ExtensionsList(*live.fRoot), u"Extensions of /memory (not collected)"},
               {FileTypesList(*live.fRoot), u"File types of /memory (not collected)"},
               {UsersList(*live.fRoot), u"Owners of /memory (not collected)"},
               {FileAgesList(*live.fRoot), u"File ages of /memory (not collected)"}};
  for (const auto& each : cases) {
    EXPECT_EQ(each.fList.fTitle, each.fTitle);
    EXPECT_TRUE(each.fList.fRows.empty());
  }

  TScannedRoot empty(0);
  empty.fStorage->Top().fChildren.clear();
  empty.Scan();
  EXPECT_EQ(TopFilesList(*empty.fRoot).fTitle, u"Largest files of /memory");
  EXPECT_EQ(FileAgesList(*empty.fRoot).fTitle, u"File ages of /memory, by last change");
  ExpectSums(FileAgesList(*empty.fRoot), 3, {}, 0.0);
}

namespace {

// The groups and colours of the common options for one test.
struct TCommonOptions {
  TGlobalOptions fOptions;

  void Set(std::initializer_list<std::pair<const char16_t*, const char16_t*>> pGroups, TUserColors pColors) {
    auto groups = MakeRef<TFileTypeGroups>();
    for (const auto& [caption, patterns] : pGroups) {
      const TRef<IFileTypeGroup> group = groups->AddNewGroup();
      group->SetCaption(caption);
      group->SetPatterns(patterns);
    }
    fOptions.FileTypeGroups = groups;
    fOptions.UserColors = std::move(pColors);
    UseAsCommonOptions(fOptions);
  }
  ~TCommonOptions() { UseAsCommonOptions(TGlobalOptions()); }
};

}  // namespace

TEST(RootLists, FollowTheGroupsAndColoursOfTheOptions) {
  TScannedRoot live(3);
  const TRecountedFolder expected = live.Recounted();
  TCommonOptions common;
  common.Set({{u"Mine", u"*.txt;*.JPG"}, {u"Rest", u"*"}}, {{u".txt", 0x123456}, {u"Rest", 0x0000FF}});
  const TList types = FileTypesList(*live.fRoot);
  ASSERT_EQ(types.fRows.size(), 2u);
  TBasicSizeValues mine;
  for (const char16_t* extension : {u".txt", u".jpg"})
    if (expected.fExtensions.contains(extension)) mine += expected.fExtensions.at(extension);
  EXPECT_EQ(Cell<int64_t>(types, 0, u"Size"), mine.fSize);
  EXPECT_EQ(Cell<int64_t>(types, 1, u"Size"), expected.fValues.fSize - mine.fSize);
  EXPECT_EQ(types.fRows[1].fKey, u"Rest");
  EXPECT_EQ(types.fRows[1].fColor, TColor{0x0000FF});
  const TList extensions = ExtensionsList(*live.fRoot);
  for (size_t i = 0; i < extensions.fRows.size(); ++i) {
    const bool isMine = extensions.fRows[i].fKey == u".txt" || extensions.fRows[i].fKey == u".jpg";
    EXPECT_EQ(Cell<std::u16string>(extensions, i, u"File Type"), isMine ? u"Mine" : u"Rest");
    EXPECT_EQ(extensions.fRows[i].fColor == TColor{0x123456}, extensions.fRows[i].fKey == u".txt");
  }
  for (const TListRow& row : TopFilesList(*live.fRoot).fRows)
    EXPECT_EQ(row.fColor == TColor{0x123456}, row.fKey.ends_with(u".txt")) << ToUtf8(row.fKey);
}

// A view selects by key and jumps to the node.
TEST(RootLists, RowsKeepTheirKeysAndLeadToTheirFolders) {
  TScannedRoot live(5);
  const TList files = TopFilesList(*live.fRoot);
  for (size_t i = 0; i < files.fRows.size(); ++i) {
    const auto* folder = dynamic_cast<const IHierarchicalElement*>(files.fRows[i].fNode.get());
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->GetFullPath() + u"/" + Cell<std::u16string>(files, i, u"Name"), files.fRows[i].fKey);
  }
  TGlobalOptions options;
  options.ListTopFiles = options.ListExtensions = options.ListFileTypes = options.ListUsers = options.ListFileAges =
      true;
  ASSERT_EQ(ChosenLists(options).size(), 5u);
  for (const TRootList& source : ChosenLists(options)) {
    const TList list = source.fFill(*live.fRoot), again = source.fFill(*live.fRoot);
    std::set<std::u16string> keys;
    ASSERT_EQ(list.fRows.size(), again.fRows.size());
    for (size_t i = 0; i < list.fRows.size(); ++i) {
      EXPECT_EQ(list.fRows[i].fValues.size(), list.fColumns.size());
      EXPECT_EQ(list.fRows[i].fKey, again.fRows[i].fKey);
      EXPECT_TRUE(keys.insert(list.fRows[i].fKey).second) << ToUtf8(list.fRows[i].fKey);
    }
  }
}

// Filled during scans, a list shows part of the files, never a number that the finished tree does not reach.
TEST(RootLists, AreFilledWhileAScanRuns) {
  TScannedRoot live(11);
  TGlobalOptions options;
  options.ListTopFiles = options.ListExtensions = options.ListFileTypes = options.ListUsers = options.ListFileAges =
      true;
  const int64_t whole = live.Recounted().fValues.fSize;
  for (int scan = 0; scan < 20; ++scan) {
    live.Begin();
    for (bool done = false; !done;) {
      done = live.fRoot->WaitForScan(0);
      for (const TRootList& source : ChosenLists(options)) {
        const TList list = source.fFill(*live.fRoot);
        const auto sizes = FindListColumn(list, TColumn::mdSize);
        ASSERT_TRUE(sizes);
        int64_t sum = 0;
        for (const TListRow& row : list.fRows) sum += std::get<int64_t>(row.fValues[*sizes]);
        const int64_t timesCounted = source.fName == u"filetypes" ? 2 : 1;  // ".vhdproj" is of two groups
        ASSERT_LE(sum, whole * timesCounted) << ToUtf8(source.fName);
      }
    }
  }
}

}  // namespace Vantrel::Presentation

// That the largest files do not depend on the order.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <set>
#include <thread>
#include <tuple>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/TopSizeList.h"
#include "tests/support/FakeTree.h"

namespace Vantrel {
namespace {

using Vantrel::Testing::TFakeFolder;
using TEntries = std::vector<TTopSizeEntry>;

// Comparable form of an entry, in the order that the list promises.
using TRow = std::tuple<int64_t, size_t, std::u16string>;  // negated size, length of the full path, full path

TRow RowOf(const TTopSizeEntry& pEntry) {
  const std::u16string path = pEntry.fParentFolder->GetFullPath() + u'/' + pEntry.fName;
  return {-pEntry.fSize, path.size(), path};
}

std::vector<TRow> RowsOf(const TEntries& pEntries) {
  std::vector<TRow> rows;
  for (const TTopSizeEntry& entry : pEntries) rows.push_back(RowOf(entry));
  return rows;
}

// Sort everything and cut.
std::vector<TRow> LargestOf(const TEntries& pEntries, size_t pCount) {
  std::vector<TRow> rows = RowsOf(pEntries);
  std::sort(rows.begin(), rows.end());
  rows.resize(std::min(rows.size(), pCount));
  return rows;
}

// A tree of folders a to e, each with sub-folders of the same names, and files of few different sizes: ties everywhere.
struct TTree {
  explicit TTree(unsigned pSeed) : fRandom(pSeed) {
    fTop = MakeRef<TFakeFolder>(u"/r", TSizeValues());
    for (char16_t first = u'a'; first <= u'e'; ++first) {
      const TRef<TFakeFolder> parent = fTop->Add(MakeRef<TFakeFolder>(std::u16string(1, first), TSizeValues()));
      fFolders.push_back(parent);
      for (char16_t second = u'a'; second <= u'e'; ++second) {
        fFolders.push_back(parent->Add(MakeRef<TFakeFolder>(std::u16string(1, second), TSizeValues())));
      }
    }
    for (const auto& folder : fFolders) {
      for (char16_t name = u'A'; name < u'A' + 20; ++name) {
        auto size = static_cast<int64_t>(fRandom() % 8);
        fFiles.push_back({size, size * 2, {}, folder, std::u16string(1, name)});
      }
    }
  }

  std::mt19937 fRandom;
  TRef<TFakeFolder> fTop;
  std::vector<TRef<IHierarchicalElement>> fFolders;
  TEntries fFiles;
};

TEST(TopSizeList, KeepsTheSameFilesWhateverTheOrder) {
  TTree tree(1);
  for (size_t count : {1u, 7u, 100u, 599u, 600u, 601u}) {
    std::vector<TRow> expected = LargestOf(tree.fFiles, count);
    for (int round = 0; round < 10; ++round) {
      std::shuffle(tree.fFiles.begin(), tree.fFiles.end(), tree.fRandom);
      TRef<ITopSizeList> list = MakeRef<TTopSizeFileList>(count, u'/');
      for (const TTopSizeEntry& file : tree.fFiles) {
        const size_t length = file.fParentFolder->GetFullPath().size() + 1 + file.fName.size();
        if (list->IsWorthOffering(file.fSize, length)) list->Add(file);
      }
      EXPECT_EQ(RowsOf(list->GetSnapshot()), expected) << count << " files, round " << round;
    }
  }
}

TEST(TopSizeList, KeepsTheSameFilesFromManyThreads) {
  TTree tree(2);
  for (int round = 0; round < 20; ++round) {
    std::shuffle(tree.fFiles.begin(), tree.fFiles.end(), tree.fRandom);
    TRef<ITopSizeList> list = MakeRef<TTopSizeFileList>(50, u'/');
    std::vector<std::thread> workers;
    for (size_t thread = 0; thread < 4; ++thread) {
      workers.emplace_back([&, thread] {
        auto own = std::span<const TTopSizeEntry>(tree.fFiles).subspan(thread * 150, 150);
        for (size_t i = 0; i < own.size(); i += 10) list->Add(own.subspan(i, 10));
      });
    }
    for (std::thread& worker : workers) worker.join();
    EXPECT_EQ(RowsOf(list->GetSnapshot()), LargestOf(tree.fFiles, 50));
  }
}

TEST(TopSizeList, RemovesWhatLiesBelowAFolder) {
  TTree tree(3);
  TRef<IHierarchicalElement> removed = tree.fFolders[6];  // the second of the first level, with five below
  ASSERT_EQ(removed->GetFullPath(), u"/r/b");
  TRef<ITopSizeList> list = MakeRef<TTopSizeFileList>(100, u'/');
  list->Add(tree.fFiles);
  TEntries left;
  for (const TTopSizeEntry& file : list->GetSnapshot()) {
    std::u16string folder = file.fParentFolder->GetFullPath() + u'/';
    if (!folder.starts_with(u"/r/b/")) left.push_back(file);
  }
  ASSERT_LT(left.size(), 100u);
  EXPECT_TRUE(list->RemoveBelow(*removed));
  EXPECT_EQ(RowsOf(list->GetSnapshot()), RowsOf(left));
  EXPECT_FALSE(list->RemoveBelow(*removed));
  // There is room again: the smallest file is welcome, and offering everything once more restores the list.
  EXPECT_TRUE(list->IsWorthOffering(0, 1000));
  list->Clear();
  list->Add(tree.fFiles);
  EXPECT_EQ(RowsOf(list->GetSnapshot()), LargestOf(tree.fFiles, 100));
  EXPECT_TRUE(list->RemoveBelow(*tree.fTop));
  EXPECT_TRUE(list->GetSnapshot().empty());
}

TEST(TopSizeList, TakesNothingWithoutRoomOrAfterDisposal) {
  TTree tree(4);
  TRef<ITopSizeList> none = MakeRef<TTopSizeFileList>(0, u'/');
  EXPECT_FALSE(none->IsWorthOffering(std::numeric_limits<int64_t>::max(), 1));
  none->Add({std::numeric_limits<int64_t>::max(), 0, {}, tree.fTop, u"huge"});
  EXPECT_TRUE(none->GetSnapshot().empty());
  TRef<ITopSizeList> list = MakeRef<TTopSizeFileList>(5, u'/');
  list->Add(tree.fFiles);
  const std::u16string last = std::get<2>(RowOf(list->GetSnapshot().back()));
  EXPECT_TRUE(list->IsWorthOffering(8, 1000));
  EXPECT_TRUE(list->IsWorthOffering(7, last.size()));
  EXPECT_FALSE(list->IsWorthOffering(7, last.size() + 1));  // known to be refused before its path is made
  EXPECT_FALSE(list->IsWorthOffering(6, 1));
  list->Dispose();
  EXPECT_FALSE(list->IsWorthOffering(std::numeric_limits<int64_t>::max(), 1));
  list->Add({std::numeric_limits<int64_t>::max(), 0, {}, tree.fTop, u"huge"});
  EXPECT_TRUE(list->GetSnapshot().empty());
}

}  // namespace
}  // namespace Vantrel

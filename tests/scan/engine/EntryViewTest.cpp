// Files and folders as seen through views: every column by hand, for every kind of entry.

#include <gtest/gtest.h>

#include <cstdio>

#include "model/roots/Comparison.h"
#include "model/roots/EarlierFiles.h"
#include "model/tree/EntryView.h"
#include "platform/text/Text.h"
#include "tests/support/MemoryRoot.h"

namespace Vantrel {
namespace {

using namespace Vantrel::Testing;

std::string TextOf(const TMetaDataValue& pValue) {
  if (const auto* number = std::get_if<int64_t>(&pValue)) return std::to_string(*number);
  if (const auto* date = std::get_if<TKivFileTime>(&pValue)) return "@" + std::to_string(date->fTicks);
  if (const auto* text = std::get_if<std::u16string>(&pValue)) return "'" + ToUtf8(*text) + "'";
  if (std::get_if<std::monostate>(&pValue)) return "";
  char share[32];
  std::snprintf(share, sizeof share, "%.3f", std::get<double>(pValue));
  return share;
}

// All columns that have a value, in the order of the catalogue.
std::string TextOf(const TEntryView& pEntry) {
  std::string text;
  for (int i = 0; i < static_cast<int>(TColumn::mdCount); ++i) {
    const auto column = static_cast<TColumn>(i);
    const std::string value = TextOf(pEntry.GetValue(column));
    if (!value.empty()) text += ToUtf8(ColumnInfo(column).fName) + "=" + value + " ";
  }
  return text;
}

// Sizes: 300 in /memory/a, 50 beneath it, 100 beside it; on the disk 1024, 512 and 512.
void Fill(TMemoryEntry& pTop) {
  TMemoryEntry& a = pTop.AddFolder(u"a");
  TMemoryEntry& x = a.AddFile(u"x.C", 300, 1024);
  x.fOwner = u"bert";
  x.fOwnerId = 7;
  x.fValues.fCreationDate = {11};
  x.fValues.fLastAccessDate = {22};
  x.fValues.fLastChangeDate = {33};
  a.AddFolder(u"inner").AddFile(u"deep", 50, 512);
  pTop.AddFile(u"top", 100, 512);
}

constexpr const char* kFile =
    "Name='x.C' FullPath='/memory/a/x.C' ParentPath='/memory/a' Extension='C' Owner='bert' Size=300 Allocated=1024 "
    "Files=1 Items=1 PercentOfParent=0.667 PercentOfRoot=0.500 LastAccess=@22 LastChange=@33 Creation=@11 "
    "Attributes=32 PathLength=13 Depth=2 ";

TEST(EntryView, AFileIsTheSameWhereverItIsKept) {
  TMemoryRoot root;
  Fill(root.Top());
  root.fOptions->CollectOwners = true;
  root.Scan();
  const TRef<IFolderData> a = root.fRoot->GetTopFolder()->FindSubFolders()[0];
  const TRef<const TFileTable> files = a->GetFileTable();
  EXPECT_EQ(TextOf(TEntryView(*files, (*files)[0], a.get())), kFile);
  EXPECT_EQ(TextOf(TEntryView(*files, (*files)[0], a->GetFilesNode().get())), kFile) << "kept at a [Files] node";
  EXPECT_EQ(TextOf(TEntryView(*a->FindFiles()[0])), kFile) << "a node";
  const std::vector<TTopSizeEntry> largest = root.fRoot->GetTopSizeList()->GetSnapshot();
  EXPECT_EQ(TextOf(TEntryView(largest[0])), kFile) << "the largest file";
  EXPECT_EQ(TextOf(TEntryView(*files, (*files)[0], nullptr)),
            "Name='x.C' FullPath='x.C' Extension='C' Owner='bert' Size=300 Allocated=1024 Files=1 Items=1 "
            "LastAccess=@22 LastChange=@33 Creation=@11 Attributes=32 PathLength=3 ")
      << "without its folder";
}

TEST(EntryView, FoldersAndListedEntries) {
  TMemoryRoot root;
  Fill(root.Top());
  root.fOptions->CollectOwners = false;
  root.fOptions->UseAllocatedForShares = true;
  root.Scan();
  const TRef<IFolderData> top = root.fRoot->GetTopFolder();
  const TRef<IFolderData> a = top->FindSubFolders()[0];
  EXPECT_EQ(TextOf(TEntryView(*top)),
            "Name='/memory' FullPath='/memory' Size=450 Allocated=2048 Files=3 Folders=2 Items=5 PercentOfParent=1.000 "
            "PercentOfRoot=1.000 LastAccess=@22 LastChange=@33 Attributes=16 Compression=1 AverageFileSize=150 "
            "PathLength=7 Depth=0 FolderState=1028 ");
  EXPECT_EQ(TextOf(TEntryView(*a)),
            "Name='a' FullPath='/memory/a' ParentPath='/memory' Size=350 Allocated=1536 Files=2 Folders=1 Items=3 "
            "PercentOfParent=0.750 PercentOfRoot=0.750 LastAccess=@22 LastChange=@33 Attributes=16 Compression=1 "
            "AverageFileSize=175 PathLength=9 Depth=1 FolderState=4 ");
  const TRef<IHierarchicalElement> filesNode = a->GetFilesNode();
  EXPECT_EQ(TextOf(TEntryView(*filesNode)),
            "Name='[Files]' FullPath='/memory/a' ParentPath='/memory/a' Size=300 Allocated=1024 Files=1 Folders=0 "
            "Items=1 PercentOfParent=0.667 PercentOfRoot=0.500 LastAccess=@22 LastChange=@33 Attributes=0 "
            "Compression=1 AverageFileSize=300 PathLength=9 Depth=2 FolderState=0 ");

  const TRef<IHierarchicalEnumerator> listing =
      root.fStorage->CreateEnumerator()->CreateChildEnumerator(u"a", kAttributeDirectory);
  std::string listed;
  while (listing->Next()) listed += TextOf(TEntryView(*listing)) + "\n";
  EXPECT_EQ(listed,
            "Name='x.C' FullPath='/memory/a/x.C' ParentPath='/memory/a' Extension='C' Owner='bert' Size=300 "
            "Allocated=1024 Files=1 Folders=0 Items=1 LastAccess=@22 LastChange=@33 Creation=@11 Attributes=32 "
            "PathLength=13 Depth=3 \n"
            "Name='inner' FullPath='/memory/a/inner' ParentPath='/memory/a' Size=0 Allocated=0 Files=0 Folders=1 "
            "Items=1 Attributes=16 PathLength=15 Depth=3 \n");
  root.fRoot->Dispose();
  EXPECT_EQ(TextOf(TEntryView(*a).GetValue(TColumn::mdPercentOfParent)), "") << "disposed";
}

TEST(EntryView, ChangesSinceAnEarlierScan) {
  TMemoryRoot root;
  Fill(root.Top());
  root.Scan();
  TMemoryRoot earlier;
  TMemoryEntry& a = earlier.Top().AddFolder(u"a");
  a.AddFile(u"x.C", 200, 512);
  a.AddFolder(u"gone").AddFile(u"f", 40, 4096);
  earlier.Scan();
  const TRef<IComparison> comparison = MakeRef<TComparison>(*root.fRoot, *earlier.fRoot);
  root.fRoot->SetComparison(comparison);

  auto changes = [](const TEntryView& pEntry) {
    std::string text;
    for (const TColumn column : {TColumn::mdSizeChange, TColumn::mdSizeChangePercent, TColumn::mdFileChange,
                                 TColumn::mdAllocatedChange, TColumn::mdChangeState})
      text += TextOf(pEntry.GetValue(column)) + "|";
    return text;
  };
  const TRef<IFolderData> top = root.fRoot->GetTopFolder();
  const TRef<IFolderData> folder = top->FindSubFolders()[0];
  EXPECT_EQ(changes(TEntryView(*top)), "210|0.875|1|-2560||");  // 450, 2048, 3 files; before 240, 4608, 2 files
  EXPECT_EQ(changes(TEntryView(*folder->FindSubFolders()[1])), "50||1|512|'new'|");
  EXPECT_EQ(changes(TEntryView(*comparison->FindGone(*folder)[0])), "-40|-1.000|-1|-4096|'gone'|");

  TEarlierFiles earlierFiles(comparison, u'/');
  auto fileChanges = [&](const IFolderData& pFolder) {
    const TRef<const TFileTable> files = pFolder.GetFileTable();
    return changes(TEntryView(*files, (*files)[0], &pFolder, &earlierFiles));
  };
  EXPECT_EQ(fileChanges(*folder), "100|0.500|0|512||");
  EXPECT_EQ(fileChanges(*top), "100||1|512|'new'|");
  EXPECT_EQ(fileChanges(*folder->GetFilesNode()), "100|0.500|0|512||");
}

// A list that shows files remembers a selected one by its folder and name, whatever happens to the table.
TEST(EntryView, AFileIsFoundAgainAfterARefresh) {
  TMemoryRoot root;
  Fill(root.Top());
  root.Scan();
  const TRef<IFolderData> a = root.fRoot->GetTopFolder()->FindSubFolders()[0];
  const TRef<const TFileTable> before = a->GetFileTable();
  const TEntryView selected(*before, (*before)[0], a->GetFilesNode().get());
  const TRef<IHierarchicalElement> folder = selected.GetParentFolder();
  const std::u16string name(selected.GetObjectName());
  EXPECT_EQ(folder.get(), a.get()) << "the [Files] node comes and goes with the sub-folders";

  TMemoryEntry& entry = *root.Top().Find(u"a");
  entry.Find(u"inner")->fRemoved = true;
  entry.Find(u"x.C")->fRemoved = true;
  entry.AddFile(u"bigger", 1000);
  entry.AddFile(u"x.C", 700);
  a->Refresh(false);
  ASSERT_TRUE(root.fRoot->WaitForScan(kForever));
  const TRef<const TFileTable> after = folder->AsFolder()->GetFileTable();
  ASSERT_NE(after, nullptr);
  const TFileRecord* found = after->Find(name);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->fSize, 700);
  EXPECT_EQ(after->NameOf(*found), u"x.C");
  EXPECT_EQ(after->Find(u"X.C"), nullptr);
}

}  // namespace
}  // namespace Vantrel

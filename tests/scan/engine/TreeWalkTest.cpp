// Walks: what is visited in which order, against a slow recursion; branches, limits and the end.

#include <gtest/gtest.h>

#include <algorithm>

#include "model/tree/TreeWalk.h"
#include "platform/text/Text.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel {
namespace {

using namespace Vantrel::Testing;
using TLines = std::vector<std::string>;

std::string LineOf(int pLevel, std::u16string_view pPath, std::u16string_view pName) {
  return std::to_string(pLevel) + " " + ToUtf8(pPath) + " " + ToUtf8(pName);
}

// A view that shows the top and some of the other folders expanded.
bool IsExpanded(const IFolderData& pFolder, int pLevel) {
  return pLevel == 0 || pFolder.GetSize() % 3 != 0;
}

void AddExpanded(TExpandedFolders& pExpanded, IFolderData& pFolder, int pLevel = 0) {
  if (IsExpanded(pFolder, pLevel)) pExpanded.Add(TRef<IFolderData>(&pFolder));
  for (const TRef<IFolderData>& child : pFolder.FindSubFolders()) AddExpanded(pExpanded, *child, pLevel + 1);
}

// What the nodes say when they are asked one by one, largest first.
void AppendSlowly(TLines& pLines, IFolderData& pFolder, int pLevel, const TTreeWalkSettings& pSettings) {
  const bool isShown = pFolder.IsFileGroup() ? pSettings.fShowsFileGroups : pSettings.fShowsFolders;
  if (isShown) pLines.push_back(LineOf(pLevel, pFolder.GetFullPath(), pFolder.GetObjectName()));
  if (pLevel == pSettings.fDeepestLevel || (pSettings.fExpanded && !IsExpanded(pFolder, pLevel))) return;
  bool isFilesNodeShown = false;
  for (const TRef<IFolderData>& child : pFolder.FindSubFolders()) {
    if (child->IsFileGroup() && !pSettings.fShowsFileGroups) continue;
    isFilesNodeShown |= child->IsFileGroup();
    if (child->GetSize() >= pSettings.fSmallest) AppendSlowly(pLines, *child, pLevel + 1, pSettings);
  }
  if (!pSettings.fShowsFiles || isFilesNodeShown) return;
  for (const TRef<IHierarchicalElement>& file : pFolder.FindFiles())
    if (file->GetSize() >= pSettings.fSmallest)
      pLines.push_back(LineOf(pLevel + 1, file->GetFullPath(), file->GetObjectName()));
}

std::string LineOf(const TTreeRow& pRow) {
  const TEntryView entry = pRow.View();
  return LineOf(pRow.fLevel, entry.GetFullPath(), entry.GetObjectName());
}

// Collects rows, and counts the folders that are open. With fWalk, it walks each branch on level 1 by itself.
struct TBranches : ITreeVisitor {
  explicit TBranches(TLines& pLines) : fLines(pLines) {}
  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override {
    fLines.push_back(LineOf(pRow));
    fOpen += pIsComplete ? 0 : 1;
    return true;
  }
  bool EndNode(const TTreeRow&) override { return --fOpen >= 0; }
  bool VisitFile(const TTreeRow& pRow) override {
    fLines.push_back(LineOf(pRow));
    return true;
  }
  bool TakesBranch(const TTreeRow& pRow) override {
    if (!fWalk || pRow.fLevel != 1) return false;
    TBranches branch(fLines);
    EXPECT_TRUE(fWalk->Run(pRow.fFolder, branch, pRow.fLevel));
    return true;
  }
  TLines& fLines;
  const TTreeWalk* fWalk = nullptr;
  int fOpen = 0;
};

TEST(TreeWalk, VisitsWhatTheSettingsShow) {
  TMemoryRoot root;
  TRandomTree random(7);
  for (int i = 0; i < 6; ++i) random.AddFolder(root.Top(), 4);
  random.AddFile(root.Top());
  root.Scan();
  IFolderData& top = *root.fRoot->GetTopFolder();
  const auto expanded = std::make_shared<TExpandedFolders>();
  AddExpanded(*expanded, top);
  for (int form = 0; form < 128; ++form) {
    TTreeWalkSettings settings;
    settings.fShowsFolders = form & 1;
    settings.fShowsFileGroups = form & 2;
    settings.fShowsFiles = form & 4;
    if (form & 8) settings.fDeepestLevel = 2;
    if (form & 16) settings.fSmallest = 20'000;
    if (form & 64) settings.fExpanded = expanded;
    TLines expected, found;
    AppendSlowly(expected, top, 0, settings);
    if ((form & 7) && !(form & 64)) {
      ASSERT_FALSE(expected.empty()) << form;
    }
    if (form & 32) {  // in no order, the same rows
      settings.fOrder = TSiblingOrder::soAny;
      std::sort(expected.begin(), expected.end());
    }
    const TTreeWalk walk(settings);
    auto collect = [&](const TTreeRow& pRow) {
      found.push_back(LineOf(pRow));
      return true;
    };
    EXPECT_TRUE(walk.ForEach(top, collect));
    if (form & 32) std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected) << form;

    // A walk ends where it is told to.
    found.clear();
    const size_t most = expected.size() / 2;
    EXPECT_EQ(expected.empty(), walk.ForEach(top, [&](const TTreeRow& pRow) {
      collect(pRow);
      return found.size() <= most;
    }));
    EXPECT_EQ(found.size(), std::min(most + 1, expected.size())) << form;
  }
}

TEST(TreeWalk, BranchesWalkedApartAreTheWhole) {
  TMemoryRoot root;
  TRandomTree random(8);
  for (int i = 0; i < 6; ++i) random.AddFolder(root.Top(), 3);
  root.Scan();
  TTreeWalkSettings settings;
  settings.fShowsFiles = true;
  settings.fDeepestLevel = 3;
  settings.fOrder = TSiblingOrder::soColumn;
  settings.fOrderColumn = TColumn::mdName;
  settings.fDescending = false;
  const TTreeWalk walk(settings);
  TLines whole, pieces;
  TBranches together(whole), apart(pieces);
  apart.fWalk = &walk;
  EXPECT_TRUE(walk.Run(*root.fRoot->GetTopFolder(), together));
  EXPECT_TRUE(walk.Run(*root.fRoot->GetTopFolder(), apart));
  EXPECT_EQ(whole, pieces);
  EXPECT_EQ(together.fOpen, 0);
  ASSERT_GT(whole.size(), 50u);
  EXPECT_EQ(walk.RowsOf(*root.fRoot->GetTopFolder()),
            1 + root.fRoot->GetTopFolder()->GetFolders() + root.fRoot->GetTopFolder()->GetFiles());

  // Siblings by name: the names of the folders on level 1 ascend.
  TLines names;
  for (const std::string& line : whole)
    if (line.starts_with("1 ") && !line.ends_with("[Files]")) names.push_back(line);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

}  // namespace
}  // namespace Vantrel

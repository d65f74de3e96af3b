#include "presentation/lists/TopFoldersList.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/tree/TreeWalk.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

namespace {

constexpr size_t kMostFolders = 100;

struct TFound {
  TRef<IFolderData> fFolder;
  TSizeValues fOwn;
};

// A folder with sub-folders keeps its files in a node of their own. In any other folder all files are its own.
TSizeValues OwnValues(const IFolderData& pFolder) {
  if (const TRef<IFolderData> files = pFolder.GetFilesNode()) return files->GetValues();
  return pFolder.GetFolders() == 0 ? pFolder.GetValues() : TSizeValues();
}

std::vector<TFound> LargestFolders(IFolderData& pTop, TColumn pLeading) {
  const auto sizeOf = [pLeading](const TFound& pFound) { return LeadingSizeOf(pFound.fOwn, pLeading); };
  const auto isLarger = [&](const TFound& pA, const TFound& pB) { return sizeOf(pA) > sizeOf(pB); };
  std::vector<TFound> largest;  // a heap with the smallest one at its front
  TTreeWalkSettings settings;
  settings.fShowsFileGroups = false;
  settings.fOrder = TSiblingOrder::soAny;
  TTreeWalk(settings).ForEach(pTop, [&](const TTreeRow& pRow) {
    TFound found{&pRow.fFolder, OwnValues(pRow.fFolder)};
    if (found.fOwn.fFiles == 0) return true;
    if (largest.size() == kMostFolders) {
      if (!isLarger(found, largest.front())) return true;
      std::pop_heap(largest.begin(), largest.end(), isLarger);
      largest.pop_back();
    }
    largest.push_back(std::move(found));
    std::push_heap(largest.begin(), largest.end(), isLarger);
    return true;
  });
  std::sort_heap(largest.begin(), largest.end(), isLarger);
  return largest;
}

}  // namespace

TList TopFoldersList(const IHierarchicalRoot& pRoot) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  std::vector<TListColumn> columns;
  AppendSumColumns(columns, pRoot, nullptr);
  columns.push_back(Catalogued(TColumn::mdFullPath));
  TList list = NewRootList(u"Folders with the largest files", pRoot, top != nullptr, std::move(columns));
  if (!top) return list;
  const TShares shares(pRoot, *top);
  for (const TFound& found : LargestFolders(*top, SizeColumns(pRoot).front())) {
    TListRow row;
    AppendSums(row, found.fOwn, shares);
    row.fKey = found.fFolder->GetFullPath();
    row.fValues.emplace_back(row.fKey);
    row.fNode = found.fFolder;
    list.fRows.push_back(std::move(row));
  }
  return list;
}

}  // namespace Vantrel::Presentation

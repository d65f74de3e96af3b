#include "export/HierarchicalExport.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Kiv::Hierarchical::Exporting {

TValueFormat TBaseExport::ValueFormat() const {
  TValueFormat format;
  format.fSizeUnit = fSettings.fAutomaticUnit ? TSizeUnit::suAutomatic : fSettings.fSizeUnit;
  format.fPlainByteValues = fSettings.fUsePlainByteValues;
  format.fShowUnits = fSettings.fAutomaticUnit;  // a fixed unit stands in the header line, once
  return format;
}

bool TBaseExport::IsIncluded(const IFolderData& pFolder) const {
  return (fSettings.fIncludedObjectTypes & (pFolder.IsFileGroup() ? ioFileGroups : ioFolders)) != 0;
}

namespace {

// Equal ones stay in the order of their sizes.
void SortByChange(std::vector<TRef<IFolderData>>& pChildren) {
  std::vector<std::pair<int64_t, TRef<IFolderData>>> keyed;
  for (TRef<IFolderData>& child : pChildren) {
    const TMetaDataValue value = child->GetValue(TColumn::mdSizeChange);
    const auto* change = std::get_if<int64_t>(&value);
    keyed.emplace_back(change ? std::abs(*change) : 0, std::move(child));
  }
  std::stable_sort(keyed.begin(), keyed.end(), [](const auto& pA, const auto& pB) { return pA.first > pB.first; });
  std::transform(keyed.begin(), keyed.end(), pChildren.begin(), [](auto& pItem) { return std::move(pItem.second); });
}

}  // namespace

// Of a folder on that level; none when the settings go no deeper. A folder that is not included itself still leads to those
// beneath it.
std::vector<TRef<IFolderData>> TBaseExport::IncludedChildren(IFolderData& pFolder, size_t pLevel) const {
  if (pFolder.IsFileGroup() || static_cast<int64_t>(pLevel) >= fSettings.fRecursionLevel.fLevel) return {};
  std::vector<TRef<IFolderData>> children = pFolder.FindSubFolders();
  const bool withFileGroups = (fSettings.fIncludedObjectTypes & ioFileGroups) != 0;
  std::erase_if(children, [&](const TRef<IFolderData>& pChild) {
    return (!withFileGroups && pChild->IsFileGroup()) || !TakesIn(*pChild);
  });
  if (fSortByChange) SortByChange(children);
  return children;
}

bool TBaseExport::WalkNodes(IFolderData& pTop, IExportVisitor& pVisitor) const {
  // One entry per open level instead of a call per level: trees are deeper than stacks.
  struct TOpenFolder {
    TRef<IFolderData> fFolder;
    std::vector<TRef<IFolderData>> fChildren;
    size_t fNext = 0;
  };
  std::vector<TOpenFolder> open;
  auto begin = [&](TRef<IFolderData> pFolder) {
    std::vector<TRef<IFolderData>> children = IncludedChildren(*pFolder, open.size());
    const TExportRow row{*pFolder, static_cast<int32_t>(open.size())};
    if (IsIncluded(*pFolder) && !pVisitor.BeginNode(row, children.empty())) return false;
    if (!children.empty()) open.push_back({std::move(pFolder), std::move(children)});
    return true;
  };
  if (!begin(TRef<IFolderData>(&pTop))) return false;
  while (!open.empty()) {
    TOpenFolder& folder = open.back();
    if (folder.fNext < folder.fChildren.size()) {
      if (!begin(std::move(folder.fChildren[folder.fNext++]))) return false;
      continue;
    }
    const TRef<IFolderData> finished = std::move(folder.fFolder);
    open.pop_back();
    if (IsIncluded(*finished) && !pVisitor.EndNode({*finished, static_cast<int32_t>(open.size())})) return false;
  }
  return true;
}

bool TBaseExport::WalkTree(IFolderData& pTop, const std::function<bool(const TExportRow&)>& pRow) const {
  struct TRows : IExportVisitor {
    explicit TRows(const std::function<bool(const TExportRow&)>& pCall) : fCall(pCall) {}
    bool BeginNode(const TExportRow& pNode, bool) override { return fCall(pNode); }
    bool EndNode(const TExportRow&) override { return true; }
    const std::function<bool(const TExportRow&)>& fCall;
  } rows(pRow);
  return WalkNodes(pTop, rows);
}

bool TFileStreamExport::Export(IHierarchicalRoot& pRoot, ILineOutput& pOutput) {
  fOutput = &pOutput;
  fFailed = false;
  WriteRoot(pRoot);
  fOutput = nullptr;
  return !fFailed;
}

bool TFileStreamExport::WriteLine(std::string_view pLine) {
  if (!fFailed) fFailed = !fOutput->WriteLine(pLine);
  return !fFailed;
}

}  // namespace Kiv::Hierarchical::Exporting

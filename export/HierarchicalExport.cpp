#include "export/HierarchicalExport.h"

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

bool TBaseExport::WalkTree(IFolderData& pTop, const std::function<bool(const TExportRow&)>& pRow) const {
  // One entry per open level instead of a call per level: trees are deeper than stacks.
  struct TOpenFolder {
    std::vector<TRef<IFolderData>> fChildren;
    size_t fNext = 0;
  };
  if (IsIncluded(pTop) && !pRow({pTop, 0})) return false;
  std::vector<TOpenFolder> open;
  auto enter = [&](IFolderData& pFolder) {
    if (static_cast<int64_t>(open.size()) < fSettings.fRecursionLevel.fLevel)
      open.push_back({pFolder.FindSubFolders()});
  };
  enter(pTop);
  while (!open.empty()) {
    TOpenFolder& folder = open.back();
    if (folder.fNext == folder.fChildren.size()) {
      open.pop_back();
      continue;
    }
    const TRef<IFolderData> child = std::move(folder.fChildren[folder.fNext++]);
    if (IsIncluded(*child) && !pRow({*child, static_cast<int32_t>(open.size())})) return false;
    if (!child->IsFileGroup()) enter(*child);
  }
  return true;
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

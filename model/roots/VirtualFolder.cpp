#include "model/roots/VirtualFolder.h"

#include "model/tree/CustomFolder.h"

namespace Vantrel {

TMetaDataValue TVirtualFolder::ShareOf(const IHierarchicalElement& pWhole) const {
  const TRef<IHierarchicalRoot> root = pWhole.GetRoot();
  if (!root) return {};
  const bool allocated = root->GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated;
  const int64_t whole = allocated ? pWhole.GetAllocated() : pWhole.GetSize();
  const int64_t part = allocated ? GetAllocated() : GetSize();
  return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

TMetaDataValue TVirtualFolder::GetValue(TColumn pColumn) const {
  switch (pColumn) {
    case TColumn::mdParentPath:
      return fParent->GetFullPath();
    case TColumn::mdPercentOfParent:
      return ShareOf(*fParent);
    case TColumn::mdPercentOfRoot:
    case TColumn::mdDepth: {
      int64_t depth = 1;
      TRef<IHierarchicalElement> top = fParent;
      while (TRef<IHierarchicalElement> next = top->GetParentFolder()) {
        top = std::move(next);
        ++depth;
      }
      return pColumn == TColumn::mdDepth ? TMetaDataValue(depth) : ShareOf(*top);
    }
    default:
      return fFolder->GetValue(pColumn);
  }
}

std::u16string TVirtualFolder::GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
  if (pColumn >= TColumn::mdCount) return fFolder->GetFormattedValue(pColumn, pFormat);  // reports the wrong column
  return FormatValue(pColumn, GetValue(pColumn), pFormat);
}

std::vector<TRef<IFolderData>> TVirtualFolder::FindSubFolders() {
  std::vector<TRef<IFolderData>> children = fFolder->FindSubFolders();
  for (TRef<IFolderData>& child : children)
    child = MakeRef<TVirtualFolder>(std::move(child), TRef<IHierarchicalElement>(this));
  return children;
}

TRef<IFolderData> TVirtualFolder::GetFilesNode() const {
  TRef<IFolderData> files = fFolder->GetFilesNode();
  if (!files) return nullptr;
  return MakeRef<TVirtualFolder>(std::move(files), TRef<IHierarchicalElement>(const_cast<TVirtualFolder*>(this)));
}

}  // namespace Vantrel

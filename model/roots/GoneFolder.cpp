#include "model/roots/GoneFolder.h"

namespace Vantrel {

TGoneFolder::TGoneFolder(IFolderData& pParent, std::u16string_view pName, bool pIsFileGroup)
    : TCustomFolderData(TRef<IHierarchicalElement>(&pParent), pParent.GetRoot(), pName), fIsFileGroup(pIsFileGroup) {
  fFolderState = fsCreatedForComparison | fsIsDummyForComparison | fsSubFolderScanningFinished;
}

std::u16string_view TGoneFolder::GetObjectName() const {
  return fIsFileGroup ? TFileGroupData::kName : TCustomFolderData::GetObjectName();
}

// A "[Files]" row has the path of its folder.
std::u16string TGoneFolder::GetFullPath() const {
  const TRef<IHierarchicalElement> parent = fIsFileGroup ? GetParentFolder() : nullptr;
  return parent ? parent->GetFullPath() : TCustomFolderData::GetFullPath();
}

std::vector<TRef<IFolderData>> TGoneFolder::FindSubFolders() {
  const TRef<IHierarchicalRoot> root = GetRoot();
  const TRef<IComparison> comparison = root ? root->GetComparison() : nullptr;
  return comparison ? SortedBySize(comparison->FindGone(*this)) : std::vector<TRef<IFolderData>>();
}

}  // namespace Vantrel

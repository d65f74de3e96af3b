#include "model/roots/VirtualFolder.h"

#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

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

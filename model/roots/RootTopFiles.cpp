// The part of the roots that keeps the list of the largest files complete when some of them leave the tree.

#include "model/roots/Root.h"

namespace Vantrel {

TRef<ITopSizeList> TCustomRoot::GetTopSizeList() const {
  TCriticalSectionLock lock(fLock);
  return fTopSizeList;
}

// Files that left the list make room for the next largest files, as after a fresh scan. This runs once, when the tree
// has its new shape. Files listed while the list was still full may be among the next largest. A tree that keeps no
// files cannot find them, so the list stays shorter until the next scan.
void TCustomRoot::RefillTopSizeList() {
  if (!fTopSizeListHasGaps.exchange(false) || !GetScanConfiguration()->GetKeepFiles()) return;
  const TRef<ITopSizeList> list = GetTopSizeList();
  list->Clear();
  std::vector<TRef<IFolderData>> stack;
  if (TRef<IFolderData> top = GetTopFolder()) stack.push_back(std::move(top));
  while (!stack.empty()) {
    TRef<IFolderData> folder = std::move(stack.back());
    stack.pop_back();
    if (folder->IsFileGroup()) continue;
    OfferFiles(*list, *folder);
    for (TRef<IFolderData>& child : folder->FindSubFolders()) stack.push_back(std::move(child));
  }
}

void TCustomRoot::OfferFiles(ITopSizeList& pList, IFolderData& pFolder) {
  TRef<const TFileTable> table = pFolder.GetFileTable();
  for (size_t i = 0; table && i < table->Count(); ++i) {
    const TFileRecord& file = (*table)[i];
    if (file.fSize >= pList.GetThreshold())
      pList.Add({file.fSize, file.fAllocated, file.fLastChangeDate, TRef<IHierarchicalElement>(&pFolder),
                 std::u16string(table->NameAt(i)), file.fLastAccessDate, file.fCreationDate, file.fAttributes});
  }
}

}  // namespace Vantrel

// Roots: the list of the largest files, kept complete when some of them leave the tree.

#include "model/roots/Root.h"

namespace Vantrel {

TRef<ITopSizeList> TCustomRoot::GetTopSizeList() const {
  TCriticalSectionLock lock(fLock);
  return fTopSizeList;
}

// What left the list makes room for the next largest files elsewhere, as after a fresh scan. Done once, when the tree
// has its new shape: files that were listed while the list was still full may be among them. A tree that keeps no files
// cannot tell which they are: the list then stays shorter until the next scan.
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

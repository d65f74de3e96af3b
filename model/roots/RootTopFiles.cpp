// The part of the roots that keeps the list of the largest files complete when some of them leave the tree.

#include "model/roots/Root.h"
#include "model/tree/TreeWalk.h"

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
  FillTopSizeList(*list);
}

// Any number of files is offered to the list, which keeps the largest.
void TCustomRoot::FillTopSizeList(ITopSizeList& pList) {
  const TRef<IFolderData> top = GetTopFolder();
  if (!top) return;
  TTreeWalkSettings settings;
  settings.fShowsFolders = settings.fShowsFileGroups = false;
  settings.fShowsFiles = true;
  settings.fOrder = TSiblingOrder::soAny;
  TTreeWalk(settings).ForEach(*top, [&](const TTreeRow& pRow) {
    const TEntryView file = pRow.View();
    if (pList.IsWorthOffering(file.GetSize(), 0))
      pList.Add({file.GetSize(), file.GetAllocated(), file.GetLastChangeDate(), file.GetParentFolder(),
                 std::u16string(file.GetObjectName()), file.GetLastAccessDate(), file.GetCreationDate(),
                 file.GetAttributes(), file.GetOwnerKey()});
    return true;
  });
}

}  // namespace Vantrel

#include "presentation/lists/ErrorList.h"

#include <utility>

#include "platform/files/Paths.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

TList ErrorList(const IHierarchicalRoot& pRoot) {
  TList list =
      NewRootList(u"Errors", pRoot, true,
                  {{u"Path", TColumn::mdFullPath}, Catalogued(TColumn::mdError), {u"Remark", TColumn::mdName}});
  for (const TScanError& error : pRoot.GetErrors()) {
    const std::u16string remark = error.fPartial ? u"read in part" : u"";
    list.fRows.push_back({{error.fPath, error.fText, remark}, error.fPath, error.fObject});
  }
  // Threads record errors in any order. Sorting gives the list a fixed order.
  SortRows(list, erRemark, false);
  SortRows(list, erReason, false);
  SortRows(list, erPath, false);
  return list;
}

TList ErrorList(const IHierarchicalRoot& pRoot, const IFolderData& pFolder) {
  TList list = ErrorList(pRoot);
  if (&pFolder == pRoot.GetTopFolder().get()) return list;
  const std::u16string path = pFolder.GetFullPath();
  list.fTitle = u"Errors of " + path;
  std::erase_if(list.fRows,
                [&](const TListRow& pRow) { return !IsSameOrInside(pRow.fKey, path, pRoot.GetPathDelimiter()); });
  return list;
}

}  // namespace Vantrel::Presentation

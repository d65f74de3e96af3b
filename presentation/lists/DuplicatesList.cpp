#include "presentation/lists/DuplicatesList.h"

#include <utility>

#include "presentation/lists/FoundList.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

using Search::TDuplicateGroup;
using Search::TDuplicateName;

std::vector<TColumn> UsualDuplicatesColumns() {
  return {TColumn::mdFullPath, TColumn::mdSize, TColumn::mdLastChange};
}

TList DuplicatesList(std::u16string pTitle, std::span<const TDuplicateGroup> pGroups,
                     std::span<const TColumn> pColumns) {
  // The catalogue's columns give these three the form of their values.
  TList list{std::move(pTitle),
             {{u"Group", TColumn::mdFiles}, {u"Wasted", TColumn::mdSize}, {u"Link", TColumn::mdChangeState}},
             {}};
  for (const TColumn column : pColumns) list.fColumns.push_back(Catalogued(column));
  int64_t number = 0;
  for (const TDuplicateGroup& group : pGroups) {
    ++number;
    for (const TDuplicateName& name : group.fNames) {
      TListRow row;
      row.fValues = {number, group.fWasted, name.fIsLink ? TMetaDataValue(u"hard link") : TMetaDataValue()};
      for (const TColumn column : pColumns) {
        const bool isFolderSize = column == TColumn::mdSize && name.fFile->IsFolder();
        row.fValues.push_back(isFolderSize ? TMetaDataValue(group.fSize) : FoundValue(name.fFile->fItem, column));
      }
      row.fKey = name.fFile->GetFullPath();
      row.fNode = name.fFile->fItem.fNode;
      list.fRows.push_back(std::move(row));
    }
  }
  return list;
}

}  // namespace Vantrel::Presentation

#include "presentation/lists/FoundList.h"

#include <algorithm>
#include <utility>

#include "model/tree/FileNames.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

using Search::TFoundItem;

// The path is the last column for people, so a long path pushes no other column out of sight.
std::vector<TColumn> UsualFoundColumns(bool pForPrograms) {
  if (!pForPrograms) return {TColumn::mdSize, TColumn::mdLastChange, TColumn::mdFullPath};
  return {TColumn::mdFullPath,   TColumn::mdSize,     TColumn::mdAllocated, TColumn::mdLastChange,
          TColumn::mdLastAccess, TColumn::mdCreation, TColumn::mdAttributes};
}

TMetaDataValue FoundValue(const TFoundItem& pItem, TColumn pColumn) {
  switch (pColumn) {
    case TColumn::mdName:
      return pItem.fName;
    case TColumn::mdFullPath:
      return pItem.FullPath();
    case TColumn::mdParentPath:
      return pItem.fFolder->fPath;
    case TColumn::mdExtension:
      return pItem.fIsFolder ? TMetaDataValue() : std::u16string(ExtensionColumnOfName(pItem.fName));
    case TColumn::mdSize:
      return pItem.fHasSize ? TMetaDataValue(pItem.fValues.fSize) : TMetaDataValue();
    case TColumn::mdAllocated:
      return pItem.fHasSize ? TMetaDataValue(pItem.fValues.fAllocated) : TMetaDataValue();
    case TColumn::mdLastChange:
      return DateValue(pItem.fValues.fLastChangeDate);
    case TColumn::mdLastAccess:
      return DateValue(pItem.fValues.fLastAccessDate);
    case TColumn::mdCreation:
      return DateValue(pItem.fValues.fCreationDate);
    case TColumn::mdAttributes:
      return int64_t{pItem.fValues.fAttributes};
    case TColumn::mdPathLength:
      return static_cast<int64_t>(pItem.FullPath().size());
    default:
      return {};
  }
}

TList FoundList(std::u16string pTitle, std::span<const TFoundItem> pItems, std::span<const TColumn> pColumns) {
  TList list{std::move(pTitle), {}, {}};
  for (const TColumn column : pColumns) list.fColumns.push_back(Catalogued(column));
  list.fRows.reserve(pItems.size());
  for (const TFoundItem& item : pItems) {
    TListRow row;
    row.fValues.reserve(pColumns.size());
    for (const TColumn column : pColumns) row.fValues.push_back(FoundValue(item, column));
    row.fKey = item.FullPath();
    row.fNode = item.fNode;
    list.fRows.push_back(std::move(row));
  }
  return list;
}

void SortFound(std::vector<TFoundItem>& pItems, TColumn pColumn, bool pDescending) {
  std::vector<std::pair<TMetaDataValue, size_t>> keyed;
  keyed.reserve(pItems.size());
  for (size_t i = 0; i < pItems.size(); ++i) keyed.emplace_back(FoundValue(pItems[i], pColumn), i);
  std::stable_sort(keyed.begin(), keyed.end(), [&](const auto& pA, const auto& pB) {
    const auto order = CompareValues(pA.first, pB.first);
    return pDescending ? order > 0 : order < 0;
  });
  std::vector<TFoundItem> sorted;
  sorted.reserve(pItems.size());
  for (const auto& [value, index] : keyed) sorted.push_back(std::move(pItems[index]));
  pItems = std::move(sorted);
}

}  // namespace Vantrel::Presentation

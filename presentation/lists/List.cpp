#include "presentation/lists/List.h"

#include <algorithm>

namespace Vantrel::Presentation {

TAlignment AlignmentOf(TColumn pColumn) {
  switch (ColumnInfo(pColumn).fKind) {
    case TColumnKind::ckSize:
    case TColumnKind::ckCount:
    case TColumnKind::ckShare:
      return TAlignment::alRight;
    default:
      return TAlignment::alLeft;
  }
}

std::optional<size_t> FindListColumn(const TList& pList, TColumn pColumn) {
  for (size_t i = 0; i < pList.fColumns.size(); ++i)
    if (pList.fColumns[i].fColumn == pColumn) return i;
  return std::nullopt;
}

void SortRows(TList& pList, size_t pColumn, bool pDescending) {
  std::stable_sort(pList.fRows.begin(), pList.fRows.end(), [&](const TListRow& pA, const TListRow& pB) {
    const auto order = CompareValues(pA.fValues.at(pColumn), pB.fValues.at(pColumn));
    return pDescending ? order > 0 : order < 0;
  });
}

}  // namespace Vantrel::Presentation

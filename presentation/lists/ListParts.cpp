#include "presentation/lists/ListParts.h"

#include <utility>

#include "model/columns/SizeData.h"

namespace Vantrel::Presentation {

TListColumn Catalogued(TColumn pColumn) {
  return {std::u16string(ColumnInfo(pColumn).fCaption), pColumn};
}

TMetaDataValue DateValue(TKivFileTime pDate) {
  return pDate.IsSet() ? TMetaDataValue(pDate) : TMetaDataValue();
}

TShares::TShares(const IHierarchicalRoot& pRoot, const IFolderData& pTop)
    : fOfAllocated(pRoot.GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated),
      fWhole(Basis(pTop.GetSize(), pTop.GetAllocated())) {}

double TShares::Of(int64_t pSize, int64_t pAllocated) const {
  return ShareOfWhole(Basis(pSize, pAllocated), fWhole);
}

TList NewRootList(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, bool pCollected,
                  std::vector<TListColumn> pColumns) {
  std::u16string title = std::u16string(pWhat) + u" of " + pRoot.GetTitle();
  if (!pCollected) title += u" (not collected)";
  return {std::move(title), std::move(pColumns), {}};
}

void AppendSumColumns(std::vector<TListColumn>& pColumns) {
  for (TColumn column : {TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles, TColumn::mdPercentOfRoot})
    pColumns.push_back(Catalogued(column));
}

void AppendSums(TListRow& pRow, const TBasicSizeValues& pValues, const TShares& pShares) {
  pRow.fValues.emplace_back(pValues.fSize);
  pRow.fValues.emplace_back(pValues.fAllocated);
  pRow.fValues.emplace_back(pValues.fFiles);
  pRow.fValues.emplace_back(pShares.Of(pValues.fSize, pValues.fAllocated));
}

}  // namespace Vantrel::Presentation

#include "presentation/lists/ListParts.h"

#include <utility>

#include "model/columns/SizeData.h"

namespace Vantrel::Presentation {

namespace {

bool IsPart(const IHierarchicalRoot& pRoot, const IFolderData* pFolder) {
  return pFolder && pFolder != pRoot.GetTopFolder().get();
}

}  // namespace

std::array<TColumn, 2> SizeColumns(const IHierarchicalRoot& pRoot) {
  if (pRoot.GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated)
    return {TColumn::mdAllocated, TColumn::mdSize};
  return {TColumn::mdSize, TColumn::mdAllocated};
}

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

TRef<IFolderData> FolderOrTop(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder) {
  return pFolder ? std::move(pFolder) : pRoot.GetTopFolder();
}

TList NewFolderList(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, const IFolderData* pFolder,
                    bool pCollected, std::vector<TListColumn> pColumns) {
  TList list = NewRootList(pWhat, pRoot, pCollected, std::move(pColumns));
  if (!IsPart(pRoot, pFolder)) return list;
  list.fTitle = std::u16string(pWhat) + u" of " + pFolder->GetFullPath();
  if (!pCollected) list.fTitle += u" (not collected)";
  return list;
}

void AppendSumColumns(std::vector<TListColumn>& pColumns, const IHierarchicalRoot& pRoot, const IFolderData* pFolder) {
  for (const TColumn column : SizeColumns(pRoot)) pColumns.push_back(Catalogued(column));
  for (const TColumn column : {TColumn::mdFiles, TColumn::mdPercentOfRoot}) pColumns.push_back(Catalogued(column));
  if (IsPart(pRoot, pFolder)) pColumns.back().fCaption = u"% of Folder";
}

void AppendSizes(TListRow& pRow, int64_t pSize, int64_t pAllocated, const TShares& pShares) {
  pRow.fValues.emplace_back(pShares.AreOfAllocated() ? pAllocated : pSize);
  pRow.fValues.emplace_back(pShares.AreOfAllocated() ? pSize : pAllocated);
}

void AppendSums(TListRow& pRow, const TBasicSizeValues& pValues, const TShares& pShares) {
  AppendSizes(pRow, pValues.fSize, pValues.fAllocated, pShares);
  pRow.fValues.emplace_back(pValues.fFiles);
  pRow.fValues.emplace_back(pShares.Of(pValues.fSize, pValues.fAllocated));
}

}  // namespace Vantrel::Presentation

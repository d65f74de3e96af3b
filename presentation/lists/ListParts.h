#pragma once

// The parts that lists have in common: titles, columns of sums, shares, dates.

#include <array>
#include <string_view>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The size that the root's shares are of, mdSize or mdAllocated, and then the other one. It comes first, and orders.
std::array<TColumn, 2> SizeColumns(const IHierarchicalRoot& pRoot);

// A column with the catalogue's caption.
TListColumn Catalogued(TColumn pColumn);

// The date, or no value when it is not known.
TMetaDataValue DateValue(TKivFileTime pDate);

// Computes shares of a root in the same way as the tree's share column.
class TShares {
 public:
  TShares(const IHierarchicalRoot& pRoot, const IFolderData& pTop);
  // From 0 to 1; 0 in an empty root.
  double Of(int64_t pSize, int64_t pAllocated) const;
  bool AreOfAllocated() const { return fOfAllocated; }

 private:
  int64_t Basis(int64_t pSize, int64_t pAllocated) const { return fOfAllocated ? pAllocated : pSize; }

  const bool fOfAllocated;
  const int64_t fWhole;
};

// A list without rows. Its title is "pWhat of ROOT", followed by "(not collected)" if the scan lacks the data.
TList NewRootList(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, bool pCollected,
                  std::vector<TListColumn> pColumns);

// The folder itself, or without one the root's top folder, if there is any.
TRef<IFolderData> FolderOrTop(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder);
// The same as NewRootList for a list of a folder. nullptr stands for the whole root.
TList NewFolderList(std::u16string_view pWhat, const IHierarchicalRoot& pRoot, const IFolderData* pFolder,
                    bool pCollected, std::vector<TListColumn> pColumns);

// The columns of every list of sums, after its first ones: size, allocated, files, share. And their values.
void AppendSumColumns(std::vector<TListColumn>& pColumns, const IHierarchicalRoot& pRoot, const IFolderData* pFolder);
void AppendSums(TListRow& pRow, const TBasicSizeValues& pValues, const TShares& pShares);
// The two sizes in the order of SizeColumns.
void AppendSizes(TListRow& pRow, int64_t pSize, int64_t pAllocated, const TShares& pShares);

}  // namespace Vantrel::Presentation

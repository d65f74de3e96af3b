#pragma once

// The data of charts, from a scanned root.

#include "model/roots/RootInterfaces.h"
#include "presentation/charts/ChartData.h"

namespace Vantrel::Charts {

// What lies in a folder of the root; without one, in the whole root. Values are in the sizes that the root's
// percentages refer to: plain or allocated. Without statistics, because the scan did not collect them, the data has no
// items and its title ends with "(not collected)". Any thread.

// The sub-folders, their sub-folders, and so on, and the files of each folder as one item. Folders far too small for a
// chart are summed up in an item of their parent. A folder without sub-folders shows its files.
TChartData FoldersData(IHierarchicalRoot& pRoot, int pLevels, TRef<IFolderData> pFolder = nullptr);
TChartData ExtensionsData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
// The standard file-type groups with their extensions. An extension of several groups counts in the first, so the
// groups add up to the whole.
TChartData FileTypesData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
TChartData OwnersData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
// The age intervals, the youngest first.
TChartData FileAgesData(IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);

}  // namespace Vantrel::Charts

#pragma once

// The data of charts, from a scanned root.

#include "model/roots/RootInterfaces.h"
#include "presentation/charts/ChartData.h"

namespace Vantrel::Charts {

// Values are in the sizes that the root's percentages refer to: plain or allocated. Without statistics, because the
// scan did not collect them, the data has no items and its title ends with "(not collected)". Any thread.

// The sub-folders of the top folder, their sub-folders, and so on, and the files of each folder as one item. Folders
// far too small for a chart are summed up in an item of their parent. A top folder without sub-folders shows its files.
TChartData FoldersData(IHierarchicalRoot& pRoot, int pLevels);
TChartData ExtensionsData(IHierarchicalRoot& pRoot);
// The standard file-type groups with their extensions. An extension of several groups counts in the first, so the
// groups add up to the whole.
TChartData FileTypesData(IHierarchicalRoot& pRoot);
TChartData OwnersData(IHierarchicalRoot& pRoot);
// The age intervals, the youngest first.
TChartData FileAgesData(IHierarchicalRoot& pRoot);

}  // namespace Vantrel::Charts

#pragma once

// Charts of characters, for reports.

#include "export/walk/HierarchicalExport.h"
#include "model/options/GlobalOptions.h"
#include "presentation/charts/ChartData.h"

namespace Vantrel::Exporting {

// Writes a chart as bars of "#": title, then a line per item with label, value, share of the total, and bar. An empty
// line separates it from earlier output. Lines are as wide as the output says, else 80 columns, and never less than 40.
// False when the output cannot take a line.
bool WriteTextChart(const Charts::TChartData& pData, size_t pMostItems, const TValueFormat& pFormat,
                    ILineOutput& pOutput);

// Writes all charts that the options ask for.
bool WriteChosenCharts(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions, const TValueFormat& pFormat,
                       ILineOutput& pOutput);

}  // namespace Vantrel::Exporting

#pragma once

// Shows the scans of a root as a chart of characters.

#include <string>
#include <vector>

#include "presentation/lists/HistoryList.h"

namespace Vantrel::Exporting {

// The size over time as ASCII characters, for lines of pWidth columns, or 80 when that is 0. The chart has ten lines,
// or three if the size never changed. Empty without entries.
//
// Time runs evenly from the first date to the last. If several scans fall on one character, its column is marked over
// the range of their sizes. A stretch without scans is dotted at the size of the last scan before it. The scale runs
// from the smallest to the largest size, not from zero, so growth of a few per cent shows. Columns with a scan that
// could not read all folders are marked with "?" instead of "*".
std::vector<std::string> HistoryChart(const std::vector<Presentation::THistoryEntry>& pEntries, int pWidth = 0,
                                      bool pDecimalUnits = false);

}  // namespace Vantrel::Exporting

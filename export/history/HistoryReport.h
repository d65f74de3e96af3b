#pragma once

// Shows the scans of a root as a table and as a chart of characters.

#include <string>
#include <string_view>
#include <vector>

#include "export/history/HistoryDatabase.h"
#include "export/text/ListTables.h"

namespace Vantrel::Exporting {

// Whether some of the scans could not read all folders.
bool HasIncompleteScans(const std::vector<Vantrel::History::THistoryEntry>& pEntries);

// The scans of a root as a table, in the given order, which is oldest first. Growth is measured against the last
// earlier row with the same number of unreadable folders. So complete scans are compared with complete ones. Growth is
// empty without such a row, and so is a percentage of zero bytes. The columns for excluded objects and for unreadable
// folders appear if some scan has any. The ID is a text, because users type it to delete a scan.
TListTable HistoryList(std::u16string_view pRootPath, const std::vector<Vantrel::History::THistoryEntry>& pEntries);

// The size over time as ASCII characters, for a terminal of pWidth columns. The chart has ten lines, or three if the
// size never changed. Empty without entries.
//
// Time runs evenly from the first date to the last. If several scans fall on one character, its column is marked over
// the range of their sizes. A stretch without scans is dotted at the size of the last scan before it. The scale runs
// from the smallest to the largest size, not from zero, so growth of a few per cent shows. Columns with a scan that
// could not read all folders are marked with "?" instead of "*".
std::vector<std::string> HistoryChart(const std::vector<Vantrel::History::THistoryEntry>& pEntries, int pWidth = 80);

}  // namespace Vantrel::Exporting

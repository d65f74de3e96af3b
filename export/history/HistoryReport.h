#pragma once

// The scans of a root as a table, and as a chart of characters.

#include <string>
#include <string_view>
#include <vector>

#include "export/history/HistoryDatabase.h"
#include "export/text/ListTables.h"

namespace Vantrel::Exporting {

// Whether some of them could not read all folders.
bool HasIncompleteScans(const std::vector<Vantrel::History::THistoryEntry>& pEntries);

// The scans of a root as a table, in the order given, which is oldest first. Growth is against the last row before in
// which as many folders could not be read, so whole scans are compared with whole ones. It is empty where there is no
// such row, as is a percentage of nothing. The columns of excluded objects and of folders that could not be read are
// there when some scan has any. The ID is a text: it is typed where a scan is to be deleted.
TListTable HistoryList(std::u16string_view pRootPath, const std::vector<Vantrel::History::THistoryEntry>& pEntries);

// The size over time, for a terminal of so many columns: ten lines, or three when the size never changed, of ASCII
// characters. Time runs evenly from the first date to the last. Where several scans fall on one character, the column
// is marked over all that they span; a stretch without scans is dotted at the size of the last one before. The scale
// goes from the smallest to the largest size, not from zero: growth of a few per cent shows. Columns with a scan that
// could not read all folders are marked with "?" instead of "*". Empty without entries.
std::vector<std::string> HistoryChart(const std::vector<Vantrel::History::THistoryEntry>& pEntries, int pWidth = 80);

}  // namespace Vantrel::Exporting

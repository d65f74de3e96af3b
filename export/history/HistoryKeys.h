#pragma once

// The roots and patterns of a history: under which a scan is recorded, and found again.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "export/history/SQLiteDatabase.h"

namespace Vantrel::History {

// The same patterns in the order of their characters, each once. Takes and returns them with tabs in between.
std::u16string PatternInOrder(std::u16string_view pPattern);

// The IDs of a path's rows in ROOTS, of a filter's in PATTERNS; none when it was never recorded. Paths are canonical,
// filters in order.
std::vector<int64_t> FindRoots(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath);
std::vector<int64_t> FindPatterns(TKIVSQLiteDatabase& pDatabase, std::u16string_view pPattern);

// The ID under which a scan is recorded; the row is inserted when there is none.
int64_t RootIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath);
int64_t PatternIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPattern);

}  // namespace Vantrel::History

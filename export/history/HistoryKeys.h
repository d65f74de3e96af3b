#pragma once

// The roots and patterns of a history. A scan is recorded and found by them.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "export/history/SQLiteDatabase.h"

namespace Vantrel::History {

// Sorts the patterns by their characters and removes duplicates. Patterns are separated by tabs, before and after.
std::u16string PatternInOrder(std::u16string_view pPattern);

// The IDs of a path's rows in ROOTS and of a filter's rows in PATTERNS. None if it was never recorded. Paths must be
// canonical and filters sorted.
std::vector<int64_t> FindRoots(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath);
std::vector<int64_t> FindPatterns(TKIVSQLiteDatabase& pDatabase, std::u16string_view pPattern);

// The ID under which a scan is recorded. Inserts the row if it is missing.
int64_t RootIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPath);
int64_t PatternIdOf(TKIVSQLiteDatabase& pDatabase, const std::u16string& pPattern);

}  // namespace Vantrel::History

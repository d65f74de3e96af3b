#pragma once

// Records, reads, deletes and imports the totals of earlier scans. See `docs/history.md`.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/history/SQLiteDatabase.h"
#include "model/roots/RootInterfaces.h"
#include "platform/system/FileTime.h"
#include "presentation/lists/HistoryList.h"
#include "search/patterns/PatternInterfaces.h"

// The totals of earlier scans, kept in an SQLite file. docs/history.md describes the file.
namespace Vantrel::History {

using Presentation::THistoryEntry;

// The scans of one root under one filter, oldest first.
struct TRootHistory {
  std::u16string fPath;
  std::u16string fPattern;  // empty for scans without a filter
  std::vector<THistoryEntry> fEntries;
};

// A finished scan to be recorded.
struct TScannedRoot {
  std::u16string fPath;
  TRef<IHierarchicalRoot> fRoot;
};

// The root's active filter as one text. The patterns are sorted, so their given order makes no difference. Empty
// without an active filter. Scans with different texts have different histories.
std::u16string HistoryPattern(const IHierarchicalRoot& pRoot);
std::u16string HistoryPattern(const PatternMatching::IPatterns& pPatterns);

// Local date and time, as days since 1899-12-30 with the time of day as the fraction. It is exact to a millisecond in
// both directions. For the hour repeated at the end of summer time, one of the two times is used.
double DayCountOfTime(TKivFileTime pTime);
TKivFileTime TimeOfDayCount(double pDays);

// Writes and reads history files. Each call opens the file and closes it again. Any thread and other programs may use
// the file at the same time.
//
// Root paths are made canonical, so any spelling of a path works. If a root has wildcards, pass the path with them.
// Failures throw an EDatabaseError that names the file and the statement; the file then stays as before. A file of
// another kind is never changed.
class THistoryDatabaseReaderWriter {
 public:
  // pVersion is the program's version, recorded with each scan.
  explicit THistoryDatabaseReaderWriter(std::string pVersion = {}) : fVersion(std::move(pVersion)) {}

  // Creates the file's folder if it is missing. Makes the file a history unless it is one.
  void CreateHistoryDatabase(const std::u16string& pDatabase) const;
  // Whether all tables exist.
  static bool CheckTableStructure(TKIVSQLiteDatabase& pDatabase);
  // Whether the file holds a history. False for an empty file, as before its first scan. EDatabaseError for files of
  // other kinds and of newer versions.
  static bool HoldsHistory(TKIVSQLiteDatabase& pDatabase);

  // Records the root's last scan, and creates the file if missing. A scan that could not read some folders is marked as
  // incomplete. EInvalidOperation when no scan has ended or the last one was stopped. The totals of a stopped scan
  // would look as if files had been deleted.
  void WriteRootHistoryData(const std::u16string& pDatabase, const std::u16string& pRootPath,
                            IHierarchicalRoot& pRoot) const;
  // Records all roots or none.
  void WriteHistoryDataList(const std::u16string& pDatabase, const std::vector<TScannedRoot>& pRoots) const;

  // The scans of a root under a filter, by date. If letter case distinguishes folders, a path in another letter case is
  // a fallback. It is used only when neither a history nor a folder has the exact path. If letter case does not count,
  // all spellings share one history.
  std::vector<THistoryEntry> ReadRootHistoryData(const std::u16string& pDatabase, const std::u16string& pRootPath,
                                                 std::u16string_view pPattern = {}) const;
  // All scans, by path and pattern.
  std::vector<TRootHistory> ReadAllHistoryData(const std::u16string& pDatabase) const;
  // The number of scans of the root under all filters.
  int64_t GetNumberOfScans(const std::u16string& pDatabase, const std::u16string& pRootPath) const;
  // Deletes one scan, and its root with the last scan. Returns the number of scans left of the root.
  // EInvalidArgumentValue when the scan does not exist.
  int64_t DeleteHistoryData(const std::u16string& pDatabase, int64_t pScanId) const;
  // Adds the scans of one file to another, which is created if missing. Scans are the same if everything recorded of
  // them is equal. Scans that the target already has are not added again. Returns the number of scans added.
  int64_t ImportDataFromTo(const std::u16string& pSource, const std::u16string& pTarget) const;

  // The statement by which ReadRootHistoryData finds a root's scans.
  static std::string GetScansSQL(int64_t pRootId, std::optional<int64_t> pPatternId);

 private:
  std::string fVersion;
};

}  // namespace Vantrel::History

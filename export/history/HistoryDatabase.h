#pragma once

// The totals of earlier scans: recorded, read, deleted, imported; `docs/history.md`.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export/history/SQLiteDatabase.h"
#include "model/roots/RootInterfaces.h"
#include "platform/system/FileTime.h"
#include "search/patterns/PatternInterfaces.h"

// The totals of earlier scans, kept in an SQLite file; docs/history.md describes it.
namespace Vantrel::History {

using Vantrel::History::TKIVSQLiteDatabase;

// One scan. Sizes in bytes.
struct THistoryEntry {
  int64_t fId = 0;  // by which it can be deleted
  TKivFileTime fDate;
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  int64_t fFiles = 0;
  int64_t fFreeSpace = 0;
  std::string fVersion;  // of the program; empty when it is not known
  std::optional<int64_t> fExcludedObjects;
  int64_t fUnreadFolders = 0;  // folders that could not be read; without them the totals are incomplete
};

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

// What is in force of the root's filter, as one text, in an order of its own: the order in which patterns were given
// makes no difference. Empty when nothing is in force. Scans with different texts have different histories.
std::u16string HistoryPattern(const IHierarchicalRoot& pRoot);
std::u16string HistoryPattern(const PatternMatching::IPatterns& pPatterns);

// Local date and time as days since 1899-12-30 with the time of day as the fraction. Exact to a millisecond in both
// directions; of the hour that the end of summer time repeats, one of the two is meant.
double DayCountOfTime(TKivFileTime pTime);
TKivFileTime TimeOfDayCount(double pDays);

// Writes and reads history files. Each call opens the file and closes it again; any thread, and other programs, may do
// so at once. Root paths are brought to their canonical form, so any spelling of a path will do; give that with the
// wildcards where the root has some. What fails is an EDatabaseError that names the file and the statement; the file is
// then as it was before. A file of another kind is never written to.
class THistoryDatabaseReaderWriter {
 public:
  // The program's version, which is recorded with each scan.
  explicit THistoryDatabaseReaderWriter(std::string pVersion = {}) : fVersion(std::move(pVersion)) {}

  // Makes the file a history, and the folder that it lies in, where they are missing.
  void CreateHistoryDatabase(const std::u16string& pDatabase) const;
  // Whether all tables are there.
  static bool CheckTableStructure(TKIVSQLiteDatabase& pDatabase);
  // Refuses files of other kinds and of newer versions. False for one that holds nothing at all, as before the first
  // scan is in it.
  static bool HoldsHistory(TKIVSQLiteDatabase& pDatabase);

  // Records the root's last scan, creating the file when it is missing. A scan that could not read some folders is
  // marked as incomplete. EInvalidOperation when no scan has ended, or it was stopped: its totals would look as if
  // files had gone.
  void WriteRootHistoryData(const std::u16string& pDatabase, const std::u16string& pRootPath,
                            IHierarchicalRoot& pRoot) const;
  // All of them or none.
  void WriteHistoryDataList(const std::u16string& pDatabase, const std::vector<TScannedRoot>& pRoots) const;

  // The scans of a root under a filter, by date. Where letter case tells folders apart, a path with other case is taken
  // only when neither a history nor a folder has the very path. Where it does not, all spellings are one history.
  std::vector<THistoryEntry> ReadRootHistoryData(const std::u16string& pDatabase, const std::u16string& pRootPath,
                                                 std::u16string_view pPattern = {}) const;
  // Everything, by path and pattern.
  std::vector<TRootHistory> ReadAllHistoryData(const std::u16string& pDatabase) const;
  // How many scans of the root there are, whatever the filter.
  int64_t GetNumberOfScans(const std::u16string& pDatabase, const std::u16string& pRootPath) const;
  // Removes one scan, and its root with the last one. Returns how many scans of the root remain. EInvalidArgumentValue
  // when there is no such scan.
  int64_t DeleteHistoryData(const std::u16string& pDatabase, int64_t pScanId) const;
  // Adds the scans of one file to another, which is created when it is missing. A scan is the same when all that is
  // recorded of it is: what the target has already is not added again. Returns how many scans were added.
  int64_t ImportDataFromTo(const std::u16string& pSource, const std::u16string& pTarget) const;

  // The statement that ReadRootHistoryData finds a root's scans with.
  static std::string GetScansSQL(int64_t pRootId, std::optional<int64_t> pPatternId);

 private:
  std::string fVersion;
};

}  // namespace Vantrel::History

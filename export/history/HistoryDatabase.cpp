#include "export/history/HistoryDatabase.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "export/history/HistoryKeys.h"
#include "platform/files/CanonicalPath.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::History {

using Vantrel::History::EDatabaseError;
using Vantrel::History::TSQLiteTransaction;

namespace {

// Other programs read these tables, so their text must not change in any character.
constexpr std::string_view kTables =
    "CREATE TABLE IF NOT EXISTS ROOTS (ID\tINTEGER NOT NULL UNIQUE,PATH TEXT NOT NULL UNIQUE,"
    "PRIMARY KEY(ID AUTOINCREMENT));"
    "CREATE TABLE IF NOT EXISTS SCANS (ID\tINTEGER NOT NULL UNIQUE,ROOT_ID\tINTEGER NOT NULL,\tDATE\tREAL NOT NULL,"
    "\tVERSION\tTEXT NULL, SIZE\tINTEGER NOT NULL,\tALLOCATED\tINTEGER NOT NULL,\tFILES\tINTEGER NOT NULL,"
    "\tFREE_SPACE\tINTEGER NOT NULL,PATTERN_ID INTEGER,EXCLUDED_OBJECTS INTEGER, PRIMARY KEY(ID AUTOINCREMENT),"
    "\tFOREIGN KEY(ROOT_ID) REFERENCES ROOTS(ID),FOREIGN KEY(PATTERN_ID) REFERENCES PATTERNS(ID));"
    "CREATE TABLE IF NOT EXISTS PATTERNS (ID\tINTEGER NOT NULL UNIQUE, PATTERN\tTEXT NOT NULL UNIQUE,"
    " PRIMARY KEY(ID AUTOINCREMENT));";

std::string SchemaSQL() {
  return std::string(kTables) + TKIVSQLiteDatabase::GetCreateIndexSQL("INDEX_1", "SCANS", "ROOT_ID ASC") +
         TKIVSQLiteDatabase::GetCreateIndexSQL("INDEX_2", "SCANS", "ROOT_ID ASC ,PATTERN_ID ASC") +
         TKIVSQLiteDatabase::GetCreateIndexSQL("INDEX_3", "ROOTS", "PATH ASC") +
         TKIVSQLiteDatabase::GetCreateIndexSQL("INDEX_4", "PATTERNS", "PATTERN ASC");
}

constexpr int64_t kTicksPerMillisecond = TKivFileTime::kTicksPerSecond / 1000;
constexpr int64_t kMillisecondsPerDay = TKivFileTime::kTicksPerDay / kTicksPerMillisecond;
// File times count from the year 1601.
constexpr int64_t kDaysTo1899 =
    (std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) - std::chrono::sys_days(std::chrono::year(1601) / 1 / 1))
        .count();

// 0 if the system does not tell.
int64_t OffsetTicks(TKivFileTime pTime) {
  int64_t seconds = 0;
  return LocalOffset(pTime, seconds) ? seconds * TKivFileTime::kTicksPerSecond : 0;
}

// Marks an incomplete scan, after the version: "1.2.3 (incomplete: 4)". The tables have no column for it.
constexpr std::string_view kUnreadMark = "(incomplete: ";

std::string VersionText(const THistoryEntry& pEntry) {
  if (pEntry.fUnreadFolders == 0) return pEntry.fVersion;
  return fmt::format("{}{}{}{})", pEntry.fVersion, pEntry.fVersion.empty() ? "" : " ", kUnreadMark,
                     pEntry.fUnreadFolders);
}

void ReadVersion(std::string pText, THistoryEntry& pEntry) {
  const size_t mark = pText.rfind(kUnreadMark);
  if (mark != std::string::npos && pText.ends_with(')')) {
    const size_t number = mark + kUnreadMark.size();
    int64_t unread = 0;
    if (TryParseInt64(std::string_view(pText).substr(number, pText.size() - number - 1), unread) && unread > 0) {
      pEntry.fUnreadFolders = unread;
      pText.resize(mark);
      if (pText.ends_with(' ')) pText.pop_back();
    }
  }
  pEntry.fVersion = std::move(pText);
}

// EntryOfRow reads the columns in this order.
constexpr std::string_view kEntryColumns =
    "SCANS.ID, DATE, SIZE, ALLOCATED, FILES, FREE_SPACE, VERSION, EXCLUDED_OBJECTS";
constexpr int kEntryColumnCount = 8;

// A negative number is no size. Only another program can have written it, and differences would overflow.
int64_t GetAmount(const TKIVSQLiteDatabase& pDatabase, int pColumn) {
  return std::max<int64_t>(0, pDatabase.GetInteger(pColumn));
}

THistoryEntry EntryOfRow(const TKIVSQLiteDatabase& pDatabase) {
  THistoryEntry entry;
  entry.fId = pDatabase.GetInteger(0);
  entry.fDate = TimeOfDayCount(pDatabase.GetReal(1));
  entry.fSize = GetAmount(pDatabase, 2);
  entry.fAllocated = GetAmount(pDatabase, 3);
  entry.fFiles = GetAmount(pDatabase, 4);
  entry.fFreeSpace = GetAmount(pDatabase, 5);
  ReadVersion(ToUtf8(pDatabase.GetText(6)), entry);
  if (!pDatabase.IsNull(7)) entry.fExcludedObjects = GetAmount(pDatabase, 7);
  return entry;
}

void OpenForReading(TKIVSQLiteDatabase& pDatabase, const std::u16string& pFile) {
  pDatabase.ConnectToDatabase(pFile, false);
}

void OpenForWriting(TKIVSQLiteDatabase& pDatabase, const std::u16string& pFile) {
  // The list of a user's folders is private, so other users must not read the file.
  try {
    CreateFolderOf(AbsolutePath(pFile), TFolderAccess::faUserAlone);
  } catch (const EOSError& error) {
    throw EDatabaseError(fmt::format("The database {} cannot be opened: {}", ToQuotedDisplay(pFile), error.what()));
  }
  pDatabase.ConnectToDatabase(pFile, true);
}

// Runs within a transaction. So if several programs run it at once, only one finds the file empty.
void RequireTables(TKIVSQLiteDatabase& pDatabase) {
  if (!THistoryDatabaseReaderWriter::HoldsHistory(pDatabase)) pDatabase.ExecuteQuery(SchemaSQL());
}

int64_t CountScans(TKIVSQLiteDatabase& pDatabase, int64_t pRootId) {
  pDatabase.OpenQuery(TKIVSQLiteDatabase::GetSimpleSelectSQL("COUNT(ID)", "SCANS", "ROOT_ID = ?"), {pRootId});
  const int64_t count = pDatabase.GetInteger(0);
  pDatabase.CloseQuery();
  return count;
}

// A scan to be written. The pattern is empty without a filter.
struct TScanRow {
  std::u16string fPath;
  std::u16string fPattern;
  THistoryEntry fEntry;
};

TScanRow RowOfRoot(const std::u16string& pRootPath, IHierarchicalRoot& pRoot, const std::string& pVersion) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top || (pRoot.GetState() & (rsFinished | rsCancelled | rsScanning)) != rsFinished)
    throw EInvalidOperation("THistoryDatabaseReaderWriter.WriteRootHistoryData: the scan of " +
                            ToQuotedDisplay(pRootPath) + " has not run to its end");
  TScanRow row{CanonicalPath(pRootPath), HistoryPattern(pRoot), {}};
  if (row.fPath.empty()) throw EInvalidArgumentValue("THistoryDatabaseReaderWriter.WriteRootHistoryData: pRootPath");
  const TSizeValues totals = top->GetValues();
  row.fEntry.fDate = pRoot.GetScanTimeStamp();
  row.fEntry.fSize = totals.fSize;
  row.fEntry.fAllocated = totals.fAllocated;
  row.fEntry.fFiles = totals.fFiles;
  row.fEntry.fFreeSpace = pRoot.GetStorageInformation().fFreeBytes;
  row.fEntry.fVersion = pVersion;
  if (pRoot.GetState() & rsHasErrors)
    row.fEntry.fUnreadFolders = std::max<int64_t>(1, static_cast<int64_t>(pRoot.GetErrors().size()));
  if (!row.fPattern.empty()) row.fEntry.fExcludedObjects = pRoot.GetProgress().fExcludedObjects;
  return row;
}

void InsertScan(TKIVSQLiteDatabase& pDatabase, const TScanRow& pRow) {
  const THistoryEntry& entry = pRow.fEntry;
  const int64_t root = RootIdOf(pDatabase, pRow.fPath);
  std::string values = fmt::format("{},{},{},{},{},{},{}", root, DayCountOfTime(entry.fDate),
                                   TKIVSQLiteDatabase::GetSQLString(FromUtf8(VersionText(entry))), entry.fSize,
                                   entry.fAllocated, entry.fFiles, entry.fFreeSpace);
  values += pRow.fPattern.empty() ? ",null" : fmt::format(",{}", PatternIdOf(pDatabase, pRow.fPattern));
  values += entry.fExcludedObjects ? fmt::format(",{}", *entry.fExcludedObjects) : ",null";
  const std::string insert = TKIVSQLiteDatabase::GetInsertSQL(
      "SCANS", "ROOT_ID,DATE,VERSION,SIZE,ALLOCATED,FILES,FREE_SPACE,PATTERN_ID,EXCLUDED_OBJECTS", values);
  pDatabase.ExecuteQuery(insert + ";");
}

// Selects everything recorded of a scan except its ID. It uses the IDs that the target has for the scan's root and
// pattern. Scans with equal values are numbered.
std::string NumberedScansSQL(std::string_view pSchema) {
  constexpr std::string_view columns =
      "TARGET_ROOTS.ID, S.DATE, S.VERSION, S.SIZE, S.ALLOCATED, S.FILES, S.FREE_SPACE, TARGET_PATTERNS.ID, "
      "S.EXCLUDED_OBJECTS";
  return fmt::format(
      "SELECT {1}, ROW_NUMBER() OVER (PARTITION BY {1}) FROM {0}.SCANS S "
      "JOIN {0}.ROOTS R ON R.ID = S.ROOT_ID JOIN main.ROOTS TARGET_ROOTS ON TARGET_ROOTS.PATH = R.PATH "
      "LEFT JOIN {0}.PATTERNS P ON P.ID = S.PATTERN_ID "
      "LEFT JOIN main.PATTERNS TARGET_PATTERNS ON TARGET_PATTERNS.PATTERN = P.PATTERN",
      pSchema, columns);
}

// EXCEPT treats NULLs as equal, unlike "=".
std::string ImportSQL() {
  constexpr std::string_view columns =
      "ROOT_ID, DATE, VERSION, SIZE, ALLOCATED, FILES, FREE_SPACE, PATTERN_ID, EXCLUDED_OBJECTS";
  return fmt::format(
      "WITH NEW_SCANS ({0}, NUMBER) AS ({1} EXCEPT {2}) "
      "INSERT INTO main.SCANS ({0}) SELECT {0} FROM NEW_SCANS ORDER BY DATE, ROOT_ID, NUMBER;",
      columns, NumberedScansSQL("source"), NumberedScansSQL("main"));
}

// Refuses a source with scans whose root or pattern is missing there. Such a scan would be imported under another
// filter, or not at all.
void RefuseDanglingIds(TKIVSQLiteDatabase& pDatabase, const std::u16string& pSource) {
  const std::string check = "PRAGMA source.foreign_key_check;";
  if (!pDatabase.OpenOrExecuteQuery(check)) return;
  pDatabase.Fail(fmt::format("scans of {} belong to no root or pattern there", ToQuotedDisplay(pSource)), check);
}

}  // namespace

double DayCountOfTime(TKivFileTime pTime) {
  const int64_t local = pTime.fTicks + OffsetTicks(pTime);
  const int64_t days = local / TKivFileTime::kTicksPerDay - kDaysTo1899;
  return static_cast<double>(days) +
         static_cast<double>(local % TKivFileTime::kTicksPerDay) / static_cast<double>(TKivFileTime::kTicksPerDay);
}

TKivFileTime TimeOfDayCount(double pDays) {
  // A file time cannot hold days beyond these limits, the years 1601 and 9999.
  constexpr double kLastDay = 2'958'465;
  if (!(pDays > -static_cast<double>(kDaysTo1899) && pDays <= kLastDay)) return {};
  const double milliseconds = pDays * static_cast<double>(kMillisecondsPerDay);
  const int64_t local = (std::llround(milliseconds) + kDaysTo1899 * kMillisecondsPerDay) * kTicksPerMillisecond;
  // The offset depends on the time that is being computed. The second step corrects the hours around a clock change.
  TKivFileTime time{local - OffsetTicks({local})};
  time.fTicks = local - OffsetTicks(time);
  return time;
}

void THistoryDatabaseReaderWriter::CreateHistoryDatabase(const std::u16string& pDatabase) const {
  TKIVSQLiteDatabase database;
  OpenForWriting(database, pDatabase);
  if (HoldsHistory(database)) return;  // a history that is read-only is no error here
  TSQLiteTransaction transaction(database);
  RequireTables(database);
  transaction.Commit();
}

bool THistoryDatabaseReaderWriter::CheckTableStructure(TKIVSQLiteDatabase& pDatabase) {
  for (const char* table : {"ROOTS", "SCANS", "PATTERNS"})
    if (!pDatabase.CheckTableExists(table)) return false;
  return true;
}

bool THistoryDatabaseReaderWriter::HoldsHistory(TKIVSQLiteDatabase& pDatabase) {
  // The order matters. All tables are created at once, so a program that sees any table sees them all. That holds even
  // while another program is creating them.
  const std::string tables = TKIVSQLiteDatabase::GetSimpleSelectSQL("name", "sqlite_master");
  const bool holdsSomething = pDatabase.OpenOrExecuteQuery(tables);
  pDatabase.CloseQuery();
  if (holdsSomething && !CheckTableStructure(pDatabase))
    pDatabase.Fail("this is a database of another kind, not a history of scans", tables);
  // Histories have no format number so far. A change to the meaning of the tables must set one.
  const std::string version = "PRAGMA user_version;";
  pDatabase.OpenQuery(version);
  const int64_t number = pDatabase.GetInteger(0);
  pDatabase.CloseQuery();
  if (number != 0) pDatabase.Fail(fmt::format("the format {} is of a newer version of this program", number), version);
  return holdsSomething;
}

void THistoryDatabaseReaderWriter::WriteRootHistoryData(const std::u16string& pDatabase,
                                                        const std::u16string& pRootPath,
                                                        IHierarchicalRoot& pRoot) const {
  WriteHistoryDataList(pDatabase, {{pRootPath, TRef<IHierarchicalRoot>(&pRoot)}});
}

void THistoryDatabaseReaderWriter::WriteHistoryDataList(const std::u16string& pDatabase,
                                                        const std::vector<TScannedRoot>& pRoots) const {
  // Looking up canonical paths may take long, and no other program can write once the transaction has begun. So it is
  // done first.
  std::vector<TScanRow> rows;
  for (const TScannedRoot& root : pRoots) rows.push_back(RowOfRoot(root.fPath, *root.fRoot, fVersion));
  TKIVSQLiteDatabase database;
  OpenForWriting(database, pDatabase);
  TSQLiteTransaction transaction(database);
  RequireTables(database);
  for (const TScanRow& row : rows) InsertScan(database, row);
  transaction.Commit();
}

std::string THistoryDatabaseReaderWriter::GetScansSQL(int64_t pRootId, std::optional<int64_t> pPatternId) {
  const std::string pattern = pPatternId ? fmt::format("PATTERN_ID = {}", *pPatternId) : "PATTERN_ID IS NULL";
  return TKIVSQLiteDatabase::GetSimpleSelectSQL(
      kEntryColumns, "SCANS", fmt::format("ROOT_ID = {} AND {} ORDER BY DATE, SCANS.ID", pRootId, pattern));
}

std::vector<THistoryEntry> THistoryDatabaseReaderWriter::ReadRootHistoryData(const std::u16string& pDatabase,
                                                                             const std::u16string& pRootPath,
                                                                             std::u16string_view pPattern) const {
  TKIVSQLiteDatabase database;
  OpenForReading(database, pDatabase);
  if (!HoldsHistory(database)) return {};
  std::vector<std::optional<int64_t>> patterns;
  if (pPattern.empty())
    patterns.emplace_back();
  else
    for (const int64_t id : FindPatterns(database, PatternInOrder(pPattern))) patterns.emplace_back(id);
  std::vector<THistoryEntry> entries;
  for (const int64_t root : FindRoots(database, CanonicalPath(pRootPath)))
    for (const std::optional<int64_t>& pattern : patterns)
      for (database.OpenQuery(GetScansSQL(root, pattern)); database.HasRow(); database.NextRow())
        entries.push_back(EntryOfRow(database));
  std::stable_sort(entries.begin(), entries.end(), [](const THistoryEntry& pA, const THistoryEntry& pB) {
    return std::pair(pA.fDate.fTicks, pA.fId) < std::pair(pB.fDate.fTicks, pB.fId);
  });
  return entries;
}

std::vector<TRootHistory> THistoryDatabaseReaderWriter::ReadAllHistoryData(const std::u16string& pDatabase) const {
  TKIVSQLiteDatabase database;
  OpenForReading(database, pDatabase);
  if (!HoldsHistory(database)) return {};
  std::vector<TRootHistory> histories;
  database.OpenQuery(fmt::format(
      "SELECT {}, PATH, PATTERN FROM SCANS LEFT JOIN ROOTS ON ROOTS.ID = ROOT_ID LEFT JOIN PATTERNS ON PATTERNS.ID = "
      "PATTERN_ID ORDER BY PATH, PATTERN, DATE, SCANS.ID",
      kEntryColumns));
  for (; database.HasRow(); database.NextRow()) {
    std::u16string path = database.GetText(kEntryColumnCount);
    std::u16string pattern = database.GetText(kEntryColumnCount + 1);
    if (histories.empty() || histories.back().fPath != path || histories.back().fPattern != pattern)
      histories.push_back({std::move(path), std::move(pattern), {}});
    histories.back().fEntries.push_back(EntryOfRow(database));
  }
  return histories;
}

int64_t THistoryDatabaseReaderWriter::GetNumberOfScans(const std::u16string& pDatabase,
                                                       const std::u16string& pRootPath) const {
  TKIVSQLiteDatabase database;
  OpenForReading(database, pDatabase);
  if (!HoldsHistory(database)) return 0;
  int64_t count = 0;
  for (const int64_t root : FindRoots(database, CanonicalPath(pRootPath))) count += CountScans(database, root);
  return count;
}

int64_t THistoryDatabaseReaderWriter::DeleteHistoryData(const std::u16string& pDatabase, int64_t pScanId) const {
  TKIVSQLiteDatabase database;
  OpenForReading(database, pDatabase);
  const std::string scan = fmt::format("ID = {}", pScanId);
  const bool holdsHistory = HoldsHistory(database);
  TSQLiteTransaction transaction(database);
  if (!holdsHistory || !database.OpenOrExecuteQuery(TKIVSQLiteDatabase::GetSimpleSelectSQL("ROOT_ID", "SCANS", scan)))
    throw EInvalidArgumentValue(fmt::format("THistoryDatabaseReaderWriter.DeleteHistoryData: {} holds no scan {}",
                                            ToQuotedDisplay(pDatabase), pScanId));
  const int64_t root = database.GetInteger(0);
  database.ExecuteQuery(TKIVSQLiteDatabase::GetDeleteSQL("SCANS", scan));
  const int64_t remaining = CountScans(database, root);
  if (remaining == 0) database.ExecuteQuery(TKIVSQLiteDatabase::GetDeleteSQL("ROOTS", "ID = ?"), {root});
  transaction.Commit();
  return remaining;
}

int64_t THistoryDatabaseReaderWriter::ImportDataFromTo(const std::u16string& pSource,
                                                       const std::u16string& pTarget) const {
  if (CanonicalPath(pSource) == CanonicalPath(pTarget)) return 0;  // the import would wait for itself
  TKIVSQLiteDatabase database;
  OpenForReading(database, pSource);
  if (!HoldsHistory(database)) return 0;
  CreateHistoryDatabase(pTarget);
  // OpenForReading does not create the target if it has just been removed. Attached files are not created either.
  OpenForReading(database, pTarget);
  database.AttachDatabase(pSource, "source");
  TSQLiteTransaction transaction(database);
  RefuseDanglingIds(database, pSource);
  database.ExecuteQuery("INSERT OR IGNORE INTO main.ROOTS (PATH) SELECT PATH FROM source.ROOTS ORDER BY ID;");
  database.ExecuteQuery(
      "INSERT OR IGNORE INTO main.PATTERNS (PATTERN) SELECT PATTERN FROM source.PATTERNS ORDER BY ID;");
  database.ExecuteQuery(ImportSQL());
  const int64_t added = database.ChangedRows();
  transaction.Commit();
  return added;
}

}  // namespace Vantrel::History

#include "export/history/ChecksumDatabase.h"

#include <fmt/format.h>

#include <array>
#include <cstring>
#include <utility>

#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::History {

using HashUtils::TMD5Hash;
using Search::TCachedSumKind;

namespace {

// What the file says of itself. The version changes with the table, and with the bytes that a small checksum reads.
constexpr int64_t kApplicationId = 0x56434B53;
constexpr int64_t kVersion = 1;

constexpr std::string_view kColumns =
    "VOLUME,FILE_ID,FILE_ID_HIGH,KIND,SIZE,CHANGED,STATUS_CHANGED,SUM_1,SUM_2,ROW_CHECK";
constexpr std::string_view kTable =
    "CREATE TABLE CHECKSUMS (VOLUME INTEGER NOT NULL,FILE_ID INTEGER NOT NULL,FILE_ID_HIGH INTEGER NOT NULL,"
    "KIND INTEGER NOT NULL,SIZE INTEGER NOT NULL,CHANGED INTEGER NOT NULL,STATUS_CHANGED INTEGER NOT NULL,"
    "SUM_1 INTEGER NOT NULL,SUM_2 INTEGER NOT NULL,ROW_CHECK INTEGER NOT NULL,"
    "PRIMARY KEY(VOLUME,FILE_ID,FILE_ID_HIGH,KIND)) WITHOUT ROWID;";

// A statement is parsed once for so many rows.
constexpr size_t kRowsPerStatement = 500;
// What a run computes is written this often, so that little is lost when it is killed.
constexpr size_t kMostUnwritten = 20'000;
constexpr std::chrono::seconds kLongestUnwritten{30};

using TWords = std::array<int64_t, 7>;

TWords WordsOf(const TStoredFileFacts& pFacts, TCachedSumKind pKind) {
  return {static_cast<int64_t>(pFacts.fVolume),
          static_cast<int64_t>(pFacts.fId),
          static_cast<int64_t>(pFacts.fIdHigh),
          static_cast<int64_t>(pKind),
          pFacts.fSize,
          pFacts.fLastChange.fTicks,
          pFacts.fStatusChange.fTicks};
}

template <class TValue>
std::string_view BytesOf(const TValue& pValue) {
  return {reinterpret_cast<const char*>(&pValue), sizeof pValue};
}

TMD5Hash SumOf(std::string_view pBytes, std::string_view pMore = {}) {
  const auto calculator = HashUtils::CreateHashCalculator(HashUtils::TChecksumKind::ckFast);
  calculator->Add(pBytes);
  calculator->Add(pMore);
  return calculator->Finish();
}

// As the table holds them: two numbers.
using TSumWords = std::array<int64_t, 2>;
static_assert(sizeof(TSumWords) == sizeof(TMD5Hash));

int64_t RowCheck(const TWords& pWords, const TSumWords& pSum) {
  int64_t check = 0;
  const TMD5Hash sum = SumOf(BytesOf(pWords), BytesOf(pSum));
  std::memcpy(&check, sum.fBytes.data(), sizeof check);
  return check;
}

int64_t GetNumber(TKIVSQLiteDatabase& pDatabase, const std::string& pSQL) {
  pDatabase.OpenQuery(pSQL);
  const int64_t number = pDatabase.GetInteger(0);
  pDatabase.CloseQuery();
  return number;
}

const std::string kAskKind = "PRAGMA application_id;";

bool IsEmpty(TKIVSQLiteDatabase& pDatabase) {
  return GetNumber(pDatabase, "SELECT COUNT(*) FROM sqlite_master;") == 0 && GetNumber(pDatabase, kAskKind) == 0;
}

}  // namespace

TChecksumDatabase::TChecksumDatabase(const std::u16string& pFile, int pBusyMilliseconds) {
  TCriticalSectionLock fileLock(fFileLock);
  TCriticalSectionLock lock(fLock);
  fLastWrite = TClock::now();
  try {
    CreateFolderOf(AbsolutePath(pFile), TFolderAccess::faUserAlone);
    fDatabase.ConnectToDatabase(pFile, true, pBusyMilliseconds);
    RequireCache();
  } catch (const EException&) {
    GiveUp();
  }
}

void TChecksumDatabase::RequireCache() {
  const std::string ofVersion = "PRAGMA user_version;";
  if (IsEmpty(fDatabase)) {
    TSQLiteTransaction transaction(fDatabase);
    // Another program may have been faster.
    if (IsEmpty(fDatabase))
      fDatabase.ExecuteQuery(
          fmt::format("{} PRAGMA application_id = {}; PRAGMA user_version = {};", kTable, kApplicationId, kVersion));
    transaction.Commit();
  }
  if (GetNumber(fDatabase, kAskKind) != kApplicationId) fDatabase.Fail("the file holds no checksums", kAskKind);
  if (GetNumber(fDatabase, ofVersion) != kVersion)
    fDatabase.Fail("another version of the program made the file", ofVersion);
}

std::optional<TMD5Hash> TChecksumDatabase::Find(const TStoredFileFacts& pFacts, TCachedSumKind pKind) {
  const TMD5Hash key = SumOf(BytesOf(WordsOf(pFacts, pKind)));
  {
    TCriticalSectionLock lock(fLock);
    if (!fProblem.empty() || fLoadedVolumes.contains(pFacts.fVolume)) return FindLoaded(key);
  }
  TCriticalSectionLock fileLock(fFileLock);
  TCriticalSectionLock lock(fLock);
  try {
    if (fProblem.empty() && fLoadedVolumes.insert(pFacts.fVolume).second) LoadVolume(pFacts.fVolume);
  } catch (const EDatabaseError&) {
    GiveUp();
  }
  return FindLoaded(key);
}

std::optional<TMD5Hash> TChecksumDatabase::FindLoaded(const TMD5Hash& pKey) const {
  const auto found = fSums.find(pKey);
  return found == fSums.end() ? std::nullopt : std::optional(found->second);
}

void TChecksumDatabase::LoadVolume(uint64_t pVolume) {
  fDatabase.OpenQuery(fmt::format("SELECT {} FROM CHECKSUMS WHERE VOLUME = ?", kColumns),
                      {static_cast<int64_t>(pVolume)});
  for (; fDatabase.HasRow(); fDatabase.NextRow()) {
    TWords words;
    for (size_t i = 0; i < words.size(); ++i) words[i] = fDatabase.GetInteger(static_cast<int>(i));
    const TSumWords sum{fDatabase.GetInteger(7), fDatabase.GetInteger(8)};
    if (fDatabase.GetInteger(9) != RowCheck(words, sum)) continue;
    TMD5Hash hash;
    std::memcpy(hash.fBytes.data(), sum.data(), sizeof sum);
    fSums.emplace(SumOf(BytesOf(words)), hash);
  }
  fDatabase.CloseQuery();
}

void TChecksumDatabase::Add(const TStoredFileFacts& pFacts, TCachedSumKind pKind, const TMD5Hash& pHash) {
  {
    TCriticalSectionLock lock(fLock);
    if (!fProblem.empty()) return;
    fAdded.push_back({pFacts, pKind, pHash});
    if (fAdded.size() < kMostUnwritten && TClock::now() - fLastWrite < kLongestUnwritten) return;
  }
  Flush();
}

void TChecksumDatabase::Flush() {
  TCriticalSectionLock fileLock(fFileLock);
  std::vector<TRow> rows;
  {
    TCriticalSectionLock lock(fLock);
    rows = std::exchange(fAdded, {});
    fLastWrite = TClock::now();
    if (rows.empty() || !fProblem.empty()) return;
  }
  try {
    Write(rows);
  } catch (const EDatabaseError&) {
    TCriticalSectionLock lock(fLock);
    GiveUp();
  }
}

void TChecksumDatabase::Write(const std::vector<TRow>& pRows) {
  TSQLiteTransaction transaction(fDatabase);
  std::string sql;
  for (size_t i = 0; i < pRows.size(); ++i) {
    const TWords words = WordsOf(pRows[i].fFacts, pRows[i].fKind);
    TSumWords sum;
    std::memcpy(sum.data(), pRows[i].fHash.fBytes.data(), sizeof sum);
    sql += sql.empty() ? fmt::format("INSERT OR REPLACE INTO CHECKSUMS ({}) VALUES ", kColumns) : ",";
    sql += fmt::format("({},{},{},{})", fmt::join(words, ","), sum[0], sum[1], RowCheck(words, sum));
    if ((i + 1) % kRowsPerStatement != 0 && i + 1 < pRows.size()) continue;
    fDatabase.ExecuteQuery(sql);
    sql.clear();
  }
  transaction.Commit();
}

void TChecksumDatabase::GiveUp() {
  try {
    throw;
  } catch (const EException& error) {
    fProblem = error.what();
  }
  // A statement may hold thousands of numbers.
  constexpr size_t kMostOfStatement = 200;
  const size_t statement = fProblem.find(" on sql: ");
  if (statement != std::string::npos && fProblem.size() > statement + kMostOfStatement)
    fProblem = fProblem.substr(0, statement + kMostOfStatement) + "…";
  fSums.clear();
  fAdded.clear();
}

std::string TChecksumDatabase::Problem() const {
  TCriticalSectionLock lock(fLock);
  return fProblem;
}

}  // namespace Vantrel::History

#include "export/history/SQLiteDatabase.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <memory>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::History {

namespace {

constexpr char16_t kSubstitute = 0x1A;
constexpr size_t kEscapeDigits = 4;

std::string EscapedUtf8(std::u16string_view pText) {
  std::string result;
  for (size_t i = 0; i < pText.size(); ++i) {
    const char16_t unit = pText[i];
    if (IsLeadSurrogate(unit) && i + 1 < pText.size() && IsTrailSurrogate(pText[i + 1])) {
      result += ToUtf8(pText.substr(i++, 2));
    } else if (unit == 0 || unit == kSubstitute || IsLeadSurrogate(unit) || IsTrailSurrogate(unit)) {
      result += fmt::format("\x1A{:04X}", static_cast<unsigned>(unit));
    } else {
      result += ToUtf8({&unit, 1});
    }
  }
  return result;
}

// False unless the text is four digits as EscapedUtf8 writes them.
bool TryReadUnit(std::u16string_view pDigits, char16_t& pUnit) {
  if (pDigits.size() != kEscapeDigits) return false;
  unsigned unit = 0;
  for (const char16_t digit : pDigits) {
    const size_t value = std::u16string_view(u"0123456789ABCDEF").find(digit);
    if (value == std::u16string_view::npos) return false;
    unit = unit * 16 + static_cast<unsigned>(value);
  }
  pUnit = static_cast<char16_t>(unit);
  return true;
}

std::u16string Unescaped(std::u16string pText) {
  size_t end = 0;
  for (size_t i = 0; i < pText.size(); ++i) {
    char16_t unit = pText[i];
    if (unit == kSubstitute && TryReadUnit(std::u16string_view(pText).substr(i + 1, kEscapeDigits), unit))
      i += kEscapeDigits;
    pText[end++] = unit;
  }
  pText.resize(end);
  return pText;
}

// The path is made absolute, because SQLite gives ":memory:" and names that begin with "file:" a special meaning.
std::string FileNameBytes(const std::u16string& pFile) {
  return ToNativeBytes(AbsolutePath(pFile));
}

std::string Quoted(std::string_view pText) {
  std::string literal = "'";
  for (const char character : pText) {
    if (character == '\'') literal += '\'';
    literal += character;
  }
  return literal + '\'';
}

struct TFree {
  void operator()(unsigned char* pMemory) const { sqlite3_free(pMemory); }
};

}  // namespace

void TKIVSQLiteDatabase::ConnectToDatabase(const std::u16string& pFile, bool pCreate, int pBusyMilliseconds) {
  CloseConnection();
  fFile = pFile;
  const std::string name = FileNameBytes(pFile);
  // SQLite would use a hidden temporary database for an empty name, and would cut a name at its NUL.
  if (name.empty() || name.find('\0') != std::string::npos)
    throw EDatabaseError(fmt::format("The database {} cannot be opened: no such name can be", ToQuotedDisplay(pFile)));
  const int flags = SQLITE_OPEN_READWRITE | (pCreate ? SQLITE_OPEN_CREATE : 0) | SQLITE_OPEN_NOMUTEX;
  const int result = sqlite3_open_v2(name.c_str(), &fDatabase, flags, nullptr);
  if (result != SQLITE_OK) {
    const int code = fDatabase != nullptr ? sqlite3_system_errno(fDatabase) : 0;
    const std::string why = code != 0 ? SystemErrorText(static_cast<uint32_t>(code)) : sqlite3_errstr(result);
    CloseConnection();
    throw EDatabaseError(fmt::format("The database {} cannot be opened: {}", ToQuotedDisplay(pFile), why));
  }
  sqlite3_busy_timeout(fDatabase, pBusyMilliseconds);
  // Files may come from other users, so code hidden in them is not run.
  sqlite3_db_config(fDatabase, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(fDatabase, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(fDatabase, SQLITE_DBCONFIG_ENABLE_FKEY, 1, nullptr);
}

void TKIVSQLiteDatabase::CloseConnection() noexcept {
  CloseQuery();
  sqlite3_close(fDatabase);
  fDatabase = nullptr;
}

void TKIVSQLiteDatabase::ExecuteQuery(const std::string& pSQL) {
  CloseQuery();
  if (sqlite3_exec(fDatabase, pSQL.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) FailOn(pSQL);
}

void TKIVSQLiteDatabase::ExecuteQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues) {
  for (OpenQuery(pSQL, pValues); HasRow();) NextRow();
  CloseQuery();
}

void TKIVSQLiteDatabase::OpenQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues) {
  CloseQuery();
  fQuerySQL = pSQL;
  if (sqlite3_prepare_v2(fDatabase, pSQL.c_str(), -1, &fQuery, nullptr) != SQLITE_OK) FailOn(pSQL);
  int index = 0;
  for (const TSQLValue& value : pValues) Bind(++index, value);
  NextRow();
}

void TKIVSQLiteDatabase::Bind(int pIndex, const TSQLValue& pValue) {
  const auto* number = std::get_if<int64_t>(&pValue);
  const std::string text = number ? std::string() : std::get<std::string>(pValue);
  const int result = number
                         ? sqlite3_bind_int64(fQuery, pIndex, *number)
                         : sqlite3_bind_text64(fQuery, pIndex, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  if (result != SQLITE_OK) FailOn(fQuerySQL);
}

void TKIVSQLiteDatabase::NextRow() {
  const int result = sqlite3_step(fQuery);
  fHasRow = result == SQLITE_ROW;
  if (result != SQLITE_ROW && result != SQLITE_DONE) FailOn(fQuerySQL);
}

void TKIVSQLiteDatabase::CloseQuery() noexcept {
  sqlite3_finalize(fQuery);
  fQuery = nullptr;
  fHasRow = false;
}

bool TKIVSQLiteDatabase::OpenOrExecuteQuery(const std::string& pSQL) {
  OpenQuery(pSQL);
  if (!fHasRow) CloseQuery();
  return fHasRow;
}

bool TKIVSQLiteDatabase::IsNull(int pColumn) const {
  return sqlite3_column_type(fQuery, pColumn) == SQLITE_NULL;
}

int64_t TKIVSQLiteDatabase::GetInteger(int pColumn) const {
  return sqlite3_column_int64(fQuery, pColumn);
}

double TKIVSQLiteDatabase::GetReal(int pColumn) const {
  return sqlite3_column_double(fQuery, pColumn);
}

std::u16string TKIVSQLiteDatabase::GetText(int pColumn) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(fQuery, pColumn));
  if (text == nullptr) return {};
  return Unescaped(FromUtf8({text, static_cast<size_t>(sqlite3_column_bytes(fQuery, pColumn))}));
}

bool TKIVSQLiteDatabase::CheckTableExists(std::string_view pTable) {
  const std::string condition =
      fmt::format("type = {} AND name = {}", GetSQLString(u"table"), GetSQLString(FromUtf8(pTable)));
  const bool exists = OpenOrExecuteQuery(GetSimpleSelectSQL("name", "sqlite_master", condition));
  CloseQuery();
  return exists;
}

int64_t TKIVSQLiteDatabase::InsertIfDoesNotExists(std::string_view pTable, std::string_view pColumns,
                                                  std::string_view pValues, std::string_view pCondition) {
  if (OpenOrExecuteQuery(GetSimpleSelectSQL("ID", pTable, pCondition))) {
    const int64_t id = GetInteger(0);
    CloseQuery();
    return id;
  }
  ExecuteQuery(GetInsertSQL(pTable, pColumns, pValues));
  return sqlite3_last_insert_rowid(fDatabase);
}

int64_t TKIVSQLiteDatabase::ChangedRows() const {
  return sqlite3_changes64(fDatabase);
}

void TKIVSQLiteDatabase::AttachDatabase(const std::u16string& pFile, std::string_view pSchema) {
  ExecuteQuery(fmt::format("ATTACH ? AS {};", pSchema), {FileNameBytes(pFile)});
}

void TKIVSQLiteDatabase::RequireSoundFile() {
  const std::string check = "PRAGMA integrity_check(1);";
  OpenQuery(check);
  const std::u16string answer = GetText(0);
  CloseQuery();
  if (answer != u"ok") Fail("the file is damaged: " + ToDisplay(answer), check);
}

void TKIVSQLiteDatabase::CopyTo(IByteSink& pTarget) {
  // Data read within a transaction does not change until its end.
  ExecuteQuery("BEGIN; SELECT COUNT(*) FROM sqlite_master;");
  RequireSoundFile();
  sqlite3_int64 length = 0;
  const std::unique_ptr<unsigned char, TFree> bytes(sqlite3_serialize(fDatabase, "main", &length, 0));
  if (!bytes && length != 0) FailOn("COMMIT;");
  ExecuteQuery("COMMIT;");
  if (bytes) pTarget.Write({reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(length)});
}

void TKIVSQLiteDatabase::Fail(std::string_view pWhat, std::string_view pSQL) const {
  throw EDatabaseError(
      fmt::format("The database {}: {} on sql: {}", ToQuotedDisplay(fFile), pWhat, ToDisplay(FromNativeBytes(pSQL))));
}

void TKIVSQLiteDatabase::FailOn(std::string_view pSQL) const {
  Fail(sqlite3_errmsg(fDatabase), pSQL);
}

std::string TKIVSQLiteDatabase::GetInsertSQL(std::string_view pTable, std::string_view pColumns,
                                             std::string_view pValues) {
  return fmt::format("INSERT INTO {} ({}) VALUES ({})", pTable, pColumns, pValues);
}

std::string TKIVSQLiteDatabase::GetDeleteSQL(std::string_view pTable, std::string_view pCondition) {
  return fmt::format("DELETE FROM {} WHERE {}", pTable, pCondition);
}

std::string TKIVSQLiteDatabase::GetSimpleSelectSQL(std::string_view pColumns, std::string_view pTable,
                                                   std::string_view pCondition) {
  std::string sql = fmt::format("SELECT {} FROM {}", pColumns, pTable);
  if (!pCondition.empty()) sql += fmt::format(" WHERE {}", pCondition);
  return sql;
}

std::string TKIVSQLiteDatabase::GetCreateIndexSQL(std::string_view pName, std::string_view pTable,
                                                  std::string_view pColumns) {
  return fmt::format("CREATE INDEX IF NOT EXISTS {} ON {} ({}); ", pName, pTable, pColumns);
}

std::string TKIVSQLiteDatabase::GetSQLString(std::u16string_view pText) {
  return pText.empty() ? "null" : Quoted(EscapedUtf8(pText));
}

TSQLiteTransaction::TSQLiteTransaction(TKIVSQLiteDatabase& pDatabase) : fDatabase(pDatabase) {
  // IMMEDIATE takes the write lock at once. If two programs read first and ask to write later, one of them may be
  // refused.
  fDatabase.ExecuteQuery("BEGIN IMMEDIATE;");
}

TSQLiteTransaction::~TSQLiteTransaction() {
  if (!fOpen) return;
  try {
    fDatabase.ExecuteQuery("ROLLBACK;");
  } catch (const EDatabaseError&) {
    // An error such as a full disk has already ended the transaction. Closing the connection does the rest.
  }
}

void TSQLiteTransaction::Commit() {
  fDatabase.ExecuteQuery("COMMIT;");
  fOpen = false;
}

}  // namespace Vantrel::History

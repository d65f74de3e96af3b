#pragma once

// An SQLite file: its statements and their texts, names that UTF-8 cannot hold, and transactions.

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

struct sqlite3;
struct sqlite3_stmt;

namespace Vantrel::History {

// Reports a database that cannot be used. The message is one line for the user: the file, what is wrong, " on sql: "
// and the failed statement.
class EDatabaseError : public EException {
 public:
  using EException::EException;
};

// A value for a "?" of a statement: a number, or a text of UTF-8.
using TSQLValue = std::variant<int64_t, std::string>;

// A connection to an SQLite file, and functions that make the texts of statements. Failures throw EDatabaseError. One
// thread at a time. Any number of connections may use one file at once, those of other programs too.
//
// Texts go into statements as literals and are read back unchanged, whatever they hold. But SQL cannot hold a NUL
// within a text, and UTF-8 cannot hold a lone surrogate. Such a unit is written as the character U+001A, whose old name
// is SUBSTITUTE, and the unit's four hexadecimal digits in upper case. U+001A itself is written in this way too. Other
// programs can read all other texts as they are.
class TKIVSQLiteDatabase {
 public:
  // Each program holds the file for one transaction only, but there may be many programs.
  static constexpr int kBusyMilliseconds = 60'000;

  TKIVSQLiteDatabase() = default;
  ~TKIVSQLiteDatabase() { CloseConnection(); }
  TKIVSQLiteDatabase(const TKIVSQLiteDatabase&) = delete;
  TKIVSQLiteDatabase& operator=(const TKIVSQLiteDatabase&) = delete;

  // Closes an earlier connection, then opens the file. If the file is missing, it is created with pCreate; otherwise
  // that is an error. A read-only file can still be read. Whether the content is valid shows with the first statement.
  // Each statement waits up to pBusyMilliseconds for other connections to finish.
  void ConnectToDatabase(const std::u16string& pFile, bool pCreate, int pBusyMilliseconds = kBusyMilliseconds);
  // Drops an open query and an open transaction.
  void CloseConnection() noexcept;

  // Runs one or more statements and ignores their results.
  void ExecuteQuery(const std::string& pSQL);
  // Runs one statement with these values for its question marks.
  void ExecuteQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues);
  // Runs one statement up to its first row and closes an earlier query. An open query may keep other connections from
  // writing.
  void OpenQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues = {});
  void CloseQuery() noexcept;
  // Like OpenQuery, for a statement with or without rows. Returns whether there is a row. Without one the query is
  // closed at once.
  bool OpenOrExecuteQuery(const std::string& pSQL);

  // Whether the open query has a current row; go to the next row.
  bool HasRow() const { return fHasRow; }
  void NextRow();
  // The values of the current row. Columns count from 0. NULL gives 0 or an empty text.
  bool IsNull(int pColumn) const;
  int64_t GetInteger(int pColumn) const;
  double GetReal(int pColumn) const;
  std::u16string GetText(int pColumn) const;

  bool CheckTableExists(std::string_view pTable);
  // The ID of the row that meets the condition. If there is none, the row is inserted. Call it within a transaction;
  // otherwise another connection may insert the same row meanwhile.
  int64_t InsertIfDoesNotExists(std::string_view pTable, std::string_view pColumns, std::string_view pValues,
                                std::string_view pCondition);
  // The number of rows changed by the last statement that inserts, updates or deletes.
  int64_t ChangedRows() const;
  // Makes another file's tables available under a schema name.
  void AttachDatabase(const std::u16string& pFile, std::string_view pSchema);
  // Copies all bytes of the file as of one moment, even if other programs write meanwhile. A damaged file is refused
  // before the first byte. Exceptions of the sink are passed on.
  void CopyTo(IByteSink& pTarget);

  // Reports an error in the file that only the caller can detect, with the statement that showed it.
  [[noreturn]] void Fail(std::string_view pWhat, std::string_view pSQL) const;

  static std::string GetInsertSQL(std::string_view pTable, std::string_view pColumns, std::string_view pValues);
  static std::string GetDeleteSQL(std::string_view pTable, std::string_view pCondition);
  // Without a condition, selects from all rows.
  static std::string GetSimpleSelectSQL(std::string_view pColumns, std::string_view pTable,
                                        std::string_view pCondition = {});
  static std::string GetCreateIndexSQL(std::string_view pName, std::string_view pTable, std::string_view pColumns);
  // A literal in quotes, or "null" for an empty text.
  static std::string GetSQLString(std::u16string_view pText);

 private:
  [[noreturn]] void FailOn(std::string_view pSQL) const;
  void Bind(int pIndex, const TSQLValue& pValue);
  void RequireSoundFile();

  std::u16string fFile;
  sqlite3* fDatabase = nullptr;
  sqlite3_stmt* fQuery = nullptr;
  std::string fQuerySQL;
  bool fHasRow = false;
};

// All changes between its construction and Commit take effect together or not at all. Other connections cannot write to
// the file meanwhile; they wait. The constructor waits for them too. The database must outlive this object.
class TSQLiteTransaction {
 public:
  explicit TSQLiteTransaction(TKIVSQLiteDatabase& pDatabase);
  ~TSQLiteTransaction();
  TSQLiteTransaction(const TSQLiteTransaction&) = delete;
  TSQLiteTransaction& operator=(const TSQLiteTransaction&) = delete;
  void Commit();

 private:
  TKIVSQLiteDatabase& fDatabase;
  bool fOpen = true;
};

}  // namespace Vantrel::History

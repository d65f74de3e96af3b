#pragma once

// An SQLite file: statements and their texts, names that UTF-8 cannot hold, transactions.

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

// A database that cannot be used. One line for the user: the file, what is wrong, " on sql: " and the statement that
// met it.
class EDatabaseError : public EException {
 public:
  using EException::EException;
};

// What a statement is given for a "?": a number, or a text of UTF-8.
using TSQLValue = std::variant<int64_t, std::string>;

// A connection to an SQLite file, and the texts of statements. Failures are EDatabaseErrors. For one thread at a time;
// any number of connections, of other programs too, may use one file at once.
//
// Texts go into statements as literals and come back as they were, whatever they hold. SQL knows no NUL within a text,
// and UTF-8 no half of a surrogate pair: such a unit is written as the character U+001A, whose old name is SUBSTITUTE,
// and the unit's four hexadecimal digits in upper case; U+001A itself as well. Every other text stays readable for
// other programs as it is.
class TKIVSQLiteDatabase {
 public:
  // Others hold the file for as long as one transaction takes, but there may be many of them.
  static constexpr int kBusyMilliseconds = 60'000;

  TKIVSQLiteDatabase() = default;
  ~TKIVSQLiteDatabase() { CloseConnection(); }
  TKIVSQLiteDatabase(const TKIVSQLiteDatabase&) = delete;
  TKIVSQLiteDatabase& operator=(const TKIVSQLiteDatabase&) = delete;

  // Ends an earlier connection. A missing file is created when pCreate, else it is an error; one that may not be
  // written can still be read. What the file holds shows with the first statement. A statement waits so long for others
  // to finish.
  void ConnectToDatabase(const std::u16string& pFile, bool pCreate, int pBusyMilliseconds = kBusyMilliseconds);
  // Gives up a query and a transaction that are open.
  void CloseConnection() noexcept;

  // Runs one or more statements, and throws away what they return.
  void ExecuteQuery(const std::string& pSQL);
  // Runs one statement whose question marks stand for these values.
  void ExecuteQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues);
  // Runs one statement up to its first row; an earlier query is closed. An open query may keep others from writing.
  void OpenQuery(const std::string& pSQL, std::initializer_list<TSQLValue> pValues = {});
  void CloseQuery() noexcept;
  // OpenQuery for a statement of either kind: whether there is a row. Without one the query is closed at once.
  bool OpenOrExecuteQuery(const std::string& pSQL);

  // Of the open query: whether it stands on a row; the next one.
  bool HasRow() const { return fHasRow; }
  void NextRow();
  // The row's values, columns counted from 0. NULL gives 0 or an empty text.
  bool IsNull(int pColumn) const;
  int64_t GetInteger(int pColumn) const;
  double GetReal(int pColumn) const;
  std::u16string GetText(int pColumn) const;

  bool CheckTableExists(std::string_view pTable);
  // The ID of the row that meets the condition; it is inserted first when there is none. Only within a transaction can
  // nobody else insert it meanwhile.
  int64_t InsertIfDoesNotExists(std::string_view pTable, std::string_view pColumns, std::string_view pValues,
                                std::string_view pCondition);
  // How many rows the last statement changed that inserts, updates or deletes.
  int64_t ChangedRows() const;
  // Makes another file's tables known under a name of their own.
  void AttachDatabase(const std::u16string& pFile, std::string_view pSchema);
  // All bytes of the file as of one moment, whatever others write meanwhile. A file that is damaged anywhere is refused
  // before the first byte. The sink's failures come through.
  void CopyTo(IByteSink& pTarget);

  // Reports what only the caller can know to be wrong with the file, and the statement that told.
  [[noreturn]] void Fail(std::string_view pWhat, std::string_view pSQL) const;

  static std::string GetInsertSQL(std::string_view pTable, std::string_view pColumns, std::string_view pValues);
  static std::string GetDeleteSQL(std::string_view pTable, std::string_view pCondition);
  // Without a condition: of all rows.
  static std::string GetSimpleSelectSQL(std::string_view pColumns, std::string_view pTable,
                                        std::string_view pCondition = {});
  static std::string GetCreateIndexSQL(std::string_view pName, std::string_view pTable, std::string_view pColumns);
  // A literal in quotes; "null" for an empty text.
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

// Everything from its making to Commit happens as a whole or not at all. Nobody else writes to the file meanwhile; they
// wait, and so does the making. The database must outlive it.
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

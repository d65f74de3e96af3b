#include "export/history/HistoryDocument.h"

#include <utility>

#include "platform/files/CanonicalPath.h"
#include "platform/files/Folders.h"
#include "platform/files/OutputFile.h"
#include "platform/text/Text.h"

namespace Vantrel::History {

using History::THistoryDatabaseReaderWriter;
using History::TKIVSQLiteDatabase;

int64_t THistoryDocument::ImportHistoryFile(const std::u16string& pFile) const {
  return THistoryDatabaseReaderWriter().ImportDataFromTo(pFile, fDatabase);
}

void THistoryDocument::ExportHistoryFile(const std::u16string& pFile) const {
  const std::string refusal = "The history cannot be copied to " + ToQuotedDisplay(pFile);
  if (CanonicalPath(pFile) == CanonicalPath(fDatabase))
    throw EInvalidArgumentValue(refusal + ": it is the history itself");
  // SQLite's side files belong to the old file. SQLite would apply them to the copy.
  for (const char16_t* suffix : {u"-journal", u"-wal"})
    if (PathExists(CanonicalPath(pFile) + suffix)) throw EInvalidArgumentValue(refusal + ": it is a database in use");
  TKIVSQLiteDatabase database;
  database.ConnectToDatabase(fDatabase, false);
  THistoryDatabaseReaderWriter::HoldsHistory(database);
  TOutputFile target(pFile);
  database.CopyTo(target);
  target.Commit();
}

bool THistoryDocument::TryReadAllHistoryData(std::vector<TRootHistory>& pHistories, std::string& pError) const {
  try {
    pHistories = THistoryDatabaseReaderWriter().ReadAllHistoryData(fDatabase);
    return true;
  } catch (const EException& error) {
    pError = error.what();
    return false;
  }
}

}  // namespace Vantrel::History

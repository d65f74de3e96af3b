#pragma once

// Imports and exports whole histories.

#include <cstdint>
#include <string>
#include <vector>

#include "export/history/HistoryDatabase.h"

namespace Vantrel::History {

using History::TRootHistory;

// Imports whole histories into a history file and exports them from it. Any thread. Other programs may use the file
// meanwhile.
class THistoryDocument {
 public:
  // pDatabase is the file of the user's history.
  explicit THistoryDocument(std::u16string pDatabase) : fDatabase(std::move(pDatabase)) {}

  // Adds the scans of another history file that are missing here, and returns their number. On EDatabaseError nothing
  // was added.
  int64_t ImportHistoryFile(const std::u16string& pFile) const;
  // Writes a copy of the history as of one moment. The copy replaces an existing file only when it is complete.
  // EDatabaseError; EOSError; EInvalidArgumentValue when the target is the history itself, or a database to which
  // another program is writing.
  void ExportHistoryFile(const std::u16string& pFile) const;
  // Reads all records, by path and pattern. If they cannot be read, returns false and a line for the user.
  bool TryReadAllHistoryData(std::vector<TRootHistory>& pHistories, std::string& pError) const;

 private:
  std::u16string fDatabase;
};

}  // namespace Vantrel::History

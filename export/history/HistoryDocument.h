#pragma once

// A whole history taken in and out.

#include <cstdint>
#include <string>
#include <vector>

#include "export/history/HistoryDatabase.h"

namespace Vantrel::History {

using History::TRootHistory;

// Takes whole histories into a history file, and out of it. Any thread; others may use the file meanwhile.
class THistoryDocument {
 public:
  // pDatabase: the file of the user's history.
  explicit THistoryDocument(std::u16string pDatabase) : fDatabase(std::move(pDatabase)) {}

  // Adds the scans of another history file that are not here yet. Returns how many those were. EDatabaseError; then
  // nothing was added.
  int64_t ImportHistoryFile(const std::u16string& pFile) const;
  // A copy of the history as of one moment, in place of what is there only when it is complete. EDatabaseError,
  // EOSError; EInvalidArgumentValue when the target is the history itself, or a database that somebody is writing to.
  void ExportHistoryFile(const std::u16string& pFile) const;
  // Everything that is recorded, by path and pattern. False, with a line for the user, when it cannot be read.
  bool TryReadAllHistoryData(std::vector<TRootHistory>& pHistories, std::string& pError) const;

 private:
  std::u16string fDatabase;
};

}  // namespace Vantrel::History

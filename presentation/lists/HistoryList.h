#pragma once

// The list of earlier scans of a root.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/system/FileTime.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// One earlier scan, as the history records it. Sizes are in bytes.
struct THistoryEntry {
  int64_t fId = 0;  // identifies the scan for deletion
  TKivFileTime fDate;
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  int64_t fFiles = 0;
  int64_t fFreeSpace = 0;
  std::string fVersion;  // of the program; empty if unknown
  std::optional<int64_t> fExcludedObjects;
  int64_t fUnreadFolders = 0;  // folders that could not be read; if there are any, the totals are incomplete
};

// Whether some of the scans could not read all folders.
bool HasIncompleteScans(std::span<const THistoryEntry> pEntries);

// The scans of a root as a list, in the given order, which is oldest first. Growth is measured against the last earlier
// row with the same number of unreadable folders. So complete scans are compared with complete ones. Growth is empty
// without such a row, and so is a percentage of zero bytes. The columns for excluded objects and for unreadable folders
// appear if some scan has any. The ID is a text, because users type it to delete a scan.
TList HistoryList(std::u16string_view pRootPath, std::span<const THistoryEntry> pEntries);

}  // namespace Vantrel::Presentation

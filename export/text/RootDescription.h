#pragma once

// What a report says of a root besides its table.

#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"

namespace Vantrel::Exporting {

// What a report says of a root besides its table. All texts are UTF-8 and safe to show on a terminal.

// "/usr - 5.3 GB - 120,000 files - 9,000 folders", and " - incomplete" or " - cancelled" where that is so.
std::string RootHeaderLine(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat);
// "Drive: /home (ext4, /dev/sda1)  Total: 100.0 GB  Free: 40.0 GB (40.0 %)", as of the scan's end. Of an opened file,
// as far as the file says it. Empty when nothing is known.
std::string DriveInformation(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat);
// What is missing from the totals, and how long the scan took or, of an opened file, when it was made; at most
// pListedErrors folders are named, by path order.
std::vector<std::string> ScanSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat, size_t pListedErrors);

// Its part about folders that could not be read; nothing when all could.
std::vector<std::string> ErrorSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat,
                                      size_t pListedErrors);

// "1 file", "1,234 files".
std::string CountText(int64_t pCount, std::string_view pOne, std::string_view pMany, const TValueFormat& pFormat);

}  // namespace Vantrel::Exporting

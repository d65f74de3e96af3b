#pragma once

// The texts of a report about a root, besides the table.

#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"

namespace Vantrel::Exporting {

// The texts of a report about a root, besides the table. All are UTF-8 and safe to show on a terminal.

// "/usr - 5.3 GB - 120,000 files - 9,000 folders", followed by " - incomplete" or " - cancelled" if it applies.
std::string RootHeaderLine(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat);
// "Drive: /home (ext4, /dev/sda1)  Total: 100.0 GB  Free: 40.0 GB (40.0 %)", as at the end of the scan. For an opened
// file, it holds what the file tells. Empty if nothing is known.
std::string DriveInformation(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat);
// What the drive has in use and the tree does not hold: "Not in this tree: 8.9 GB of 199.0 GB in use …". Empty unless
// the root is all of a drive, scanned in this run without a filter.
std::string UnseenInformation(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat);
// What is missing from the totals, and how long the scan took. For an opened file, when the scan was made. At most
// pListedErrors folders are named, in path order.
std::vector<std::string> ScanSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat, size_t pListedErrors);

// The part of ScanSummary about unreadable folders. Empty if all folders were read.
std::vector<std::string> ErrorSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat,
                                      size_t pListedErrors);

// A duration, such as "1.23 seconds".
std::string SecondsText(int64_t pMilliseconds);
// "… and 12 more".
std::string MoreText(int64_t pCount, const TValueFormat& pFormat);
// Such as "1 file" or "1,234 files".
std::string CountText(int64_t pCount, std::string_view pOne, std::string_view pMany, const TValueFormat& pFormat);

}  // namespace Vantrel::Exporting

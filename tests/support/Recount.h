#pragma once

// Counts a storage a second time, slowly.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "tests/support/MemoryEnumerator.h"

// The slow reference: what every folder of a scanned storage must say, counted file by file and folder by folder from
// the description of the storage, with nothing shared with the code that keeps running totals.
namespace Vantrel::Testing {

// All that a folder says of itself and of what lies beneath it.
struct TRecountedFolder {
  TSizeValues fValues;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  bool fLongPaths = false;
  bool fHasFilesNode = false;
  std::map<std::u16string, TBasicSizeValues> fOwners;
  std::map<std::u16string, TBasicSizeValues> fExtensions;
  std::map<int, TBasicSizeValues> fAges;
  std::map<std::u16string, int64_t> fOwnFiles;  // name and size of the files directly in it
};
using TRecount = std::map<std::u16string, TRecountedFolder>;  // by full path

struct TRecountSettings {
  std::u16string fPath = u"/memory";
  char16_t fDelimiter = u'/';
  TKivFileTime fNow;
  std::vector<int64_t> fAgeBounds{1, 7, 30, 182, 365, 730, 2147483647};
  TDateType fAgesDateType = TDateType::dtLastChange;
  bool fFolderDateBasedOnFilesOnly = false;
  size_t fLongPathLength = 260;
};

// What a scan of the storage must find. Faults of listings count: a vanished folder is empty, one whose n-th Next fails
// has its first n - 1 entries.
TRecount RecountStorage(const TMemoryEntry& pTop, const TRecountSettings& pSettings);
// What the nodes of a tree say.
TRecount ReadTree(IFolderData& pTop, TDateType pAgesDateType = TDateType::dtLastChange);
// Empty when both are the same, else a line for each of the first differences.
std::string Difference(const TRecount& pExpected, const TRecount& pActual);

// Size and full path of the largest files, the largest first, equal ones by path.
std::vector<std::pair<int64_t, std::u16string>> LargestFiles(const TMemoryEntry& pTop,
                                                             const TRecountSettings& pSettings, size_t pCount);

}  // namespace Vantrel::Testing

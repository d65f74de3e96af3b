#pragma once

// Sums, statistics, dates and packed files of the folder that is being listed.

#include <boost/unordered/unordered_flat_map.hpp>
#include <memory>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/KeyTotals.h"
#include "model/tree/CustomFolder.h"
#include "model/tree/FileTable.h"

namespace Vantrel::ScanEngine {

// Sums up the files of one folder while it is being listed. A worker keeps one and uses it for folder after folder:
// after the first few folders, counting a file allocates nothing, hashes at most its extension, and takes no lock.
class TFolderAccumulator {
 public:
  // The accumulator is used for one root's scan only: it remembers the keys of that scan's owners.
  explicit TFolderAccumulator(IScanConfiguration& pConfiguration);

  // The worker's own judge of what the scan takes in; nullptr when it takes in everything.
  IEntryFilter* EntryFilter() const { return fEntryFilter.get(); }

  // A new folder: nothing is counted.
  void Begin();
  // The length of the folder's path in UTF-16 units.
  void SetPathLength(size_t pPathLength) { fPathLength = pPathLength; }
  // The enumerator's current entry, a file. When there is no memory for it, all files of the folder are given up: their
  // sums no longer agree with each other.
  void AddFile(const IHierarchicalEnumerator& pEntry);
  bool AreFilesGivenUp() const { return fFilesGivenUp; }
  TKeyId OwnerKeyOf(const IHierarchicalEnumerator& pEntry);

  int64_t FileCount() const { return fValues.fFiles; }
  const TSizeValues& Values() const { return fValues; }
  // What was counted since Begin; good until the next Begin. Gives all files up when there is no memory for it.
  TFileGroupContents Finish();
  // Adds the files worth it to the list of largest files. After Finish.
  void OfferTopFiles(TCustomFolderData& pFolder);

 private:
  void CountFile(const IHierarchicalEnumerator& pEntry);
  void GiveUpFiles();

  struct TTopFile {
    TEntryValues fValues;
    std::u16string fName;
  };

  // Fixed.
  const bool fDoUsers;
  const bool fDoExtensions;
  const bool fKeepFiles;
  const TDateType fAgesDateType;
  const size_t fLongPathLength;
  const TKivFileTime fNow;
  IFileAges* const fFileAges;
  ITopSizeList* const fTopSizeList;
  const std::unique_ptr<IEntryFilter> fEntryFilter;

  // Of the folder.
  size_t fPathLength = 0;
  TSizeValues fValues;
  TKivFileTime fLastAccessDate;
  TKivFileTime fLastChangeDate;
  bool fLongPaths = false;
  bool fFilesGivenUp = false;
  TKeyTotals fOwners;
  TKeyTotals fExtensions;
  TKeyTotals fAges;
  TFileTableBuilder fFiles;
  std::vector<TTopFile> fTopFiles;

  // Of the scan.
  TExtensionKeys fExtensionKeys;
  boost::unordered_flat_map<uint64_t, TKeyId> fOwnerKeys;
  uint64_t fLastOwnerId = 0;
  TKeyId fLastOwnerKey = kNoKey;
};

}  // namespace Vantrel::ScanEngine

#pragma once

// Counts the files of one folder while a worker lists it: sums, statistics, dates and packed file records.

#include <boost/unordered/unordered_flat_map.hpp>
#include <memory>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/KeyTotals.h"
#include "model/tree/CustomFolder.h"
#include "model/tree/FileTable.h"

namespace Vantrel::ScanEngine {

// Adds up the files of one folder while it is being listed. A worker reuses one accumulator for all its folders. After
// the first few folders, counting a file allocates nothing and takes no lock. It hashes at most the file's extension.
class TFolderAccumulator {
 public:
  // An accumulator serves one root's scan only, because it remembers the keys of that scan's owners.
  explicit TFolderAccumulator(IScanConfiguration& pConfiguration);

  // This worker's filter for the scan. nullptr when the scan takes in everything.
  IEntryFilter* EntryFilter() const { return fEntryFilter.get(); }

  // Starts a new folder with all counts at zero.
  void Begin();
  // The length of the folder's path in UTF-16 units.
  void SetPathLength(size_t pPathLength) { fPathLength = pPathLength; }
  // Counts the enumerator's current entry, which is a file. If memory runs out, all files of the folder are given up,
  // since their sums would disagree.
  void AddFile(const IHierarchicalEnumerator& pEntry);
  bool AreFilesGivenUp() const { return fFilesGivenUp; }
  TKeyId OwnerKeyOf(const IHierarchicalEnumerator& pEntry);

  int64_t FileCount() const { return fValues.fFiles; }
  const TSizeValues& Values() const { return fValues; }
  // The counts since Begin, valid until the next Begin. If memory runs out, all files of the folder are given up.
  TFileGroupContents Finish();
  // Adds the folder's largest files to the list of largest files. Call it after Finish.
  void OfferTopFiles(TCustomFolderData& pFolder);

 private:
  void CountFile(const IHierarchicalEnumerator& pEntry);
  void GiveUpFiles();

  struct TTopFile {
    TEntryValues fValues;
    std::u16string fName;
    TKeyId fOwnerKey;
  };

  const bool fDoUsers;
  const bool fDoExtensions;
  const bool fKeepFiles;
  const TDateType fAgesDateType;
  const size_t fLongPathLength;
  const TKivFileTime fNow;
  IFileAges* const fFileAges;
  ITopSizeList* const fTopSizeList;
  const std::unique_ptr<IEntryFilter> fEntryFilter;

  // These values belong to the current folder.
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

  // These values belong to the whole scan.
  TExtensionKeys fExtensionKeys;
  boost::unordered_flat_map<uint64_t, TKeyId> fOwnerKeys;
  uint64_t fLastOwnerId = 0;
  TKeyId fLastOwnerKey = kNoKey;
};

}  // namespace Vantrel::ScanEngine

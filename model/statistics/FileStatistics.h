#pragma once

// A folder's statistics worked out from its table of files, for folders that hold none.

#include <span>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "model/statistics/KeyTotals.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// The three statistics of one folder's files as a listing brought them together. Entries are sorted by key.
struct TListedStatistics {
  std::span<const TKeyedSizeValues> fOwners;
  std::span<const TKeyedSizeValues> fExtensions;
  std::span<const TKeyedSizeValues> fAges;  // by interval index
};

// The three statistics of a folder, as the folder holds them; nullptr for what its root does not collect. A copy shares
// the arrays.
struct TFolderStatistics {
  TRef<ICustomAssocSizeArray> fUsers;
  TRef<ICustomAssocSizeArray> fExtensions;
  TRef<IFileAgeDistribution> fAges;

  bool IsEmpty() const { return !fUsers && !fExtensions && !fAges; }
  // Add and Subtract change the arrays that are here and leave out what is not collected here.
  void Add(const TFolderStatistics& pOther) const;
  void Add(const TListedStatistics& pListed) const;
  void Subtract(const TFolderStatistics& pOther) const;
  // Adds, and makes the arrays that are missing here.
  void AddOrCreate(const TFolderStatistics& pOther);
  // Arrays of its own with the same contents.
  TFolderStatistics Clone() const;
};

// Reads the statistics of folder after folder, as plain records: whoever walks a whole tree keeps one, and nothing is
// allocated per folder. One thread.
//
// A folder without sub-folders, and the "[Files]" node of one with them, hold no statistics of their own as long as the
// scan keeps the files: that is most of all folders, of whose statistics few are ever looked at. Theirs are worked out
// from the table of the files.
class TStatisticsReading {
 public:
  // The files' own; the intervals, date kind and moment of the ages are the configuration's. No table: no files.
  void Read(const TFileTable* pFiles, const IScanConfiguration& pConfiguration);
  // What a folder holds.
  void Read(const TFolderStatistics& pStatistics);
  void Clear();

  // What was read last, good until the next reading; nullptr for what is not collected. Keys that no file has are left
  // out. Users and extensions come in no particular order, ages by ascending interval.
  const std::vector<TKeyedSizeValues>* Users() const { return fUsers.Shown(); }
  const std::vector<TKeyedSizeValues>* Extensions() const { return fExtensions.Shown(); }
  const std::vector<TKeyedSizeValues>* Ages() const { return fAges.Shown(); }

 private:
  struct TRecords {
    bool fCollected = false;
    std::vector<TKeyedSizeValues> fRecords;
    const std::vector<TKeyedSizeValues>* Shown() const { return fCollected ? &fRecords : nullptr; }
  };
  template <class TKeyOf>
  void SumUp(TRecords& pRecords, const TFileTable* pFiles, const TKeyOf& pKeyOf);

  TExtensionKeys fExtensionKeys;
  TKeyTotals fTotals;
  TRecords fUsers;
  TRecords fExtensions;
  TRecords fAges;
};

// The statistics of the files as objects.
TFolderStatistics StatisticsOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration);

// The date of a file that its age is counted from.
TKivFileTime DateOfKind(TDateType pType, TKivFileTime pLastAccess, TKivFileTime pLastChange, TKivFileTime pCreation);

}  // namespace Vantrel

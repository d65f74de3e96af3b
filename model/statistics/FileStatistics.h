#pragma once

// Computes a folder's statistics from its table of files, for folders that do not store them.

#include <span>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "model/statistics/KeyTotals.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// The three statistics of one folder's files, as collected during its listing. Entries are sorted by key.
struct TListedStatistics {
  std::span<const TKeyedSizeValues> fOwners;
  std::span<const TKeyedSizeValues> fExtensions;
  std::span<const TKeyedSizeValues> fAges;  // by interval index
};

// The three statistics of a folder, as the folder stores them. nullptr for each that its root does not collect. A copy
// shares the arrays.
struct TFolderStatistics {
  TRef<ICustomAssocSizeArray> fUserSizeArray;
  TRef<ICustomAssocSizeArray> fExtensionSizeArray;
  TRef<IFileAgeDistribution> fFileAgeDistribution;

  bool IsEmpty() const { return !fUserSizeArray && !fExtensionSizeArray && !fFileAgeDistribution; }
  // Add and Subtract change the existing arrays and ignore what is not collected here.
  void Add(const TFolderStatistics& pOther) const;
  void Add(const TListedStatistics& pListed) const;
  void Subtract(const TFolderStatistics& pOther) const;
  // Adds, and creates the arrays that are missing here.
  void AddOrCreate(const TFolderStatistics& pOther);
  // Copies the arrays, with the same contents.
  TFolderStatistics Clone() const;
};

// Reads the statistics of folder after folder, as plain records. A walk of a whole tree keeps one, so nothing is
// allocated per folder. One thread.
//
// As long as the scan keeps the files, some nodes store no statistics: folders without sub-folders, and "[Files]"
// nodes. These are most folders, and few of their statistics are ever read. They are computed from the table of files.
class TStatisticsReading {
 public:
  // Computes the statistics of the files. Intervals, date kind and moment of the ages come from the configuration.
  // nullptr means no files.
  void Read(const TFileTable* pFiles, const IScanConfiguration& pConfiguration);
  // Reads the statistics that a folder stores.
  void Read(const TFolderStatistics& pStatistics);
  void Clear();

  // The result of the last Read, valid until the next one. nullptr for what is not collected. Keys without files are
  // left out. Users and extensions are in no particular order, ages by ascending interval.
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

// The date of a file from which its age is counted.
TKivFileTime DateOfKind(TDateType pType, TKivFileTime pLastAccess, TKivFileTime pLastChange, TKivFileTime pCreation);

}  // namespace Vantrel

#pragma once

// An earlier state of a tree. It is looked up by path and also lists what has gone since.

#include <cstdint>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// An earlier state of a root's tree, kept beside the current one.
//
// Folders are found by the names on the way down from the top folder. The roots' own paths do not matter. What has gone
// is computed on each call from the current tree. So a refresh or a removal needs no bookkeeping here, and the current
// tree holds nothing that would have to be removed again.
//
// The files directly in a folder are one value. In the current tree a folder with sub-folders has a "[Files]" row for
// them. A folder without sub-folders shows its files itself and has no such row.
class TComparison : public TInterfaced<IComparison> {
 public:
  // Neither root may be scanning, and both must have a tree. The earlier root is not needed after this.
  TComparison(IHierarchicalRoot& pCurrent, IHierarchicalRoot& pEarlier);

  bool WasThere(const IFolderData& pFolder) const override;
  TSizeValues EarlierValues(const IFolderData& pFolder) const override;
  std::vector<TRef<IFolderData>> FindGone(IFolderData& pFolder) const override;
  TKivFileTime GetScanTimeStamp() const override { return fScanTimeStamp; }
  bool KnowsFiles() const override { return fKnowsFiles; }
  TRef<const TFileTable> EarlierFiles(const IFolderData& pFolder) const override;

 private:
  // A folder of the earlier tree. The children of one folder are adjacent and sorted by name.
  struct TRecord {
    std::u16string fName;
    TSizeValues fValues;
    TSizeValues fOwnFiles;          // the part of the files directly in the folder
    TRef<const TFileTable> fFiles;  // the files directly in the folder, if the earlier scan kept them
    uint32_t fFirstChild = 0;
    uint32_t fChildren = 0;
  };

  int CompareNames(std::u16string_view pA, std::u16string_view pB) const;
  void AddRecord(std::u16string_view pName, const IFolderData& pFolder);
  void AddChildren(size_t pRecord, IFolderData& pFolder, std::vector<TRef<IFolderData>>& pFolders);
  const TRecord* FindChild(const TRecord& pRecord, std::u16string_view pName) const;
  // The record of a folder. For a "[Files]" node, the record of its folder. nullptr when the earlier tree has none.
  const TRecord* FindRecord(const IFolderData& pFolder) const;
  bool HaveFilesGone(const TRecord& pRecord, IFolderData& pFolder) const;

  const TKivFileTime fScanTimeStamp;
  const bool fLetterCaseCounts;  // false on Windows
  bool fKnowsFiles = false;
  std::vector<TRecord> fRecords;  // the top folder first, level by level
};

}  // namespace Vantrel

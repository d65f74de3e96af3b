#pragma once

// An earlier state of a tree, looked up by path; what has gone since.

#include <cstdint>
#include <string>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/FileTable.h"

namespace Vantrel {

// An earlier state of a root's tree, kept beside the current one.
//
// Folders are found by the names on the way down from the top folder, whatever the roots' own paths are. What has gone
// is worked out when it is asked for, from what is in the current tree at that moment. So a refresh or a removal needs
// no bookkeeping here, and the current tree holds nothing that would have to be taken out again.
//
// The files directly in a folder are one value. In the current tree they are the "[Files]" row of a folder that has
// sub-folders; a folder without sub-folders shows its files itself and has no such row.
class TComparison : public TInterfaced<IComparison> {
 public:
  // Neither root may be scanning, both must have a tree. The earlier one is not needed any more after this.
  TComparison(IHierarchicalRoot& pCurrent, IHierarchicalRoot& pEarlier);

  bool WasThere(const IFolderData& pFolder) const override;
  TSizeValues EarlierValues(const IFolderData& pFolder) const override;
  std::vector<TRef<IFolderData>> FindGone(IFolderData& pFolder) const override;
  TKivFileTime GetScanTimeStamp() const override { return fScanTimeStamp; }
  bool KnowsFiles() const override { return fKnowsFiles; }
  TRef<const TFileTable> EarlierFiles(const IFolderData& pFolder) const override;

 private:
  // A folder of the earlier tree. The children of one folder stand together, sorted by name.
  struct TRecord {
    std::u16string fName;
    TSizeValues fValues;
    TSizeValues fOwnFiles;          // of them, the files directly in the folder
    TRef<const TFileTable> fFiles;  // these, as far as the earlier scan kept them
    uint32_t fFirstChild = 0;
    uint32_t fChildren = 0;
  };

  int CompareNames(std::u16string_view pA, std::u16string_view pB) const;
  void AddRecord(std::u16string_view pName, const IFolderData& pFolder);
  void AddChildren(size_t pRecord, IFolderData& pFolder, std::vector<TRef<IFolderData>>& pFolders);
  const TRecord* FindChild(const TRecord& pRecord, std::u16string_view pName) const;
  // The record of a folder, or of the folder whose files a "[Files]" node is; nullptr when it was not there.
  const TRecord* FindRecord(const IFolderData& pFolder) const;
  bool HaveFilesGone(const TRecord& pRecord, IFolderData& pFolder) const;

  const TKivFileTime fScanTimeStamp;
  const bool fLetterCaseCounts;  // on Windows it does not
  bool fKnowsFiles = false;
  std::vector<TRecord> fRecords;  // the top folder first, level by level
};

}  // namespace Vantrel

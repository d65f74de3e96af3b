#pragma once

// The one view through which all code reads the values of a file or folder, whatever holds them.

#include <cstdint>
#include <string>
#include <string_view>

#include "model/statistics/TopSizeList.h"
#include "model/tree/FileTable.h"
#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

class TEarlierFiles;

// Reads one file or folder: an entry of a listing, a node, a row for a folder that is gone, a file in a folder's table,
// or one of the largest files. It answers every column of the catalogue except mdError, which only an export knows.
//
// A view is a few pointers. Making one allocates nothing, and for a file in a table no node is made. It is valid as
// long as what it reads: for a listing until the next entry, for a file in a table as long as the table is held.
// Values are snapshots. A view belongs to one thread; any number of views may read the same entry.
class TEntryView {
 public:
  // The current entry of a listing. Its paths are those of the storage, and its depth is counted from the storage's
  // top.
  explicit TEntryView(const IHierarchicalEnumerator& pEntry) : fEntry(&pEntry), fKind(TKind::ekListed) {}
  // An object outside any tree.
  explicit TEntryView(const IHierarchicalObject& pObject) : fEntry(&pObject), fKind(TKind::ekObject) {}
  // A node of a tree.
  explicit TEntryView(const IHierarchicalElement& pNode);
  explicit TEntryView(const IFolderData& pFolder) : fEntry(&pFolder), fFolder(&pFolder), fKind(TKind::ekFolder) {}
  // A file in the table of a folder or of its "[Files]" node. Without the folder it has no value that depends on its
  // place. pEarlier finds the file's earlier values; without it the columns of change have no value.
  TEntryView(const TFileTable& pFiles, const TFileRecord& pFile, const IFolderData* pFolder,
             TEarlierFiles* pEarlier = nullptr)
      : fFolder(pFolder), fFiles(&pFiles), fFile(&pFile), fEarlier(pEarlier), fKind(TKind::ekFile) {}
  // One of the largest files.
  explicit TEntryView(const TTopSizeEntry& pFile) : fTopFile(&pFile), fKind(TKind::ekTopFile) {}

  std::u16string_view GetObjectName() const {
    if (fFile) return fFiles->NameOf(*fFile);
    return fTopFile ? fTopFile->fName : fEntry->GetObjectName();
  }
  int64_t GetSize() const { return fFile ? fFile->fSize : fTopFile ? fTopFile->fSize : fEntry->GetSize(); }
  int64_t GetAllocated() const {
    return fFile ? fFile->fAllocated : fTopFile ? fTopFile->fAllocated : fEntry->GetAllocated();
  }
  TKivFileTime GetLastAccessDate() const {
    return fFile ? fFile->fLastAccessDate : fTopFile ? fTopFile->fLastAccessDate : fEntry->GetLastAccessDate();
  }
  TKivFileTime GetLastChangeDate() const {
    return fFile ? fFile->fLastChangeDate : fTopFile ? fTopFile->fLastChangeDate : fEntry->GetLastChangeDate();
  }
  TKivFileTime GetCreationDate() const {
    return fFile ? fFile->fCreationDate : fTopFile ? fTopFile->fCreationDate : fEntry->GetCreationDate();
  }
  TAttributes GetAttributes() const {
    return fFile ? fFile->fAttributes : fTopFile ? fTopFile->fAttributes : fEntry->GetAttributes();
  }
  // Of a listed entry the key is not known, only the name; see GetOwner.
  TKeyId GetOwnerKey() const {
    if (fFile) return fFile->fOwnerKey;
    if (fTopFile) return fTopFile->fOwnerKey;
    return fKind == TKind::ekListed ? kNoKey : Object().GetOwnerKey();
  }
  bool IsFolder() const { return fEntry && fEntry->IsFolder(); }
  // All sizes and counts at once. A file is one file. The contents of a listed folder are not known, so it has no
  // files.
  TSizeValues GetValues() const {
    if (fKind == TKind::ekFolder) return fFolder->GetValues();
    TSizeValues values;
    values.fSize = GetSize();
    values.fAllocated = GetAllocated();
    values.fFiles = CountFiles();
    return values;
  }

  // The following ones are slower: they ask parents, or the storage.
  std::u16string GetFullPath() const;
  std::u16string GetParentPath() const;      // empty for the top folder
  std::u16string_view GetExtension() const;  // without the dot; empty for a folder
  std::u16string GetOwner() const;           // empty when unknown
  int64_t GetDepth() const;                  // 0 for the top folder
  TFolderStates GetFolderState() const;      // 0 for everything but a node
  TRef<IHierarchicalRoot> GetRoot() const;   // nullptr outside a tree
  // The folder that holds the entry. The "[Files]" node holds no file: its folder does.
  TRef<IHierarchicalElement> GetParentFolder() const;

  // The column's value, and its text for users. "No value" for what the entry does not have.
  TMetaDataValue GetValue(TColumn pColumn) const;
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const {
    return FormatValue(pColumn, GetValue(pColumn), pFormat);
  }

 private:
  enum class TKind : uint8_t { ekListed, ekObject, ekNode, ekFolder, ekFile, ekTopFile };

  int64_t CountFiles() const;
  const IHierarchicalEnumerator& Listed() const { return static_cast<const IHierarchicalEnumerator&>(*fEntry); }
  const IHierarchicalObject& Object() const { return static_cast<const IHierarchicalObject&>(*fEntry); }
  const IHierarchicalElement& Node() const { return static_cast<const IHierarchicalElement&>(*fEntry); }
  bool IsNode() const { return fKind == TKind::ekNode || fKind == TKind::ekFolder; }
  // The folder node at which the file is kept. nullptr for everything but a file without a node.
  const IHierarchicalElement* FolderOfFile() const { return fTopFile ? fTopFile->fParentFolder.get() : fFolder; }
  bool HasPlace() const;
  TMetaDataValue ShareOf(const IHierarchicalElement* pWhole) const;
  TMetaDataValue ShareOfTop() const;
  TMetaDataValue SizeColumn(TColumn pColumn) const;
  TMetaDataValue ChangeColumn(TColumn pColumn) const;

  const IHierarchicalBase* fEntry = nullptr;  // nullptr for a file without a node
  const IFolderData* fFolder = nullptr;       // the folder itself, or that of a file in a table
  const TFileTable* fFiles = nullptr;
  const TFileRecord* fFile = nullptr;
  const TTopSizeEntry* fTopFile = nullptr;
  TEarlierFiles* fEarlier = nullptr;
  TKind fKind;
};

}  // namespace Vantrel

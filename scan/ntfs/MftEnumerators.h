#pragma once

// Enumerators over the index of a volume.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "scan/ntfs/MftRoot.h"
#include "scan/storage/EnumeratorBase.h"

namespace Vantrel::Ntfs {

// What all enumerators of one scan of a volume share. Never changes.
struct TMftScan {
  TRef<const THierarchicalMftRoot> fRoot;
  std::u16string fVolumePath;  // the path of the volume's root
  std::u16string fTopPath;     // the path where the scan begins
  uint32_t fTop = kRootRecord;
  char16_t fPathDelimiter = u'/';
  uint32_t fErrorCode = 0;                // what left a part of the table unread; the scan's first folder reports it
  std::shared_ptr<const void> fVolume{};  // lives as long as the scan
};

// Answers for the current entry, or for the folder itself before the first.
class TBaseMftEnumerator : public Enumerators::TBaseVisualHierarchicalEnumerator {
 public:
  std::u16string_view GetObjectName() const override;
  int64_t GetSize() const override { return IsFolder() ? 0 : GetItemEntry().fSize; }
  int64_t GetAllocated() const override;
  TKivFileTime GetLastAccessDate() const override { return DateOf(GetItemEntry().fLastAccessTime); }
  TKivFileTime GetLastChangeDate() const override { return DateOf(GetItemEntry().fLastWriteTime); }
  TKivFileTime GetCreationDate() const override { return DateOf(GetItemEntry().fCreationTime); }
  TAttributes GetAttributes() const override { return GetItemEntry().fAttributes; }
  bool IsFolder() const override { return GetItemEntry().IsFolder(); }
  // The unknown owner is one and the same for all, so its name is looked up once.
  uint64_t GetOwnerId() const override { return 1; }
  bool CanDescend() const override { return IsFolder() && !GetItemEntry().fIsLink; }

  const TMftEntry& GetItemEntry() const { return fScan->fRoot->Entry(GetCurrentMftRecordNumber()); }
  uint32_t GetCurrentMftRecordNumber() const;
  // Names of the current entry's file; 1 for a folder.
  uint32_t GetNumberOfHardlinks() const { return fScan->fRoot->LinksOf(GetCurrentMftRecordNumber()); }
  // Bytes on storage of the current entry's alternate data streams.
  int64_t GetADSSize() const { return IsFolder() ? 0 : GetItemEntry().fADSSize; }
  // The path of the volume's root.
  const std::u16string& GetDrive() const { return fScan->fVolumePath; }

 protected:
  TBaseMftEnumerator(std::shared_ptr<const TMftScan> pScan, uint32_t pFolder, THierarchicalEnumeratorOptions pOptions)
      : TBaseVisualHierarchicalEnumerator(pOptions), fScan(std::move(pScan)), fFolder(pFolder) {}

  const THierarchicalMftRoot& Root() const { return *fScan->fRoot; }
  static TKivFileTime DateOf(int64_t pTicks);

  const std::shared_ptr<const TMftScan> fScan;
  const uint32_t fFolder;
  uint32_t fName = kNoName;  // of the current entry
};

// Lists a folder of the index: its sub-folders first, then its files. It knows entries by their record numbers, so
// going down is no search.
class THierarchicalMftEnumerator final : public TBaseMftEnumerator {
 public:
  // The enumerator of the scan's first folder.
  static TRef<THierarchicalMftEnumerator> Create(std::shared_ptr<const TMftScan> pScan,
                                                 THierarchicalEnumeratorOptions pOptions);
  // The same for a folder or file inside the volume, by its path from the volume's root. The scan begins there, and
  // letter case is ignored where no name fits exactly. nullptr when it does not exist.
  static TRef<THierarchicalMftEnumerator> CreateForPath(TMftScan pScan, std::u16string_view pPathInside,
                                                        THierarchicalEnumeratorOptions pOptions);

  bool Next() override;
  void Reset() override;
  TRef<IHierarchicalEnumerator> GetChildHierarchicalEnumerator() override;
  TRef<IHierarchicalEnumerator> CreateChildEnumerator(std::u16string_view pName, TAttributes pAttributes) override;
  uint64_t GetEntryId() const override { return uint64_t{GetCurrentMftRecordNumber()} + 1; }
  TRef<IHierarchicalEnumerator> CreateChildEnumeratorById(uint64_t pId, std::u16string_view pName,
                                                          TAttributes pAttributes) override;
  TRef<IHierarchicalEnumerator> Clone() const override;

  TEntryValues GetEntryValues() const override;
  std::u16string GetFullPath() const override;
  std::u16string GetPath() const override;
  size_t GetPathLength() const override { return fPathLength; }
  uint64_t GetParentPathDepth() const override { return fDepth; }
  uint32_t GetErrorCode() const override { return fErrorCode; }
  TEnumeratorError GetError() const override;

 private:
  THierarchicalMftEnumerator(std::shared_ptr<const TMftScan> pScan, uint32_t pFolder,
                             THierarchicalEnumeratorOptions pOptions)
      : TBaseMftEnumerator(std::move(pScan), pFolder, pOptions) {}
  TRef<THierarchicalMftEnumerator> CreateForFolder(uint32_t pFolder, size_t pNameLength) const;

  size_t fNext = 0;          // among sub-folders and files together
  uint32_t fOnly = kNoName;  // the only entry, when the scan is of a file
  size_t fPathLength = 0;
  uint64_t fDepth = 0;
  uint32_t fErrorCode = 0;
};

}  // namespace Vantrel::Ntfs

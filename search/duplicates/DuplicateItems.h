#pragma once

// What a search for duplicates compares, and the groups of what is equal.

#include <string>
#include <utility>
#include <vector>

#include "model/tree/HierarchicalData.h"
#include "platform/threads/SlimReaderWriterLock.h"
#include "search/duplicates/HashUtils.h"
#include "search/files/FoundItem.h"

namespace Vantrel::Search {

using HashUtils::TMD5Hash;

// False for what is not read: a link is no contents of its own, a device has none, and a file that is elsewhere would
// be fetched.
inline bool HasContentsToRead(const TFoundItem& pItem) {
  constexpr TAttributes kNotRead =
      kAttributeReparsePoint | kAttributeDevice | kAttributeOffline | kAttributeRecallOnDataAccess;
  return (pItem.fValues.fAttributes & kNotRead) == 0;
}

// A file or folder that may have duplicates. What a search learns of it belongs to the search and its locks.
class TDuplicateFile final : public TBaseVariantMetaDataProvider<IHierarchicalObject> {
 public:
  TDuplicateFile(TFoundItem pItem, uint32_t pBucket) : fItem(std::move(pItem)), fBucket(pBucket) {}

  std::u16string_view GetObjectName() const override { return fItem.fName; }
  int64_t GetSize() const override { return fItem.fValues.fSize; }
  int64_t GetAllocated() const override { return fItem.fValues.fAllocated; }
  TKivFileTime GetLastAccessDate() const override { return fItem.fValues.fLastAccessDate; }
  TKivFileTime GetLastChangeDate() const override { return fItem.fValues.fLastChangeDate; }
  TKivFileTime GetCreationDate() const override { return fItem.fValues.fCreationDate; }
  TAttributes GetAttributes() const override { return fItem.fValues.fAttributes; }
  bool IsFolder() const override { return fItem.fIsFolder; }
  std::u16string GetFullPath() const override { return fItem.FullPath(); }
  TRef<IHierarchicalRoot> GetRoot() const override { return nullptr; }
  int64_t GetFiles() const override { return fItem.fIsFolder ? 0 : 1; }
  TKeyId GetOwnerKey() const override { return kNoKey; }

  const TFoundItem fItem;
  // Only files of one bucket can be equal: they share what the search compares before it reads. Fixed before the work
  // begins.
  uint32_t fBucket;

  // Where it begins, for a rotating disk. 0: not known.
  uint64_t fPlaceOnDisk = 0;

  // What follows is written by one worker at a time, and read by others when the phase has ended.

  // The date of change when it was first opened. A later difference means that the file has changed.
  TKivFileTime fFirstChange;
  // The same file under another name, which is read in place of this one. nullptr: this one is read.
  TDuplicateFile* fPrimary = nullptr;
  // The next name in the chain of all names of a file, which begins at the one that is read.
  TDuplicateFile* fNextLink = nullptr;
  TMD5Hash fHash;
  bool fHasHash = false;  // of its whole contents
  bool fIsOpened = false;
  bool fHasLeft = false;  // unreadable, or changed while it was read

  const TDuplicateFile& Primary() const { return fPrimary ? *fPrimary : *this; }
};

// All files with one checksum.
class TDuplicatesGroup final : public TBaseVariantMetaDataProvider<IHierarchicalObject> {
 public:
  explicit TDuplicatesGroup(const TMD5Hash& pHash) : fHash(pHash) {}

  const TMD5Hash& Hash() const { return fHash; }
  void Add(TRef<IHierarchicalObject> pFile);
  // A copy, in the order in which they were added.
  std::vector<TRef<IHierarchicalObject>> Files() const;

  std::u16string_view GetObjectName() const override { return {}; }
  // The size of one of the files.
  int64_t GetSize() const override;
  int64_t GetAllocated() const override { return GetSize(); }
  TKivFileTime GetLastAccessDate() const override { return {}; }
  TKivFileTime GetLastChangeDate() const override { return {}; }
  TKivFileTime GetCreationDate() const override { return {}; }
  TAttributes GetAttributes() const override { return 0; }
  bool IsFolder() const override { return false; }
  std::u16string GetFullPath() const override { return {}; }
  TRef<IHierarchicalRoot> GetRoot() const override { return nullptr; }
  int64_t GetFiles() const override;
  TKeyId GetOwnerKey() const override { return kNoKey; }

 private:
  const TMD5Hash fHash;
  mutable TSlimReaderWriterLock fLock;
  std::vector<TRef<IHierarchicalObject>> fFiles GUARDED_BY(fLock);
};

}  // namespace Vantrel::Search

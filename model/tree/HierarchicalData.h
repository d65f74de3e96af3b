#pragma once

// The base classes of nodes, with their members in packed order; objects outside any tree.

#include <atomic>
#include <string>
#include <string_view>

#include "model/roots/RootInterfaces.h"
#include "model/statistics/InternedKeys.h"
#include "model/tree/CompactName.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "model/tree/TreeChanges.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// Base classes of the tree's nodes. The interfaces form one chain (object, element, folder), so each base class takes
// the interface that it implements as its parameter: a node then has one virtual table pointer instead of three.

// An object that answers column values by column.
template <class TInterface>
class TBaseVariantMetaDataProvider : public TInterfaced<TInterface> {
 public:
  TMetaDataValue GetValue(TColumn pColumn) const override;
};

// A point in time that a scan only ever raises, read and raised without a lock. Where a branch was taken out it is set
// anew.
class TNewestDate {
 public:
  TKivFileTime Get() const { return {fTicks.load(std::memory_order_relaxed)}; }
  void Set(TKivFileTime pDate) { fTicks.store(pDate.fTicks, std::memory_order_relaxed); }
  // Replaces the date by a later one; false when the stored one is as late already.
  bool Raise(TKivFileTime pDate) {
    int64_t stored = fTicks.load(std::memory_order_relaxed);
    while (pDate.fTicks > stored)
      if (fTicks.compare_exchange_weak(stored, pDate.fTicks, std::memory_order_relaxed)) return true;
    return false;
  }

 private:
  std::atomic<int64_t> fTicks{0};
};

// Members stand in the order that packs them without gaps: a scan keeps millions of nodes.
template <class TInterface>
class TBaseHierarchicalObject : public TBaseVariantMetaDataProvider<TInterface> {
 public:
  std::u16string_view GetObjectName() const override { return fName.View(); }
  TKivFileTime GetLastAccessDate() const override { return fLastAccessDate.Get(); }
  TKivFileTime GetLastChangeDate() const override { return fLastChangeDate.Get(); }
  TKivFileTime GetCreationDate() const override { return fCreationDate; }
  TAttributes GetAttributes() const override { return fAttributes; }
  TRef<IHierarchicalRoot> GetRoot() const override;
  IMetaDataCache& GetMetaDataCache() override;
  TMetaDataValue GetValue(TColumn pColumn) const override;
  std::u16string GetFormattedValue(TColumn pColumn, const TValueFormat& pFormat) const override;

 protected:
  TBaseHierarchicalObject(TRef<IHierarchicalRoot> pRoot, std::u16string_view pName);
  ~TBaseHierarchicalObject() override;

  // Whether changes still count: false once the root is gone. A free-standing object has no root to lose.
  bool IsRootDisposed() const { return fRootDisposeToken && fRootDisposeToken->IsDisposed(); }
  void ClearMetaDataCache() const {
    if (IMetaDataCache* cache = fMetaDataCache.load(std::memory_order_acquire)) cache->Clear();
  }

  mutable TSlimReaderWriterLock fLock;  // guards the totals, the child list and the references to root and parent
  // Fixed before the node enters its parent's list.
  TAttributes fAttributes = 0;
  TKeyId fOwnerKey = kNoKey;
  TCompactName fName;
  TKivFileTime fCreationDate;
  TRef<IDisposeToken> fRootDisposeToken;
  // Until disposal; read by the scan without the lock, since no disposal runs beside a scan.
  TRef<IHierarchicalRoot> fRoot;
  int64_t fSize GUARDED_BY(fLock) = 0;
  int64_t fAllocated GUARDED_BY(fLock) = 0;
  TNewestDate fLastAccessDate;
  TNewestDate fLastChangeDate;

 private:
  mutable std::atomic<IMetaDataCache*> fMetaDataCache{nullptr};  // made on first use
};

// Whether an element is pTop or lies beneath it. nullptr is nowhere.
bool IsSameOrBelow(TRef<IHierarchicalElement> pElement, const IHierarchicalElement& pTop);

// An object made from a path, outside any tree: a search result, say.
class THierarchicalObject : public TBaseHierarchicalObject<IHierarchicalObject> {
 public:
  THierarchicalObject(std::u16string_view pFullPath, char16_t pDelimiter, const TEntryValues& pValues, int64_t pFiles);
  int64_t GetSize() const override;
  int64_t GetAllocated() const override;
  int64_t GetFiles() const override { return fFiles; }
  bool IsFolder() const override { return (fAttributes & kAttributeDirectory) != 0; }
  std::u16string GetFullPath() const override { return fFullPath; }
  const std::u16string& GetPath() const { return fPath; }  // of the folder that it lies in

 private:
  int64_t fFiles;
  std::u16string fPath;
  std::u16string fFullPath;
};

// Any node that sits in a tree.
template <class TInterface>
class TBaseHierarchicalElement : public TBaseHierarchicalObject<TInterface> {
 public:
  TRef<IHierarchicalElement> GetParentFolder() const override;
  TFolderStates GetFolderState() const override { return fFolderState.load(std::memory_order_acquire); }
  void IncludeFolderState(TFolderStates pBits) override { fFolderState.fetch_or(pBits, std::memory_order_acq_rel); }
  void ExcludeFolderState(TFolderStates pBits) override {
    fFolderState.fetch_and(static_cast<TFolderStates>(~pBits), std::memory_order_acq_rel);
  }
  // Joined from the names up to the root; walks the parents one by one and holds no two locks.
  std::u16string GetFullPath() const override;
  // Adds what an element's place in the tree says.
  TMetaDataValue GetValue(TColumn pColumn) const override;

 protected:
  TBaseHierarchicalElement(TRef<IHierarchicalElement> pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
      : TBaseHierarchicalObject<TInterface>(std::move(pRoot), pName), fParentFolder(std::move(pParent)) {}

  bool IsGone() const { return (GetFolderState() & fsDisposed) != 0 || this->IsRootDisposed(); }

  // Of that element, in the sizes that the root's shares are of; nullptr for what is the whole itself.
  TMetaDataValue ShareOf(const IHierarchicalElement* pWhole) const;

  TRef<IHierarchicalElement> fParentFolder;  // until disposal, like fRoot
  std::atomic<TFolderStates> fFolderState{0};
};

// A node that can hold children: adds what is counted beneath it.
class TContainerHierarchicalElement : public TBaseHierarchicalElement<IFolderData> {
 public:
  int64_t GetSize() const override { return GetValues().fSize; }
  int64_t GetAllocated() const override { return GetValues().fAllocated; }
  int64_t GetFiles() const override { return GetValues().fFiles; }
  int64_t GetFolders() const override { return GetValues().fFolders; }
  TSizeValues GetValues() const override;
  bool IsFolder() const override { return true; }
  TMetaDataValue GetValue(TColumn pColumn) const override;

 protected:
  using TBaseHierarchicalElement<IFolderData>::TBaseHierarchicalElement;

  TCompressionStates fCompression GUARDED_BY(fLock) = 0;
  TChangeMarks fChangeMarks{0};
  std::atomic<int32_t> fUnfinishedParts{0};  // of a scan; stands here to fill a gap
  int64_t fFolders GUARDED_BY(fLock) = 0;
  int64_t fFiles GUARDED_BY(fLock) = 0;
};

}  // namespace Vantrel

#pragma once

// The base classes of nodes, with packed members, and objects outside any tree.

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

// Base classes of the tree's nodes. The interfaces form one chain (object, element, folder). Each base class takes its
// interface as a parameter, so a node has one virtual table pointer instead of three.

// An object that answers requests for column values, as its view does (`EntryView.h`).
template <class TInterface>
class TBaseVariantMetaDataProvider : public TInterfaced<TInterface> {
 public:
  TMetaDataValue GetValue(TColumn pColumn) const override;
};

// A date that a scan only raises. It is read and raised without a lock. When a branch is removed, the date is set anew.
class TNewestDate {
 public:
  TKivFileTime Get() const { return {fTicks.load(std::memory_order_relaxed)}; }
  void Set(TKivFileTime pDate) { fTicks.store(pDate.fTicks, std::memory_order_relaxed); }
  // Replaces the date by a later one. False when the stored date is at least as late.
  bool Raise(TKivFileTime pDate) {
    int64_t stored = fTicks.load(std::memory_order_relaxed);
    while (pDate.fTicks > stored)
      if (fTicks.compare_exchange_weak(stored, pDate.fTicks, std::memory_order_relaxed)) return true;
    return false;
  }

 private:
  std::atomic<int64_t> fTicks{0};
};

// The order of the members leaves no gaps, since a scan keeps millions of nodes.
template <class TInterface>
class TBaseHierarchicalObject : public TBaseVariantMetaDataProvider<TInterface> {
 public:
  std::u16string_view GetObjectName() const override { return fName.View(); }
  TKivFileTime GetLastAccessDate() const override { return fLastAccessDate.Get(); }
  TKivFileTime GetLastChangeDate() const override { return fLastChangeDate.Get(); }
  TKivFileTime GetCreationDate() const override { return fCreationDate; }
  TAttributes GetAttributes() const override { return fAttributes; }
  TRef<IHierarchicalRoot> GetRoot() const override;
  TKeyId GetOwnerKey() const override { return fOwnerKey; }

 protected:
  TBaseHierarchicalObject(TRef<IHierarchicalRoot> pRoot, std::u16string_view pName);

  // Whether the root is disposed. Changes are then ignored. A free-standing object has no root, so this is false.
  bool IsRootDisposed() const { return fRootDisposeToken && fRootDisposeToken->IsDisposed(); }

  mutable TSlimReaderWriterLock fLock;  // guards the totals, the child list and the references to root and parent
  // Fixed before the node enters its parent's list.
  TAttributes fAttributes = 0;
  TKeyId fOwnerKey = kNoKey;
  TCompactName fName;
  TKivFileTime fCreationDate;
  TRef<IDisposeToken> fRootDisposeToken;
  // Set until disposal. The scan reads it without the lock, since no disposal runs during a scan.
  TRef<IHierarchicalRoot> fRoot;
  int64_t fSize GUARDED_BY(fLock) = 0;
  int64_t fAllocated GUARDED_BY(fLock) = 0;
  TNewestDate fLastAccessDate;
  TNewestDate fLastChangeDate;
};

// Whether an element is pTop or lies beneath it. False for nullptr.
bool IsSameOrBelow(TRef<IHierarchicalElement> pElement, const IHierarchicalElement& pTop);

// An object made from a path, outside any tree, such as a search result.
class THierarchicalObject : public TBaseHierarchicalObject<IHierarchicalObject> {
 public:
  THierarchicalObject(std::u16string_view pFullPath, char16_t pDelimiter, const TEntryValues& pValues, int64_t pFiles);
  int64_t GetSize() const override;
  int64_t GetAllocated() const override;
  int64_t GetFiles() const override { return fFiles; }
  bool IsFolder() const override { return (fAttributes & kAttributeDirectory) != 0; }
  std::u16string GetFullPath() const override { return fFullPath; }
  const std::u16string& GetPath() const { return fPath; }  // the path of its folder

 private:
  int64_t fFiles;
  std::u16string fPath;
  std::u16string fFullPath;
};

// Any node in a tree.
template <class TInterface>
class TBaseHierarchicalElement : public TBaseHierarchicalObject<TInterface> {
 public:
  TRef<IHierarchicalElement> GetParentFolder() const override;
  TFolderStates GetFolderState() const override { return fFolderState.load(std::memory_order_acquire); }
  void IncludeFolderState(TFolderStates pBits) override { fFolderState.fetch_or(pBits, std::memory_order_acq_rel); }
  void ExcludeFolderState(TFolderStates pBits) override {
    fFolderState.fetch_and(static_cast<TFolderStates>(~pBits), std::memory_order_acq_rel);
  }
  // Joins the names up to the root. Visits the parents one by one and never holds two locks.
  std::u16string GetFullPath() const override;

 protected:
  TBaseHierarchicalElement(TRef<IHierarchicalElement> pParent, TRef<IHierarchicalRoot> pRoot, std::u16string_view pName)
      : TBaseHierarchicalObject<TInterface>(std::move(pRoot), pName), fParentFolder(std::move(pParent)) {}

  bool IsGone() const { return (GetFolderState() & fsDisposed) != 0 || this->IsRootDisposed(); }

  TRef<IHierarchicalElement> fParentFolder;  // until disposal, like fRoot
  std::atomic<TFolderStates> fFolderState{0};
};

// A node that can hold children. It adds the counts of what is beneath it.
class TContainerHierarchicalElement : public TBaseHierarchicalElement<IFolderData> {
 public:
  int64_t GetSize() const override { return GetValues().fSize; }
  int64_t GetAllocated() const override { return GetValues().fAllocated; }
  int64_t GetFiles() const override { return GetValues().fFiles; }
  int64_t GetFolders() const override { return GetValues().fFolders; }
  TSizeValues GetValues() const override;
  bool IsFolder() const override { return true; }

 protected:
  using TBaseHierarchicalElement<IFolderData>::TBaseHierarchicalElement;

  TCompressionStates fCompression GUARDED_BY(fLock) = 0;
  TChangeMarks fChangeMarks{0};
  std::atomic<int32_t> fUnfinishedParts{0};  // parts of a scan; placed here to fill a gap
  int64_t fFolders GUARDED_BY(fLock) = 0;
  int64_t fFiles GUARDED_BY(fLock) = 0;
};

}  // namespace Vantrel

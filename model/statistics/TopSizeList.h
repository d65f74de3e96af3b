#pragma once

// The largest files.

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// One of the largest files.
struct TTopSizeEntry {
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  TKivFileTime fLastChangeDate;
  TRef<IHierarchicalElement> fParentFolder;
  std::u16string fName;
  TKivFileTime fLastAccessDate{};
  TKivFileTime fCreationDate{};
  TAttributes fAttributes = 0;
};

// The largest files below a root. Any thread.
class ITopSizeList : public IInterface {
 public:
  // Files below this size are not worth offering, those of exactly this size are: equal sizes are told apart by path.
  // It costs one relaxed read, so the scan asks it for every file.
  virtual int64_t GetThreshold() const = 0;
  // Offers a file. Which files stay depends only on what was offered, never on the order: the larger ones, of equal
  // ones those whose full path comes first in code-unit order.
  virtual void Add(const TTopSizeEntry& pEntry) = 0;
  // The same for several files, cheapest when those of one folder stand together.
  virtual void Add(std::span<const TTopSizeEntry> pEntries) = 0;
  // Takes out all files beneath a folder, before it is reset or leaves the tree: the folders' parents must still be
  // known. Returns whether any was taken out; the list then lacks the files that had not made it before, until it is
  // refilled.
  virtual bool RemoveBelow(const IHierarchicalElement& pFolder) = 0;
  // The same for the files directly in a folder, before its own entries are counted anew.
  virtual bool RemoveFilesOf(const IHierarchicalElement& pFolder) = 0;
  virtual void Clear() = 0;
  // The largest first, equal ones by full path.
  virtual std::vector<TTopSizeEntry> GetSnapshot() const = 0;
  // Final: releases the folders and takes nothing more.
  virtual void Dispose() = 0;
};

class TTopSizeFileList : public TInterfaced<ITopSizeList> {
 public:
  // Keeps pMaxCount files (the option NumberOfTopFiles). The delimiter is the root's.
  TTopSizeFileList(size_t pMaxCount, char16_t pPathDelimiter);

  int64_t GetThreshold() const override { return fThreshold.load(std::memory_order_relaxed); }
  void Add(const TTopSizeEntry& pEntry) override { Add(std::span(&pEntry, 1)); }
  void Add(std::span<const TTopSizeEntry> pEntries) override;
  bool RemoveBelow(const IHierarchicalElement& pFolder) override;
  bool RemoveFilesOf(const IHierarchicalElement& pFolder) override;
  void Clear() override;
  std::vector<TTopSizeEntry> GetSnapshot() const override;
  void Dispose() override;

 private:
  // With the path for the order among equal sizes, made once and outside the lock.
  struct TRanked {
    TTopSizeEntry fEntry;
    std::u16string fFullPath;
  };
  // Whether the first ranks before the second.
  static bool RanksBefore(const TRanked& pA, const TRanked& pB);

  void Offer(TRanked&& pRanked) REQUIRES(fLock);
  bool RemoveWhere(const std::function<bool(const TRef<IHierarchicalElement>& pFolder)>& pIsMeant);
  void UpdateThreshold() REQUIRES(fLock);

  const size_t fMaxCount;
  const char16_t fPathDelimiter;
  // The smallest size that could still come in; above every size when nothing can.
  std::atomic<int64_t> fThreshold;
  mutable TSlimReaderWriterLock fLock;
  std::vector<TRanked> fHeap GUARDED_BY(fLock);  // the file that would be dropped next in front
  bool fDisposed GUARDED_BY(fLock) = false;
};

}  // namespace Vantrel

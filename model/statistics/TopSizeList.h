#pragma once

// The list of the largest files below a root.

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
  TKeyId fOwnerKey = kNoKey;
};

// The largest files below a root. Any thread.
class ITopSizeList : public IInterface {
 public:
  // Whether a file is worth offering. pPathLength is the length of its full path in UTF-16 units; it may be too small,
  // such as 0 for a path that is not known. The call costs one or two reads, so the scan makes it for every file.
  virtual bool IsWorthOffering(int64_t pSize, size_t pPathLength) const = 0;
  // Offers a file. The result depends only on the offered files, never on their order. Larger files stay. Among equal
  // sizes, the shorter full paths stay, and among those the first ones in code-unit order. The length comes first
  // because the scan knows it without making the path. Otherwise a deep tree of equal files would cost the square of
  // its depth.
  virtual void Add(const TTopSizeEntry& pEntry) = 0;
  // The same for several files. Cheapest when files of one folder are adjacent.
  virtual void Add(std::span<const TTopSizeEntry> pEntries) = 0;
  // Removes all files beneath a folder, before the folder is reset or leaves the tree. The folders' parents must still
  // be known. Returns whether any file was removed. The list then lacks smaller files that it dropped earlier, until it
  // is refilled.
  virtual bool RemoveBelow(const IHierarchicalElement& pFolder) = 0;
  // The same for the files directly in a folder, before its own entries are listed again.
  virtual bool RemoveFilesOf(const IHierarchicalElement& pFolder) = 0;
  virtual void Clear() = 0;
  // The files, largest first, equal sizes by the length of the full path and then by that path.
  virtual std::vector<TTopSizeEntry> GetSnapshot() const = 0;
  // Final: releases the folders and accepts nothing more.
  virtual void Dispose() = 0;
};

class TTopSizeFileList : public TInterfaced<ITopSizeList> {
 public:
  // Keeps pMaxCount files (the option NumberOfTopFiles). The delimiter is the root's.
  TTopSizeFileList(size_t pMaxCount, char16_t pPathDelimiter);

  bool IsWorthOffering(int64_t pSize, size_t pPathLength) const override {
    const int64_t threshold = fThreshold.load(std::memory_order_acquire);
    return pSize > threshold ||
           (pSize == threshold && pPathLength <= fThresholdPathLength.load(std::memory_order_relaxed));
  }
  void Add(const TTopSizeEntry& pEntry) override { Add(std::span(&pEntry, 1)); }
  void Add(std::span<const TTopSizeEntry> pEntries) override;
  bool RemoveBelow(const IHierarchicalElement& pFolder) override;
  bool RemoveFilesOf(const IHierarchicalElement& pFolder) override;
  void Clear() override;
  std::vector<TTopSizeEntry> GetSnapshot() const override;
  void Dispose() override;

 private:
  // An entry with its path, for the order among equal sizes. The path is made once and outside the lock.
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
  // The smallest size that could still enter, and the longest path of that size. Above every size when nothing can.
  // Both are written under the lock, the length first, and read without it, the size first. While files are added, they
  // only become harder to meet. So a pair that does not belong together may let a file pass, but never keeps one out.
  std::atomic<int64_t> fThreshold;
  std::atomic<size_t> fThresholdPathLength;
  mutable TSlimReaderWriterLock fLock;
  std::vector<TRanked> fHeap GUARDED_BY(fLock);  // the file to be dropped next is at the front
  bool fDisposed GUARDED_BY(fLock) = false;
};

}  // namespace Vantrel

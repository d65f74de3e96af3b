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
  // The smallest size worth offering. Files of exactly this size are worth offering too, since equal sizes are ordered
  // by path. The call costs one relaxed read, so the scan makes it for every file.
  virtual int64_t GetThreshold() const = 0;
  // Offers a file. The result depends only on the offered files, never on their order. Larger files stay. Among equal
  // sizes, those whose full path comes first in code-unit order stay.
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
  // The files, largest first, equal sizes by full path.
  virtual std::vector<TTopSizeEntry> GetSnapshot() const = 0;
  // Final: releases the folders and accepts nothing more.
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
  // The smallest size that could still enter; above every size when nothing can.
  std::atomic<int64_t> fThreshold;
  mutable TSlimReaderWriterLock fLock;
  std::vector<TRanked> fHeap GUARDED_BY(fLock);  // the file to be dropped next is at the front
  bool fDisposed GUARDED_BY(fLock) = false;
};

}  // namespace Vantrel

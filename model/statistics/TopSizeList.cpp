#include "model/statistics/TopSizeList.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <limits>

#include "model/tree/HierarchicalData.h"
#include "platform/files/Paths.h"

namespace Vantrel {

namespace {

constexpr int64_t kNothingComesIn = std::numeric_limits<int64_t>::max();
constexpr size_t kAnyLength = std::numeric_limits<size_t>::max();

}  // namespace

TTopSizeFileList::TTopSizeFileList(size_t pMaxCount, char16_t pPathDelimiter)
    : fMaxCount(pMaxCount),
      fPathDelimiter(pPathDelimiter),
      fThreshold(pMaxCount == 0 ? kNothingComesIn : std::numeric_limits<int64_t>::min()),
      fThresholdPathLength(pMaxCount == 0 ? 0 : kAnyLength) {}

bool TTopSizeFileList::RanksBefore(const TRanked& pA, const TRanked& pB) {
  if (pA.fEntry.fSize != pB.fEntry.fSize) return pA.fEntry.fSize > pB.fEntry.fSize;
  if (pA.fFullPath.size() != pB.fFullPath.size()) return pA.fFullPath.size() < pB.fFullPath.size();
  return pA.fFullPath < pB.fFullPath;
}

void TTopSizeFileList::Add(std::span<const TTopSizeEntry> pEntries) {
  const IHierarchicalElement* folder = nullptr;
  std::u16string folderPath;
  for (const TTopSizeEntry& entry : pEntries) {
    if (!IsWorthOffering(entry.fSize, 0)) continue;
    if (entry.fParentFolder.get() != folder) {
      folder = entry.fParentFolder.get();
      folderPath = folder ? folder->GetFullPath() : std::u16string();
    }
    TRanked ranked{entry, JoinPath(folderPath, entry.fName, fPathDelimiter)};
    TExclusiveLock lock(fLock);
    Offer(std::move(ranked));
  }
}

void TTopSizeFileList::Offer(TRanked&& pRanked) {
  if (fDisposed || fMaxCount == 0) return;
  if (fHeap.size() == fMaxCount) {
    if (!RanksBefore(pRanked, fHeap.front())) return;
    std::pop_heap(fHeap.begin(), fHeap.end(), RanksBefore);
    fHeap.back() = std::move(pRanked);
  } else {
    fHeap.push_back(std::move(pRanked));
  }
  std::push_heap(fHeap.begin(), fHeap.end(), RanksBefore);
  UpdateThreshold();
}

void TTopSizeFileList::UpdateThreshold() {
  int64_t threshold = std::numeric_limits<int64_t>::min();
  size_t length = kAnyLength;
  if (fDisposed || fMaxCount == 0) {
    threshold = kNothingComesIn;
    length = 0;
  } else if (fHeap.size() == fMaxCount) {
    threshold = fHeap.front().fEntry.fSize;
    length = fHeap.front().fFullPath.size();
  }
  fThresholdPathLength.store(length, std::memory_order_relaxed);
  fThreshold.store(threshold, std::memory_order_release);
}

bool TTopSizeFileList::RemoveBelow(const IHierarchicalElement& pFolder) {
  return RemoveWhere([&](const TRef<IHierarchicalElement>& pItem) { return IsSameOrBelow(pItem, pFolder); });
}

bool TTopSizeFileList::RemoveFilesOf(const IHierarchicalElement& pFolder) {
  return RemoveWhere([&](const TRef<IHierarchicalElement>& pItem) { return pItem.get() == &pFolder; });
}

bool TTopSizeFileList::RemoveWhere(const std::function<bool(const TRef<IHierarchicalElement>&)>& pIsMeant) {
  // The folders above each file are visited without the lock, since asking a node may take the node's lock.
  std::vector<TRef<IHierarchicalElement>> folders;
  {
    TSharedLock lock(fLock);
    for (const TRanked& ranked : fHeap) folders.push_back(ranked.fEntry.fParentFolder);
  }
  boost::unordered_flat_map<const IHierarchicalElement*, bool> isMeant;
  for (const auto& folder : folders) {
    if (!isMeant.contains(folder.get())) isMeant[folder.get()] = pIsMeant(folder);
  }
  std::vector<TRanked> removed;  // released after the lock
  TExclusiveLock lock(fLock);
  auto kept = std::stable_partition(fHeap.begin(), fHeap.end(), [&isMeant](const TRanked& pRanked) {
    auto found = isMeant.find(pRanked.fEntry.fParentFolder.get());
    return found == isMeant.end() || !found->second;
  });
  removed.assign(std::make_move_iterator(kept), std::make_move_iterator(fHeap.end()));
  fHeap.erase(kept, fHeap.end());
  std::make_heap(fHeap.begin(), fHeap.end(), RanksBefore);
  UpdateThreshold();
  return !removed.empty();
}

void TTopSizeFileList::Clear() {
  std::vector<TRanked> removed;  // released after the lock
  TExclusiveLock lock(fLock);
  removed.swap(fHeap);
  UpdateThreshold();
}

std::vector<TTopSizeEntry> TTopSizeFileList::GetSnapshot() const {
  std::vector<TRanked> ranked;
  {
    TSharedLock lock(fLock);
    ranked = fHeap;
  }
  std::sort(ranked.begin(), ranked.end(), RanksBefore);
  std::vector<TTopSizeEntry> entries;
  entries.reserve(ranked.size());
  for (TRanked& each : ranked) entries.push_back(std::move(each.fEntry));
  return entries;
}

void TTopSizeFileList::Dispose() {
  std::vector<TRanked> removed;  // released after the lock
  TExclusiveLock lock(fLock);
  fDisposed = true;
  removed.swap(fHeap);
  UpdateThreshold();
}

}  // namespace Vantrel

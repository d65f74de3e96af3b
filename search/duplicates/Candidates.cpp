#include "search/duplicates/Candidates.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <tuple>
#include <utility>

#include "search/duplicates/EqualRuns.h"

namespace Vantrel::Search {

namespace {

// In place of a bucket: no other file shares the keys; the same path as another item.
constexpr uint32_t kAlone = UINT32_MAX;
constexpr uint32_t kTwice = UINT32_MAX - 1;

// What is compared of an item, known by its place in the list.
class TItemKeys {
 public:
  TItemKeys(const std::vector<TFoundItem>& pItems, const TDuplicatesCompareTypes& pTypes)
      : fItems(pItems),
        fBySize(ComparesBy(pTypes, TDuplicatesCompareType::ctSize) || ComparesContents(pTypes)),
        fByName(ComparesBy(pTypes, TDuplicatesCompareType::ctName)),
        fByDate(ComparesBy(pTypes, TDuplicatesCompareType::ctLastChange)) {}

  auto operator()(uint32_t pIndex) const {
    const TFoundItem& item = fItems[pIndex];
    return std::tuple(fBySize ? item.fValues.fSize : 0, fByDate ? item.fValues.fLastChangeDate : TKivFileTime(),
                      fByName ? std::u16string_view(item.fName) : std::u16string_view());
  }
  // Its path, cheaply.
  auto Path(uint32_t pIndex) const {
    const TFoundItem& item = fItems[pIndex];
    return std::tuple(std::u16string_view(item.fName), std::u16string_view(item.fFolder->fPath));
  }

 private:
  const std::vector<TFoundItem>& fItems;
  const bool fBySize;
  const bool fByName;
  const bool fByDate;
};

// The bucket of each item.
std::vector<uint32_t> BucketsOf(const std::vector<TFoundItem>& pItems, const TItemKeys& pKeys) {
  std::vector<uint32_t> order(pItems.size()), buckets(pItems.size(), kAlone);
  std::iota(order.begin(), order.end(), 0u);
  uint32_t bucket = 0;
  ForEachEqualRun(order, pKeys, [&](std::span<uint32_t> pRun) {
    // One path may be there twice, when a searched path lies in another one.
    std::sort(pRun.begin(), pRun.end(), [&](uint32_t pA, uint32_t pB) { return pKeys.Path(pA) < pKeys.Path(pB); });
    const auto different = std::unique(pRun.begin(), pRun.end(), [&](uint32_t pA, uint32_t pB) {
      if (pKeys.Path(pA) != pKeys.Path(pB)) return false;
      buckets[pB] = kTwice;
      return true;
    });
    if (different - pRun.begin() > 1)
      std::for_each(pRun.begin(), different, [&](uint32_t pIndex) { buckets[pIndex] = bucket; });
    ++bucket;
  });
  return buckets;
}

}  // namespace

TCandidates FindCandidates(std::vector<TFoundItem> pItems, const TDuplicateSearchSettings& pSettings) {
  std::erase_if(pItems, [&](const TFoundItem& pItem) {
    return pItem.fIsFolder || !HasContentsToRead(pItem) || (pItem.fValues.fSize == 0 && !pSettings.fWithEmpty);
  });
  const std::vector<uint32_t> buckets = BucketsOf(pItems, TItemKeys(pItems, pSettings.fDuplicatesCompareTypes));
  TCandidates candidates;
  for (size_t i = 0; i < pItems.size(); ++i) {
    if (buckets[i] < kTwice)
      candidates.fFiles.push_back(MakeRef<TDuplicateFile>(std::move(pItems[i]), buckets[i]));
    else if (buckets[i] == kAlone && pSettings.fSearchMode == TDuplicatesSearchMode::UniqueFiles)
      candidates.fAlone.push_back(std::move(pItems[i]));
  }
  return candidates;
}

void SortByPlaceOnDisk(std::vector<TRef<TDuplicateFile>>& pFiles) {
  for (const TRef<TDuplicateFile>& file : pFiles) {
    const TRef<IStorage>& storage = file->fItem.fFolder->fStorage;
    if (storage && file->fPlaceOnDisk == 0) file->fPlaceOnDisk = storage->PlaceOnDisk(file->GetFullPath()).value_or(0);
  }
  std::stable_sort(pFiles.begin(), pFiles.end(), [](const TRef<TDuplicateFile>& pA, const TRef<TDuplicateFile>& pB) {
    return pA->fPlaceOnDisk < pB->fPlaceOnDisk;
  });
}

}  // namespace Vantrel::Search

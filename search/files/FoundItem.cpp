#include "search/files/FoundItem.h"

#include <algorithm>

#include "platform/files/Paths.h"

namespace Vantrel::Search {

std::u16string TFoundItem::FullPath() const {
  return JoinPath(fFolder->fPath, fName, fFolder->fDelimiter);
}

namespace {

// Joining the paths takes most of the time when millions of items are sorted. The folders' paths mostly decide.
bool PathComesFirst(const TFoundItem& pA, const TFoundItem& pB) {
  const std::u16string_view folderA = pA.fFolder->fPath;
  const std::u16string_view folderB = pB.fFolder->fPath;
  const size_t common = std::min(folderA.size(), folderB.size());
  const int order = folderA.substr(0, common).compare(folderB.substr(0, common));
  if (order != 0) return order < 0;
  if (folderA.size() == folderB.size()) return pA.fName < pB.fName;
  return pA.FullPath() < pB.FullPath();
}

}  // namespace

void SortFoundItems(std::vector<TFoundItem>& pItems) {
  std::sort(pItems.begin(), pItems.end(), [](const TFoundItem& pA, const TFoundItem& pB) {
    if (pA.fHasSize != pB.fHasSize) return pA.fHasSize;
    if (pA.fHasSize && pA.fValues.fSize != pB.fValues.fSize) return pA.fValues.fSize > pB.fValues.fSize;
    return PathComesFirst(pA, pB);
  });
}

}  // namespace Vantrel::Search

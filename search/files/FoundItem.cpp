#include "search/files/FoundItem.h"

#include <algorithm>

#include "platform/files/Paths.h"

namespace Vantrel::Search {

std::u16string TFoundItem::FullPath() const {
  return JoinPath(fFolder->fPath, fName, fFolder->fDelimiter);
}

namespace {

bool PathComesFirst(const TFoundItem& pA, const TFoundItem& pB) {
  if (pA.fFolder == pB.fFolder) return pA.fName < pB.fName;
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

#include "scan/DuplicateMounts.h"

#include <algorithm>

namespace Kiv::Enumerators {

namespace {

// Where pOther shows the folder that pMount shows; pMount's root lies inside pOther's.
std::string PathThrough(const TMount& pOther, const TMount& pMount) {
  std::string_view rest = std::string_view(pMount.fRoot).substr(pOther.fRoot == "/" ? 0 : pOther.fRoot.size());
  while (rest.starts_with('/')) rest.remove_prefix(1);
  std::string path = pOther.fMountPoint;
  if (rest.empty()) return path;
  if (!path.ends_with('/')) path += '/';
  return path.append(rest);
}

// The road that a person would name first: the shallower one.
bool ComesFirst(const TMount& pA, const TMount& pB) {
  auto depth = [](const TMount& pMount) { return std::count(pMount.fMountPoint.begin(), pMount.fMountPoint.end(), '/'); };
  if (depth(pA) != depth(pB)) return depth(pA) < depth(pB);
  if (pA.fMountPoint != pB.fMountPoint) return pA.fMountPoint < pB.fMountPoint;
  return pA.fId < pB.fId;
}

}  // namespace

std::unordered_set<uint64_t> DuplicateMounts(const std::vector<TMount>& pMounts, std::string_view pScanRoot) {
  // A later mount on the same point hides the earlier one whole.
  std::vector<const TMount*> visible;
  for (const TMount& mount : pMounts) {
    std::erase_if(visible, [&](const TMount* pItem) { return pItem->fMountPoint == mount.fMountPoint; });
    visible.push_back(&mount);
  }
  auto isHidden = [&](const std::string& pPath, const TMount& pThrough) {
    return std::any_of(visible.begin(), visible.end(), [&](const TMount* pItem) {
      return pItem != &pThrough && pItem->fMountPoint.size() > pThrough.fMountPoint.size() &&
             IsSameOrBeneath(pItem->fMountPoint, pThrough.fMountPoint) && IsSameOrBeneath(pPath, pItem->fMountPoint);
    });
  };
  auto isBeneathRoot = [&](const TMount& pMount) {
    return IsSameOrBeneath(pMount.fMountPoint, pScanRoot) && pMount.fMountPoint != pScanRoot;
  };
  // What shows more is decided before what it may show as well.
  std::stable_sort(visible.begin(), visible.end(), [](const TMount* pA, const TMount* pB) {
    return pA->fRoot.size() != pB->fRoot.size() ? pA->fRoot.size() < pB->fRoot.size() : ComesFirst(*pA, *pB);
  });
  std::unordered_set<uint64_t> duplicates;
  // A road through a mount that is not entered leads nowhere.
  auto isEntered = [&](const TMount& pMount) {
    return std::none_of(visible.begin(), visible.end(), [&](const TMount* pItem) {
      return isBeneathRoot(*pItem) && duplicates.contains(pItem->fId) &&
             IsSameOrBeneath(pMount.fMountPoint, pItem->fMountPoint);
    });
  };
  auto isShownBy = [&](const TMount& pMount, const TMount& pOther) {
    if (pOther.fDevice != pMount.fDevice || !IsSameOrBeneath(pMount.fRoot, pOther.fRoot)) return false;
    if (pOther.fRoot == pMount.fRoot && !ComesFirst(pOther, pMount)) return false;
    const std::string path = PathThrough(pOther, pMount);
    return IsSameOrBeneath(path, pScanRoot) && !isHidden(path, pOther) && isEntered(pOther);
  };
  for (const TMount* mount : visible) {
    if (isBeneathRoot(*mount) && std::any_of(visible.begin(), visible.end(), [&](const TMount* pOther) {
          return pOther != mount && isShownBy(*mount, *pOther);
        }))
      duplicates.insert(mount->fId);
  }
  return duplicates;
}

}  // namespace Kiv::Enumerators

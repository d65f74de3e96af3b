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

bool ComesFirst(const TMount& pA, const TMount& pB) {
  if (pA.fMountPoint.size() != pB.fMountPoint.size()) return pA.fMountPoint.size() < pB.fMountPoint.size();
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
  std::unordered_set<uint64_t> duplicates;
  for (const TMount* mount : visible) {
    if (!IsSameOrBeneath(mount->fMountPoint, pScanRoot) || mount->fMountPoint == pScanRoot) continue;
    for (const TMount* other : visible) {
      if (other == mount || other->fDevice != mount->fDevice || !IsSameOrBeneath(mount->fRoot, other->fRoot)) continue;
      if (other->fRoot == mount->fRoot && !ComesFirst(*other, *mount)) continue;
      const std::string path = PathThrough(*other, *mount);
      if (IsSameOrBeneath(path, pScanRoot) && !isHidden(path, *other)) duplicates.insert(mount->fId);
    }
  }
  return duplicates;
}

}  // namespace Kiv::Enumerators

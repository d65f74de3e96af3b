#include "scan/files/DuplicateMounts.h"

#include <algorithm>
#include <string>

namespace Vantrel::Enumerators {

namespace {

std::string Joined(std::string pFolder, std::string_view pRest) {
  while (pRest.starts_with('/')) pRest.remove_prefix(1);
  if (pRest.empty()) return pFolder;
  if (!pFolder.ends_with('/')) pFolder += '/';
  return pFolder.append(pRest);
}

// The path at which pOther shows the folder that pMount shows. pMount's root lies inside pOther's root.
std::string PathThrough(const TMount& pOther, const TMount& pMount) {
  const std::string_view rest = std::string_view(pMount.fRoot).substr(pOther.fRoot == "/" ? 0 : pOther.fRoot.size());
  return Joined(pOther.fMountPoint, rest);
}

// Whether a mount beneath pThrough covers the path.
bool IsHidden(const std::string& pPath, const TMount& pThrough, const std::vector<const TMount*>& pVisible) {
  return std::any_of(pVisible.begin(), pVisible.end(), [&](const TMount* pItem) {
    return pItem != &pThrough && pItem->fMountPoint.size() > pThrough.fMountPoint.size() &&
           IsSameOrBeneath(pItem->fMountPoint, pThrough.fMountPoint) && IsSameOrBeneath(pPath, pItem->fMountPoint);
  });
}

// The mount that holds the path, nullptr if none does.
const TMount* MountOf(std::string_view pPath, const std::vector<const TMount*>& pVisible) {
  const TMount* holder = nullptr;
  for (const TMount* mount : pVisible)
    if (IsSameOrBeneath(pPath, mount->fMountPoint) &&
        (holder == nullptr || mount->fMountPoint.size() > holder->fMountPoint.size()))
      holder = mount;
  return holder;
}

}  // namespace

std::unordered_set<uint64_t> DuplicateMounts(const std::vector<TMount>& pMounts, std::string_view pScanRoot) {
  std::vector<const TMount*> visible = VisibleMounts(pMounts);
  auto isBeneathRoot = [&](const TMount& pMount) {
    return IsSameOrBeneath(pMount.fMountPoint, pScanRoot) && pMount.fMountPoint != pScanRoot;
  };
  // A mount that shows more is decided before the mounts that show part of it.
  std::stable_sort(visible.begin(), visible.end(), [](const TMount* pA, const TMount* pB) {
    return pA->fRoot.size() != pB->fRoot.size() ? pA->fRoot.size() < pB->fRoot.size() : ComesFirst(*pA, *pB);
  });
  // homeFolder is the scan root's path in the file system of its mount.
  const TMount* const home = MountOf(pScanRoot, visible);
  if (home == nullptr) return {};
  const std::string homeFolder = Joined(home->fRoot, pScanRoot.substr(home->fMountPoint.size()));
  std::unordered_set<uint64_t> duplicates;
  // A path through a mount that the scan does not enter leads nowhere.
  auto isEntered = [&](const TMount& pMount) {
    return std::none_of(visible.begin(), visible.end(), [&](const TMount* pItem) {
      return isBeneathRoot(*pItem) && duplicates.contains(pItem->fId) &&
             IsSameOrBeneath(pMount.fMountPoint, pItem->fMountPoint);
    });
  };
  auto isShownBy = [&](const TMount& pMount, const TMount& pOther) {
    if (pOther.fDevice != pMount.fDevice || !IsSameOrBeneath(pMount.fRoot, pOther.fRoot)) return false;
    if (pOther.fRoot == pMount.fRoot && !ComesFirst(pOther, pMount)) return false;
    // A path that meets the scan's root a second time ends there.
    if (&pOther != home && pOther.fDevice == home->fDevice && IsSameOrBeneath(homeFolder, pOther.fRoot) &&
        IsSameOrBeneath(pMount.fRoot, homeFolder))
      return false;
    const std::string path = PathThrough(pOther, pMount);
    return IsSameOrBeneath(path, pScanRoot) && !IsHidden(path, pOther, visible) && isEntered(pOther);
  };
  for (const TMount* mount : visible) {
    if (isBeneathRoot(*mount) && std::any_of(visible.begin(), visible.end(), [&](const TMount* pOther) {
          return pOther != mount && isShownBy(*mount, *pOther);
        }))
      duplicates.insert(mount->fId);
  }
  return duplicates;
}

}  // namespace Vantrel::Enumerators

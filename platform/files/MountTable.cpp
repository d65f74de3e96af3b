#include "platform/files/MountTable.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace Vantrel {

namespace {

// Removes the text up to the delimiter, and the delimiter, from the front. Returns the text.
std::string_view Take(std::string_view& pText, char pDelimiter) {
  const std::string_view taken = pText.substr(0, pText.find(pDelimiter));
  pText.remove_prefix(std::min(taken.size() + 1, pText.size()));
  return taken;
}

bool IsOctal(char pChar) {
  return pChar >= '0' && pChar <= '7';
}

// The table writes blank, tab, line break and backslash as a backslash and three octal digits.
std::string Decoded(std::string_view pField) {
  std::string result;
  for (size_t at = 0; at < pField.size(); ++at) {
    if (pField[at] == '\\' && at + 3 < pField.size() && IsOctal(pField[at + 1]) && IsOctal(pField[at + 2]) &&
        IsOctal(pField[at + 3])) {
      result += static_cast<char>((pField[at + 1] - '0') * 64 + (pField[at + 2] - '0') * 8 + (pField[at + 3] - '0'));
      at += 3;
    } else {
      result += pField[at];
    }
  }
  return result;
}

// "36 35 98:0 /root /mount/point options [optional fields] - type source superoptions"
bool ParseLine(std::string_view pLine, TMount& pMount) {
  for (uint64_t* number : {&pMount.fId, &pMount.fParentId}) {
    const std::string_view id = Take(pLine, ' ');
    if (std::from_chars(id.data(), id.data() + id.size(), *number).ec != std::errc()) return false;
  }
  pMount.fDevice = Take(pLine, ' ');
  pMount.fRoot = Decoded(Take(pLine, ' '));
  pMount.fMountPoint = Decoded(Take(pLine, ' '));
  while (!pLine.empty() && Take(pLine, ' ') != "-") {
  }
  pMount.fFileSystem = Decoded(Take(pLine, ' '));
  pMount.fSource = Decoded(Take(pLine, ' '));
  return !pMount.fMountPoint.empty() && !pMount.fFileSystem.empty();
}

using TMountChain = std::unordered_set<uint64_t>;

// The ids of a mount and of the mounts below it, down to the first.
TMountChain ChainOf(const TMount& pMount, const std::unordered_map<uint64_t, uint64_t>& pParents) {
  TMountChain chain{pMount.fId};
  for (auto parent = pParents.find(pMount.fId); parent != pParents.end(); parent = pParents.find(parent->second))
    if (!chain.insert(parent->second).second) break;
  return chain;
}

bool IsNetworkFileSystem(std::string_view pType) {
  static constexpr std::string_view types[] = {"9p",  "afs",  "ceph", "cifs",  "glusterfs", "lustre",  "ncpfs",
                                               "nfs", "nfs4", "smb3", "smbfs", "vboxsf",    "virtiofs"};
  return std::find(std::begin(types), std::end(types), pType) != std::end(types);
}

// User-space file systems mostly show other machines. The ones listed here show files stored elsewhere, or take no
// space.
bool IsUserSpaceStorage(std::string_view pType) {
  static constexpr std::string_view views[] = {"fuse.gvfsd-fuse", "fuse.lxcfs", "fuse.portal", "fuse.archivemount"};
  if (pType != "fuse" && !pType.starts_with("fuse.")) return false;
  return std::find(std::begin(views), std::end(views), pType) == std::end(views);
}

bool IsDrive(const TMount& pMount) {
  if (pMount.fMountPoint == "/") return true;
  if (IsNetworkFileSystem(pMount.fFileSystem) || IsUserSpaceStorage(pMount.fFileSystem)) return true;
  if (pMount.fFileSystem == "zfs") return true;  // its sources are pools, not devices
  if (!pMount.fSource.starts_with("/dev/") || pMount.fFileSystem == "squashfs") return false;
  return pMount.fRoot == "/" || pMount.fFileSystem == "btrfs";  // a volume of btrfs is a folder of its device
}

}  // namespace

std::vector<TMount> ParseMountTable(std::string_view pTable) {
  std::vector<TMount> mounts;
  while (!pTable.empty()) {
    TMount mount;
    if (ParseLine(Take(pTable, '\n'), mount)) mounts.push_back(std::move(mount));
  }
  return mounts;
}

bool IsSameOrBeneath(std::string_view pPath, std::string_view pFolder) {
  if (!pPath.starts_with(pFolder)) return false;
  return pFolder == "/" || pPath.size() == pFolder.size() || pPath[pFolder.size()] == '/';
}

const TMount* FindMount(const std::vector<TMount>& pMounts, std::string_view pPath) {
  const TMount* found = nullptr;
  for (const TMount& mount : pMounts)
    if (IsSameOrBeneath(pPath, mount.fMountPoint) &&
        (found == nullptr || mount.fMountPoint.size() >= found->fMountPoint.size()))
      found = &mount;
  return found;
}

bool ComesFirst(const TMount& pA, const TMount& pB) {
  auto depth = [](const TMount& pMount) {
    return std::count(pMount.fMountPoint.begin(), pMount.fMountPoint.end(), '/');
  };
  if (depth(pA) != depth(pB)) return depth(pA) < depth(pB);
  if (pA.fMountPoint != pB.fMountPoint) return pA.fMountPoint < pB.fMountPoint;
  return pA.fId < pB.fId;
}

std::vector<const TMount*> VisibleMounts(const std::vector<TMount>& pMounts) {
  std::unordered_map<uint64_t, uint64_t> parents;
  for (const TMount& mount : pMounts) parents[mount.fId] = mount.fParentId;
  std::vector<std::pair<const TMount*, TMountChain>> outermostFirst;
  for (const TMount& mount : pMounts) outermostFirst.emplace_back(&mount, ChainOf(mount, parents));
  // Of several mounts on one point the topmost comes first.
  std::stable_sort(outermostFirst.begin(), outermostFirst.end(), [](const auto& pA, const auto& pB) {
    const size_t lengthA = pA.first->fMountPoint.size(), lengthB = pB.first->fMountPoint.size();
    return lengthA != lengthB ? lengthA < lengthB : pA.second.size() > pB.second.size();
  });
  std::vector<const TMount*> visible;
  for (const auto& candidate : outermostFirst) {
    const TMount* mount = candidate.first;
    const TMountChain& chain = candidate.second;
    const bool isCovered = std::any_of(visible.begin(), visible.end(), [&](const TMount* pOther) {
      return IsSameOrBeneath(mount->fMountPoint, pOther->fMountPoint) && !chain.contains(pOther->fId);
    });
    if (!isCovered) visible.push_back(mount);
  }
  return visible;
}

std::vector<TMount> DriveMounts(const std::vector<TMount>& pMounts) {
  std::vector<const TMount*> candidates = VisibleMounts(pMounts);
  std::erase_if(candidates, [](const TMount* pMount) { return !IsDrive(*pMount); });
  std::sort(candidates.begin(), candidates.end(), [](const TMount* pA, const TMount* pB) {
    if ((pA->fRoot == "/") != (pB->fRoot == "/")) return pA->fRoot == "/";
    return ComesFirst(*pA, *pB);
  });
  std::vector<TMount> drives;
  std::set<std::string_view> devices;
  for (const TMount* mount : candidates)
    if (devices.insert(mount->fDevice).second) drives.push_back(*mount);
  std::sort(drives.begin(), drives.end(),
            [](const TMount& pA, const TMount& pB) { return pA.fMountPoint < pB.fMountPoint; });
  return drives;
}

}  // namespace Vantrel

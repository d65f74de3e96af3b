#include "scan/MountTable_posix.h"

#include <linux/magic.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>

namespace Kiv::Enumerators {

namespace {

// Blanks, tabs, line breaks and backslashes stand as three octal digits behind a backslash.
std::string DecodeOctal(std::string_view pText) {
  std::string decoded;
  for (size_t i = 0; i < pText.size(); ++i) {
    unsigned value = 0;
    if (pText[i] == '\\' && i + 3 < pText.size() &&
        std::from_chars(pText.data() + i + 1, pText.data() + i + 4, value, 8).ptr == pText.data() + i + 4) {
      decoded += static_cast<char>(value);
      i += 3;
    } else {
      decoded += pText[i];
    }
  }
  return decoded;
}

std::vector<std::string_view> Words(std::string_view pLine) {
  std::vector<std::string_view> words;
  while (!pLine.empty()) {
    const size_t end = std::min(pLine.find(' '), pLine.size());
    if (end > 0) words.push_back(pLine.substr(0, end));
    pLine.remove_prefix(std::min(end + 1, pLine.size()));
  }
  return words;
}

bool IsSameOrBeneath(std::string_view pPath, std::string_view pFolder) {
  if (pFolder == "/") return true;
  return pPath.starts_with(pFolder) && (pPath.size() == pFolder.size() || pPath[pFolder.size()] == '/');
}

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

std::vector<TMount> ParseMountInfo(std::string_view pText) {
  std::vector<TMount> mounts;
  while (!pText.empty()) {
    const size_t end = std::min(pText.find('\n'), pText.size());
    const std::vector<std::string_view> words = Words(pText.substr(0, end));
    pText.remove_prefix(std::min(end + 1, pText.size()));
    // id, parent, device, root, mount point, options …
    TMount mount;
    if (words.size() < 6) continue;
    const char* idEnd = words[0].data() + words[0].size();
    if (std::from_chars(words[0].data(), idEnd, mount.fId).ptr != idEnd) continue;
    mount.fDevice = words[2];
    mount.fRoot = DecodeOctal(words[3]);
    mount.fMountPoint = DecodeOctal(words[4]);
    mounts.push_back(std::move(mount));
  }
  return mounts;
}

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

std::vector<TMount> ReadMounts() {
  std::ifstream file("/proc/self/mountinfo");
  return ParseMountInfo(std::string(std::istreambuf_iterator<char>(file), {}));
}

bool IsPseudoFileSystem(uint64_t pMagic) {
  switch (pMagic) {
    case PROC_SUPER_MAGIC:
    case SYSFS_MAGIC:
    case CGROUP_SUPER_MAGIC:
    case CGROUP2_SUPER_MAGIC:
    case DEVPTS_SUPER_MAGIC:
    case DEBUGFS_MAGIC:
    case TRACEFS_MAGIC:
    case SECURITYFS_MAGIC:
    case SELINUX_MAGIC:
    case SMACK_MAGIC:
    case BPF_FS_MAGIC:
    case PSTOREFS_MAGIC:
    case EFIVARFS_MAGIC:
    case HUGETLBFS_MAGIC:
    case BINFMTFS_MAGIC:
    case NSFS_MAGIC:
    case RDTGROUP_MAGIC:
    case AUTOFS_SUPER_MAGIC:  // looking into one would mount what stands behind it
    case 0x19800202:          // message queues
    case 0x62656570:          // configfs
    case 0x65735543:          // the control file system of fuse
      return true;
    default:
      return false;
  }
}

}  // namespace Kiv::Enumerators

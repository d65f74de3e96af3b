#include "scan/ntfs/MftNames.h"

#include <algorithm>

#include "platform/files/Paths.h"

namespace Vantrel::Ntfs {

namespace {

// Smaller folders are looked through.
constexpr size_t kLargeFolder = 64;

std::span<const uint32_t> NamesIn(const THierarchicalMftRoot& pRoot, uint32_t pFolder, bool pFolders) {
  return pFolders ? pRoot.SubFoldersOf(pFolder) : pRoot.FilesOf(pFolder);
}

}  // namespace

uint32_t FindName(const THierarchicalMftRoot& pRoot, std::span<const uint32_t> pNames, std::u16string_view pText) {
  uint32_t similar = kNoName;
  for (const uint32_t name : pNames) {
    const std::u16string_view text = pRoot.NameText(name);
    if (text == pText) return name;
    if (similar == kNoName && SamePath(text, pText, u'\\')) similar = name;
  }
  return similar;
}

std::optional<uint32_t> TMftNames::FindFile(std::u16string_view pPath, char16_t pDelimiter) {
  uint32_t folder = kRootRecord;
  for (;;) {
    const size_t end = pPath.find(pDelimiter);
    const bool isFolder = end != std::u16string_view::npos;
    const uint32_t name = Find(folder, isFolder, pPath.substr(0, end));
    if (name == kNoName) return {};
    folder = fRoot->RecordOfName(name);
    if (!isFolder) return folder;
    pPath.remove_prefix(end + 1);
  }
}

uint32_t TMftNames::Find(uint32_t pFolder, bool pIsFolder, std::u16string_view pText) {
  const std::span<const uint32_t> names = NamesIn(*fRoot, pFolder, pIsFolder);
  if (names.size() >= kLargeFolder) {
    const std::vector<uint32_t>& sorted = Sorted(pFolder, pIsFolder);
    const auto found =
        std::lower_bound(sorted.begin(), sorted.end(), pText,
                         [&](uint32_t pName, std::u16string_view pWanted) { return fRoot->NameText(pName) < pWanted; });
    if (found != sorted.end() && fRoot->NameText(*found) == pText) return *found;
  }
  return FindName(*fRoot, names, pText);
}

const std::vector<uint32_t>& TMftNames::Sorted(uint32_t pFolder, bool pIsFolder) {
  TCriticalSectionLock lock(fLock);
  std::vector<uint32_t>& sorted = fSorted[uint64_t{pFolder} * 2 + pIsFolder];
  if (sorted.empty()) {
    const std::span<const uint32_t> names = NamesIn(*fRoot, pFolder, pIsFolder);
    sorted.assign(names.begin(), names.end());
    // Of equal names, which only a damaged volume has, the first one is found.
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](uint32_t pA, uint32_t pB) { return fRoot->NameText(pA) < fRoot->NameText(pB); });
  }
  return sorted;
}

}  // namespace Vantrel::Ntfs

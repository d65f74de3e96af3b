#pragma once

// Finds files and folders of an index by their names.

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/threads/CriticalSection.h"
#include "scan/ntfs/MftRoot.h"

namespace Vantrel::Ntfs {

// The name in a list; exactly if possible, else without regard to letter case. kNoName if it is not there.
uint32_t FindName(const THierarchicalMftRoot& pRoot, std::span<const uint32_t> pNames, std::u16string_view pText);

// Finds many files, one after the other, in folders of any size. Any thread.
class TMftNames {
 public:
  explicit TMftNames(TRef<const THierarchicalMftRoot> pRoot) : fRoot(std::move(pRoot)) {}

  // The record of a file, by its path from the volume's root, without a delimiter at either end.
  std::optional<uint32_t> FindFile(std::u16string_view pPath, char16_t pDelimiter);

 private:
  uint32_t Find(uint32_t pFolder, bool pIsFolder, std::u16string_view pText);
  const std::vector<uint32_t>& Sorted(uint32_t pFolder, bool pIsFolder);

  const TRef<const THierarchicalMftRoot> fRoot;
  TCriticalSection fLock;
  // Names of large folders, sorted by text. Never changed once they are there.
  std::unordered_map<uint64_t, std::vector<uint32_t>> fSorted GUARDED_BY(fLock);
};

}  // namespace Vantrel::Ntfs

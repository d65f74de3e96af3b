#pragma once

// Random trees in memory, and random changes of them.

#include <random>
#include <string>
#include <vector>

#include "platform/text/Text.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Testing {

// Half a day off the bounds of the age intervals, so that the age stays the same while a test runs.
inline TKivFileTime DaysAgo(int64_t pDays) {
  return {TKivFileTime::Now().fTicks - pDays * TKivFileTime::kTicksPerDay - TKivFileTime::kTicksPerDay / 2};
}

// What the names in a random tree begin and end with, and whom its files belong to.
struct TRandomWords {
  std::vector<std::u16string> fFiles{u"f"};
  std::vector<std::u16string> fFolders{u"folder "};
  std::vector<std::u16string> fExtensions{u".txt", u".TXT", u".c", u".mp3", u"", u".", u".tar.gz"};
  std::vector<std::u16string> fOwners{u"", u"root", u"anna", u"bert"};
};

// Makes and changes trees. Every decision comes from one seed.
class TRandomTree {
 public:
  explicit TRandomTree(uint32_t pSeed, TRandomWords pWords = {}) : fWords(std::move(pWords)), fRandom(pSeed) {}

  int Below(int pBound) { return static_cast<int>(fRandom() % static_cast<uint32_t>(pBound)); }

  void SetDates(TMemoryEntry& pEntry) {
    if (Below(8) != 0) pEntry.fValues.fLastChangeDate = DaysAgo(Below(1000));
    if (Below(8) != 0) pEntry.fValues.fLastAccessDate = DaysAgo(Below(1000));
    pEntry.fValues.fCreationDate = DaysAgo(Below(1000));
  }

  void AddFile(TMemoryEntry& pFolder) {
    const std::u16string name = Name(fWords.fFiles) + Pick(fWords.fExtensions);
    TMemoryEntry& file = pFolder.AddFile(name, Below(4) == 0 ? 0 : Below(100'000));
    file.fValues.fAllocated = (file.fValues.fSize + 4095) / 4096 * 4096;
    if (Below(5) == 0) file.fValues.fAttributes |= kAttributeCompressed;
    file.fOwnerId = static_cast<uint64_t>(Below(static_cast<int>(fWords.fOwners.size())));
    file.fOwner = fWords.fOwners[file.fOwnerId];
    SetDates(file);
  }

  TMemoryEntry& AddFolder(TMemoryEntry& pParent, int pDepth) {
    TMemoryEntry& folder = pParent.AddFolder(Name(fWords.fFolders));
    SetDates(folder);
    folder.fCanDescend = Below(20) != 0;
    Fill(folder, pDepth);
    return folder;
  }

  void Fill(TMemoryEntry& pFolder, int pDepth) {
    for (int i = Below(6); i > 0; --i) AddFile(pFolder);
    if (pDepth == 0) return;
    for (int i = Below(5); i > 0; --i) AddFolder(pFolder, pDepth - 1);
  }

  // Changes what lies directly in a folder, in one of several ways.
  void Change(TMemoryEntry& pFolder) {
    const int removeFiles = Below(4);  // of 0 none, of 3 all
    const int removeFolders = Below(4);
    for (TMemoryEntry& child : pFolder.fChildren) {
      const int share = child.IsFolder() ? removeFolders : removeFiles;
      if (Below(3) < share) child.fRemoved = true;
      if (!child.fRemoved && !child.IsFolder() && Below(3) == 0) child.fValues.fSize += Below(200'000);
    }
    for (int i = Below(4); i > 0; --i) AddFile(pFolder);
    for (int i = Below(3); i > 0; --i) AddFolder(pFolder, Below(3));
  }

 private:
  const std::u16string& Pick(const std::vector<std::u16string>& pWords) {
    return pWords.size() == 1 ? pWords[0] : pWords[static_cast<size_t>(Below(static_cast<int>(pWords.size())))];
  }
  std::u16string Name(const std::vector<std::u16string>& pWords) {
    return Pick(pWords) + FromUtf8(std::to_string(++fNames));
  }

  const TRandomWords fWords;
  std::mt19937 fRandom;
  int fNames = 0;
};

}  // namespace Vantrel::Testing

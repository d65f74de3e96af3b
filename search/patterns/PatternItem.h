#pragma once

// What patterns see of an entry.

#include <array>
#include <bitset>
#include <boost/unordered/unordered_flat_map.hpp>
#include <string>

#include "model/tree/HierarchicalInterfaces.h"
#include "search/patterns/MatchText.h"

namespace Vantrel::PatternMatching {

// What patterns see of a file or folder: the texts of its columns, each worked out once, when the first pattern asks
// for it. Used for entry after entry it keeps its memory, so that names, paths, extensions and owners cost no
// allocation. One thread.
class TPatternItem {
 public:
  // The delimiter of the paths: the root's.
  explicit TPatternItem(char16_t pDelimiter) : fDelimiter(pDelimiter) {}

  // The entries that follow lie in this folder.
  void SetFolder(std::u16string_view pPath);
  // The current entry of an enumerator, in the folder that was set.
  void SetEntry(const IHierarchicalEnumerator& pEntry);
  // A node of a tree, or anything else with values of its own.
  void SetObject(const IHierarchicalBase& pObject);

  bool IsFolder() const { return fIsFolder; }
  // The column's value as text: names and paths as they are, numbers as bare numbers, dates and attributes as lists
  // show them. Empty when there is none. Good until the next entry is set.
  TMatchText& TextOf(TColumn pColumn) {
    const auto index = static_cast<size_t>(pColumn);
    if (!fFilled[index]) Fill(pColumn, fTexts[index]);
    return fTexts[index].fText;
  }

 private:
  static constexpr size_t kColumns = static_cast<size_t>(TColumn::mdCount);
  struct TColumnText {
    std::u16string fBuffer;
    TMatchText fText;
  };

  void Fill(TColumn pColumn, TColumnText& pText);
  void FillFullPath(TColumnText& pText);
  void FillOwner(TColumnText& pText);

  const char16_t fDelimiter;
  std::u16string fFolderPrefix;  // with its delimiter
  bool fPathHasPrefix = false;   // the text of the full path begins with it
  TUnitSet fPrefixUnits = 0;     // of it, once folded
  size_t fFolderLength = 0;      // without it
  const IHierarchicalBase* fObject = nullptr;
  const IHierarchicalEnumerator* fEntry = nullptr;  // fObject, when it is an enumerator
  bool fIsFolder = false;
  std::bitset<kColumns> fFilled;
  std::array<TColumnText, kColumns> fTexts;
  boost::unordered_flat_map<uint64_t, std::u16string> fOwnerNames;  // by owner id: a look-up may take system calls
};

}  // namespace Vantrel::PatternMatching

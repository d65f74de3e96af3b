#pragma once

// The values of an entry as patterns see them.

#include <array>
#include <bitset>
#include <boost/unordered/unordered_flat_map.hpp>
#include <optional>
#include <string>

#include "model/tree/EntryView.h"
#include "search/patterns/MatchText.h"

namespace Vantrel::PatternMatching {

// The texts of a file's or folder's columns, as patterns see them. Each text is made once, when the first pattern needs
// it. The object keeps its memory from entry to entry, so names, paths, extensions and owners allocate nothing. One
// thread.
class TPatternItem {
 public:
  // pDelimiter is the path delimiter of the root.
  explicit TPatternItem(char16_t pDelimiter) : fDelimiter(pDelimiter) {}

  // Sets the folder of the entries that follow.
  void SetFolder(std::u16string_view pPath);
  // Sets the enumerator's current entry. It lies in the folder set before.
  void SetEntry(const IHierarchicalEnumerator& pEntry);
  // Sets any other file or folder.
  void SetObject(const TEntryView& pObject);

  bool IsFolder() const { return fIsFolder; }
  // The column's value as text. Names and paths are unchanged, numbers have no grouping, dates and attributes are as
  // lists show them. Empty if there is no value. Valid until the next entry is set.
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
  std::u16string fFolderPrefix;  // ends with the delimiter
  bool fPathHasPrefix = false;   // whether the text of the full path begins with fFolderPrefix
  TUnitSet fPrefixUnits = 0;     // units of fFolderPrefix, once folded
  size_t fFolderLength = 0;      // length of the folder's path without the delimiter
  std::optional<TEntryView> fObject;
  const IHierarchicalEnumerator* fEntry = nullptr;  // what fObject reads, if it is a listing
  bool fIsFolder = false;
  std::bitset<kColumns> fFilled;
  std::array<TColumnText, kColumns> fTexts;
  boost::unordered_flat_map<uint64_t, std::u16string> fOwnerNames;  // by owner ID: a look-up may take system calls
};

}  // namespace Vantrel::PatternMatching

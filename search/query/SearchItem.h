#pragma once

// The file or folder that conditions are matched against.

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/tree/EntryView.h"
#include "search/patterns/MatchText.h"
#include "search/query/FileFacts.h"

namespace Vantrel::Search {

// One file or folder, as conditions see it. A thread of a search makes one object and sets each entry into it in turn.
// Everything is made on first use, so a condition on the name costs no more than reading the name. The object keeps
// its memory from entry to entry. One thread.
class TSearchItem {
 public:
  // pDelimiter is the path delimiter of the storage or root. pFacts may be nullptr if no condition needs it; see
  // TSearchAbility.
  explicit TSearchItem(char16_t pDelimiter, IFileFacts* pFacts = nullptr) : fDelimiter(pDelimiter), fFacts(pFacts) {}

  // Sets the folder of the entries that follow. pLevel is their recursion level: 1 for what lies directly in the
  // searched folder, 0 for that folder itself. Without a path, the first entry that needs one is asked for its
  // parent's.
  void SetFolder(std::u16string_view pPath, int64_t pLevel);
  void SetFolder(int64_t pLevel);
  // Sets the entry. It lies in the folder set before. What the view reads must stay as it is until the next entry is
  // set.
  void SetEntry(const TEntryView& pEntry) {
    fEntry = pEntry;
    fIsFolder = pEntry.IsFolder();
    fListed = nullptr;
    fFilled = 0;
  }
  // The current entry of a listing. Owners are then looked up once each.
  void SetEntry(const IHierarchicalEnumerator& pEntry) {
    SetEntry(TEntryView(pEntry));
    fListed = &pEntry;
  }

  const TEntryView& Entry() const { return *fEntry; }
  bool IsFolder() const { return fIsFolder; }
  int64_t Level() const { return fLevel; }
  char16_t PathDelimiter() const { return fDelimiter; }
  // nullptr if the target of the search has none.
  IFileFacts* Facts() const { return fFacts; }

  std::u16string_view NameText() const { return fEntry->GetObjectName(); }
  // The folder's path without a delimiter at its end, except for a root. Empty for the searched folder of a tree.
  const std::u16string& FolderPath();

  // These texts are folded at most once per entry, however many conditions compare them.
  PatternMatching::TMatchText& Name() { return fFilled & kName ? fName.fText : FillName(); }
  PatternMatching::TMatchText& FullPath() { return fFilled & kFullPath ? fFullPath.fText : FillFullPath(); }
  PatternMatching::TMatchText& FolderText();      // of FolderPath
  PatternMatching::TMatchText& FolderNameText();  // the folder's own name
  PatternMatching::TMatchText& Owner() { return fFilled & kOwner ? fOwner.fText : FillOwner(); }
  // Whether a condition has asked for Name already. It is folded then.
  bool IsNameFolded() const { return (fFilled & kName) != 0; }

 private:
  static constexpr uint8_t kName = 1, kFullPath = 2, kOwner = 4;
  struct TText {
    std::u16string fBuffer;
    PatternMatching::TMatchText fText;
  };

  PatternMatching::TMatchText& FillName();
  PatternMatching::TMatchText& FillFullPath();
  PatternMatching::TMatchText& FillOwner();

  const char16_t fDelimiter;
  IFileFacts* const fFacts;
  std::optional<TEntryView> fEntry;
  const IHierarchicalEnumerator* fListed = nullptr;  // what fEntry reads, if it is a listing
  bool fIsFolder = false;
  uint8_t fFilled = 0;  // which texts are those of the current entry
  int64_t fLevel = 0;
  TText fName, fFullPath, fOwner;

  // Of the folder, for all of its entries.
  bool fHasFolderPath = false, fHasFolderText = false, fHasPathPrefix = false;
  TText fFolder;
  PatternMatching::TMatchText fFolderName;
  size_t fPrefixLength = 0;  // of the folder's path in fFullPath, with the delimiter
  PatternMatching::TUnitSet fPrefixUnits = 0;
  boost::unordered_flat_map<uint64_t, std::u16string> fOwnerNames;  // by owner ID: a look-up may take system calls
};

}  // namespace Vantrel::Search

#pragma once

// What a worker of a search needs for one target, kept from job to job.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/tree/FileTable.h"
#include "model/tree/TreeWalk.h"
#include "search/files/SearchRun.h"
#include "search/query/SearchItem.h"

namespace Vantrel::Search {

// One thread at a time. Matches entries and collects what matches.
class TSearchWorker {
 public:
  // The storage may be nullptr for a tree. All filters must take an entry in.
  TSearchWorker(TSearchRun& pRun, const TRef<IStorage>& pStorage, char16_t pDelimiter,
                std::vector<std::unique_ptr<IEntryFilter>> pFilters);
  ~TSearchWorker();

  // A listing begins. pLevel is that of its entries.
  void BeginListing(IHierarchicalEnumerator& pListing, int64_t pLevel);
  // Whether the search takes in the current entry at all.
  bool IsIncluded(bool pIsFolder);
  // Matches the listing's current entry and takes what matches.
  void MatchListed();
  // Keeps the listing's current file to be matched later.
  void KeepFile();
  // The files that were kept, and an empty list for the next folder.
  TRef<const TFileTable> TakeFiles();
  TRef<const TFoundFolder> ListedFolder();
  void EndListing();

  // Matches the files of a slice.
  void MatchFiles(const TFileTable& pFiles, size_t pBegin, size_t pEnd, const TRef<const TFoundFolder>& pFolder,
                  int64_t pLevel);
  // Matches a folder of a tree, and a folder's files from pBegin to before pEnd. pLevel is that of their rows.
  void MatchFolder(const TTreeRow& pRow);
  void MatchFilesOf(IFolderData& pFolder, int32_t pLevel, const TFileTable& pFiles, size_t pBegin, size_t pEnd);

  void HandOver() { fRun.HandOver(fFound); }

 private:
  bool Matches(const TEntryView& pEntry) {
    fItem.SetEntry(pEntry);
    return fRun.Settings().fExpression.Matches(fItem);
  }
  std::u16string PathOfFolder(const IFolderData& pFolder);
  void TakeRow(const TTreeRow& pRow);
  TKeyId OwnerKeyOf(const IHierarchicalEnumerator& pEntry);

  TSearchRun& fRun;
  const TRef<IStorage> fStorage;
  const char16_t fDelimiter;
  TFileFactsReader fFacts;
  TSearchItem fItem;
  const std::vector<std::unique_ptr<IEntryFilter>> fFilters;
  std::vector<TFoundItem> fFound;
  TFileTableBuilder fFiles;
  std::pair<uint64_t, TKeyId> fLastOwner{0, kNoKey};

  IHierarchicalEnumerator* fListing = nullptr;
  // Made when something is found in the folder.
  TRef<const TFoundFolder> fListedFolder;
  TRef<const TFoundFolder> fFolderOfRows;
  bool fIsFolderOfRows = false;             // whether fFolderOfRows holds the last row
  TRef<IHierarchicalElement> fOuterFolder;  // the last one that PathOfFolder met
  std::u16string fOuterPath;
  std::vector<TFileSet> fRoom;  // for the expression
};

}  // namespace Vantrel::Search

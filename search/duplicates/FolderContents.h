#pragma once

// The folders of a search with what lies in them, to compare whole folders.

#include <deque>
#include <unordered_map>
#include <vector>

#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::Search {

// A folder with its direct entries, in the order of their names.
struct TFolderNode {
  TRef<TDuplicateFile> fItem;
  TFolderNode* fParent = nullptr;
  std::vector<TFolderNode*> fFolders;
  std::vector<TDuplicateFile*> fFiles;
  // Of everything beneath.
  int64_t fBytes = 0;
  int64_t fAllFiles = 0;
  int64_t fAllFolders = 0;
  // Something in it or beneath it is not known, so it equals no other folder.
  bool fIsIncomplete = false;
  bool fIsLookedAt = false;
};

// All folders beneath the searched paths, and these themselves.
class TFolderContents final {
 public:
  // Takes the files and folders that a search has found.
  TFolderContents(std::vector<TFoundItem> pItems, const TDuplicateSearchSettings& pSettings);

  // The folders that may be equal to others: several share the size, the counts and, if wanted, the name. fBucket of
  // their items says which.
  std::vector<TFolderNode*> Candidates(const TDuplicateSearchSettings& pSettings);
  // The files beneath such folders, in buckets of one size. If one of them has a size that no other has, no folder
  // above it can be equal to another: these folders then count as incomplete.
  std::vector<TRef<TDuplicateFile>> FilesOf(std::vector<TFolderNode*> pCandidates);
  // Marks the folders above all files that have left the search.
  void MarkIncomplete();
  std::unordered_map<const TDuplicateFile*, const TFolderNode*> ByItem() const;

 private:
  using TNodesByPath = std::unordered_map<std::u16string, TFolderNode*>;

  // Takes the folders out of the list.
  TNodesByPath AddFolders(std::vector<TFoundItem>& pItems, const std::vector<std::u16string>& pTops);
  void AddFiles(std::vector<TFoundItem> pItems, const TNodesByPath& pNodes);
  void AddUp();
  // What lies above an incomplete folder is incomplete.
  void PassUp();

  std::deque<TFolderNode> fNodes;
  std::vector<TFolderNode*> fDownwards;  // parents before their sub-folders
  std::vector<TRef<TDuplicateFile>> fFiles;
};

}  // namespace Vantrel::Search

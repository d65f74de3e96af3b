#pragma once

// The folders that a view shows expanded, for exports of what is seen.

#include <string>
#include <unordered_set>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

// A set of folders. Filled by one thread, then read by any.
class TExpandedFolders {
 public:
  void Add(TRef<IFolderData> pFolder) {
    if (IsGone(*pFolder)) {
      fGone.insert(pFolder->GetFullPath());
    } else if (fFolders.insert(pFolder.get()).second) {
      fHeld.push_back(std::move(pFolder));
    }
  }
  bool Contains(const IFolderData& pFolder) const {
    return IsGone(pFolder) ? fGone.contains(pFolder.GetFullPath()) : fFolders.contains(&pFolder);
  }

 private:
  static bool IsGone(const IFolderData& pFolder) { return (pFolder.GetFolderState() & fsIsDummyForComparison) != 0; }

  std::unordered_set<const IFolderData*> fFolders;
  std::vector<TRef<IFolderData>> fHeld;      // so that no other folder gets the address of one
  std::unordered_set<std::u16string> fGone;  // rows of what has gone are made anew for each caller
};

}  // namespace Vantrel

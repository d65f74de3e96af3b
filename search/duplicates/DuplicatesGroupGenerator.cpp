#include "search/duplicates/DuplicatesGroupGenerator.h"

namespace Vantrel::Search {

void TDuplicatesGroupGenerator::Add(TRef<IHierarchicalObject> pFile, const TMD5Hash& pHash) {
  TExclusiveLock lock(fSynchronizer);
  TRef<IHierarchicalObject>& entry = fFileGroups[pHash];
  if (!entry) {
    entry = std::move(pFile);
    return;
  }
  TRef<IHierarchicalObject> news = pFile;
  if (auto* group = dynamic_cast<TDuplicatesGroup*>(entry.get())) {
    group->Add(std::move(pFile));
  } else {
    auto made = MakeRef<TDuplicatesGroup>(pHash);
    made->Add(entry);
    made->Add(std::move(pFile));
    entry = made;
    news = made;
  }
  if (fOnNewDuplicateAdded) fOnNewDuplicateAdded(news);
}

std::vector<TRef<TDuplicatesGroup>> TDuplicatesGroupGenerator::Groups() const {
  TSharedLock lock(fSynchronizer);
  std::vector<TRef<TDuplicatesGroup>> groups;
  for (const auto& [hash, entry] : fFileGroups)
    if (auto* group = dynamic_cast<TDuplicatesGroup*>(entry.get())) groups.emplace_back(group);
  return groups;
}

}  // namespace Vantrel::Search

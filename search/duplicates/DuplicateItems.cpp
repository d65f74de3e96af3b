#include "search/duplicates/DuplicateItems.h"

namespace Vantrel::Search {

void TDuplicatesGroup::Add(TRef<IHierarchicalObject> pFile) {
  TExclusiveLock lock(fLock);
  fFiles.push_back(std::move(pFile));
}

std::vector<TRef<IHierarchicalObject>> TDuplicatesGroup::Files() const {
  TSharedLock lock(fLock);
  return fFiles;
}

int64_t TDuplicatesGroup::GetSize() const {
  TSharedLock lock(fLock);
  return fFiles.empty() ? 0 : fFiles.front()->GetSize();
}

int64_t TDuplicatesGroup::GetFiles() const {
  TSharedLock lock(fLock);
  return static_cast<int64_t>(fFiles.size());
}

}  // namespace Vantrel::Search

#pragma once

// Collects files by their checksums, and tells of each one that turns out to be a duplicate.

#include <functional>
#include <unordered_map>
#include <vector>

#include "search/duplicates/DuplicateItems.h"

namespace Vantrel::Search {

class IDuplicatesGroupGenerator : public IInterface {
 public:
  // Takes a file. Any thread.
  virtual void Add(TRef<IHierarchicalObject> pFile, const TMD5Hash& pHash) = 0;
  // The groups of two and more files.
  virtual std::vector<TRef<TDuplicatesGroup>> Groups() const = 0;
};

// Called with a new group, which holds its first two files, and then with each further file of a group.
using TOnNewDuplicate = std::function<void(const TRef<IHierarchicalObject>&)>;

class TDuplicatesGroupGenerator final : public TInterfaced<IDuplicatesGroupGenerator> {
 public:
  // The event is told under the lock, so that events of one group come in their order. It must not call the generator.
  explicit TDuplicatesGroupGenerator(TOnNewDuplicate pOnNewDuplicateAdded = {})
      : fOnNewDuplicateAdded(std::move(pOnNewDuplicateAdded)) {}

  void Add(TRef<IHierarchicalObject> pFile, const TMD5Hash& pHash) override;
  std::vector<TRef<TDuplicatesGroup>> Groups() const override;

 private:
  mutable TSlimReaderWriterLock fSynchronizer;
  // A single file, or the group of all files with the checksum.
  std::unordered_map<TMD5Hash, TRef<IHierarchicalObject>, HashUtils::THashOfMD5Hash> fFileGroups
      GUARDED_BY(fSynchronizer);
  const TOnNewDuplicate fOnNewDuplicateAdded;
};

}  // namespace Vantrel::Search

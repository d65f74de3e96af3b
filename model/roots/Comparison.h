#pragma once

// An earlier state of a tree, folder by folder, and what has gone since.

#include <boost/unordered/unordered_flat_map.hpp>

#include "model/tree/CustomFolder.h"

namespace Vantrel {

// Compares a root with an earlier scan.
//
// The folders of both trees are paired by name, level by level, from the tops down, whatever the roots' own paths are.
// For a folder that is only in the earlier tree, a node without content enters the current one, with all that was
// beneath it, so that lists show what has gone. Such nodes count nowhere; the next scan takes them away with the tree.
class TComparison : public TInterfaced<IComparison> {
 public:
  // Neither root may be scanning, both must have a tree. The earlier one is not needed any more after this.
  TComparison(IHierarchicalRoot& pCurrent, IHierarchicalRoot& pEarlier);

  bool WasThere(const IFolderData& pFolder) const override { return fCompareDictionary.contains(&pFolder); }
  TSizeValues EarlierValues(const IFolderData& pFolder) const override;
  TKivFileTime GetScanTimeStamp() const override { return fScanTimeStamp; }

 private:
  // A folder of both trees; without a current one it has gone.
  struct TPair {
    TRef<TCustomFolderData> fCurrent;
    TRef<IFolderData> fEarlier;
  };
  void PairChildren(const TPair& pPair, std::vector<TPair>& pStack);

  const TKivFileTime fScanTimeStamp;
  const char16_t fDelimiter;
  boost::unordered_flat_map<const IFolderData*, TSizeValues> fCompareDictionary;
};

}  // namespace Vantrel

#include "model/RootEntryFilter.h"

#include "platform/WildcardMatch.h"

namespace Kiv {

// The nested filter comes first: its counts are the same whatever mask the path holds.
bool TRootEntryFilter::IsFileIncluded(const IHierarchicalEnumerator& pEntry) {
  if (fNested && !fNested->IsFileIncluded(pEntry)) return false;
  if (!fFileMask.empty() && !MatchesWildcards(pEntry.GetObjectName(), fFileMask)) {
    fExclusions.fByFileMask.fetch_add(1, std::memory_order_relaxed);
    return false;
  }
  if (fExpression && !fExpression->Evaluate(pEntry)) {
    fExclusions.fByExpression.fetch_add(1, std::memory_order_relaxed);
    return false;
  }
  return true;
}

}  // namespace Kiv

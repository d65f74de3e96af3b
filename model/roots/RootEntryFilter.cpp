#include "model/roots/RootEntryFilter.h"

#include <utility>

#include "platform/text/WildcardMatch.h"

namespace Vantrel {

// The nested filter decides first, so its counts do not depend on the mask in the path.
bool TRootEntryFilter::IsFileIncluded(const IHierarchicalEnumerator& pEntry) {
  if (fNested && !fNested->IsFileIncluded(pEntry)) return false;
  if (!fFileMask.empty() && !MatchesWildcards(pEntry.GetObjectName(), fFileMask)) {
    ++fByFileMask;
    return false;
  }
  if (fExpression && !fExpression->Evaluate(pEntry)) {
    ++fByExpression;
    return false;
  }
  return true;
}

void TRootEntryFilter::EndFolder() {
  if (fNested) fNested->EndFolder();
  fExclusions.fByFileMask.fetch_add(std::exchange(fByFileMask, 0), std::memory_order_relaxed);
  fExclusions.fByExpression.fetch_add(std::exchange(fByExpression, 0), std::memory_order_relaxed);
}

}  // namespace Vantrel

#pragma once

// An enumerator that passes on only the entries that a list of patterns takes in.

#include "scan/storage/NestedEnumerators.h"
#include "search/patterns/PatternInterfaces.h"
#include "search/patterns/PatternItem.h"

namespace Vantrel::Enumerators {

// Passes on the entries that a list of patterns takes in. A file passes if some include pattern matches it, or none
// exists, and no exclude pattern matches. A folder passes if a walk must go through it. Meant for walks outside a scan.
// A scan filters by itself and counts what it leaves out.
class TFileFilterEnumerator : public TBaseFilterEnumerator {
 public:
  // The list may change during use.
  TFileFilterEnumerator(TRef<IHierarchicalEnumerator> pNested, TRef<PatternMatching::IPatterns> pPatterns);

 protected:
  bool IsIncluded() override;
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override;

 private:
  const TRef<PatternMatching::IPatterns> fPatterns;
  PatternMatching::TPatternItem fItem;
};

}  // namespace Vantrel::Enumerators

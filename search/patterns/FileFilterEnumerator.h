#pragma once

// A list as a filter around an enumerator.

#include "scan/storage/NestedEnumerators.h"
#include "search/patterns/PatternInterfaces.h"
#include "search/patterns/PatternItem.h"

namespace Vantrel::Enumerators {

// Passes on what a list of patterns lets in: files that some include pattern matches, or any when there is none, and no
// exclude pattern; folders that a walk has to go through. For walks outside a scan, which judges by itself and counts
// what it leaves out.
class TFileFilterEnumerator : public TBaseFilterEnumerator {
 public:
  // The list may change while it is used.
  TFileFilterEnumerator(TRef<IHierarchicalEnumerator> pNested, TRef<PatternMatching::IPatterns> pPatterns);

 protected:
  bool IsIncluded() override;
  TRef<IHierarchicalEnumerator> Wrap(TRef<IHierarchicalEnumerator> pNested) const override;

 private:
  const TRef<PatternMatching::IPatterns> fPatterns;
  PatternMatching::TPatternItem fItem;
};

}  // namespace Vantrel::Enumerators

#include "search/patterns/FileFilterEnumerator.h"

namespace Vantrel::Enumerators {

using PatternMatching::TPatternType;

TFileFilterEnumerator::TFileFilterEnumerator(TRef<IHierarchicalEnumerator> pNested,
                                             TRef<PatternMatching::IPatterns> pPatterns)
    : TBaseFilterEnumerator(std::move(pNested)), fPatterns(std::move(pPatterns)), fItem(fPatterns->GetPathDelimiter()) {
  fItem.SetFolder(fNestedEnumerator->GetPath());
}

bool TFileFilterEnumerator::IsIncluded() {
  fItem.SetEntry(*fNestedEnumerator);
  if (fItem.IsFolder()) return !fPatterns->StopTraversing(fItem);
  const bool anyInclude = fPatterns->Count(true, {TPatternType::ptyInclude}) > 0;
  return (!anyInclude || fPatterns->Matches(fItem, TPatternType::ptyInclude)) &&
         !fPatterns->Matches(fItem, TPatternType::ptyExclude);
}

TRef<IHierarchicalEnumerator> TFileFilterEnumerator::Wrap(TRef<IHierarchicalEnumerator> pNested) const {
  return MakeRef<TFileFilterEnumerator>(std::move(pNested), fPatterns);
}

}  // namespace Vantrel::Enumerators

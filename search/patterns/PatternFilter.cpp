#include "search/patterns/PatternFilter.h"

#include <algorithm>

#include "search/patterns/PatternItem.h"
#include "search/patterns/PatternTargets.h"
#include "search/patterns/PatternText.h"

namespace Vantrel {

using namespace Vantrel::PatternMatching;

// The filter that one thread uses. It groups the patterns by what they decide, so none is asked in vain. It counts by
// itself and reports the counts once per folder that has any.
class TPatternFilter::TEntryFilter : public IEntryFilter {
 public:
  explicit TEntryFilter(TPatternFilter& pFilter)
      : fFilter(&pFilter),
        fItem(pFilter.fPatterns->GetPathDelimiter()),
        fCounts(pFilter.fActive.size() + 2),
        fMatched(pFilter.fActive.size()),
        fUnmatched(pFilter.fActive.size()) {
    for (size_t i = 0; i < pFilter.fActive.size(); ++i) {
      IPattern* pattern = pFilter.fActive[i].get();
      if (pattern->GetPatternType() == TPatternType::ptyExclude) {
        fExcludes.push_back({pattern, i});
        continue;
      }
      fIncludes.push_back({pattern, i});
      fIncludesAll = fIncludesAll || pattern->MatchesAll();
      if (pattern->GetTarget() == FullPathTarget()) fIncludePaths.push_back({pattern, i});
    }
    if (fIncludes.empty()) fIncludesAll = true;
  }

  void BeginFolder(const IHierarchicalEnumerator& pListing) override { fItem.SetFolder(pListing.GetPath()); }

  bool IsFileIncluded(const IHierarchicalEnumerator& pEntry) override {
    fItem.SetEntry(pEntry);
    if (fIncludesAll) {
      AskUnmatched(fIncludes);
    } else if (FirstMatch(fIncludes) == nullptr) {
      AskUnmatched(fExcludes);
      return Excluded(fCounts.size() - 2);
    }
    return !IsMatchedByExclude();
  }

  bool IsFolderIncluded(const IHierarchicalEnumerator& pEntry) override {
    fItem.SetEntry(pEntry);
    if (IsMatchedByExclude()) return false;
    if (fIncludePaths.empty()) return true;
    AskUnmatched(fIncludePaths);
    const std::u16string_view path = fItem.TextOf(TColumn::mdFullPath).Text();
    return std::any_of(fIncludePaths.begin(), fIncludePaths.end(),
                       [&](const TAsked& pAsked) { return pAsked.fPattern->FullPathCanBeReached(path); }) ||
           Excluded(fCounts.size() - 1);
  }

  void EndFolder() override {
    if (!fHasCounts) return;
    fFilter->AddCounts(fCounts, fMatched);
    std::fill(fCounts.begin(), fCounts.end(), 0);
    fHasCounts = false;
  }

 private:
  struct TAsked {
    IPattern* fPattern;
    size_t fIndex;  // in the counts
  };
  using TAskedPatterns = std::vector<TAsked>;

  bool Matches(const TAsked& pAsked) {
    if (!pAsked.fPattern->Matches(fItem)) return false;
    if (!fMatched[pAsked.fIndex]) {
      fMatched[pAsked.fIndex] = true;
      --fUnmatched;
      fHasCounts = true;
    }
    return true;
  }

  // The patterns after the first match do not change the result. They are still asked until each has matched once.
  // Otherwise a pattern behind a wider one would be reported as matching nothing.
  const TAsked* FirstMatch(const TAskedPatterns& pPatterns) {
    for (size_t i = 0; i < pPatterns.size(); ++i) {
      if (!Matches(pPatterns[i])) continue;
      AskUnmatched(pPatterns, i + 1);
      return &pPatterns[i];
    }
    return nullptr;
  }

  void AskUnmatched(const TAskedPatterns& pPatterns, size_t pFrom = 0) {
    for (size_t i = pFrom; fUnmatched > 0 && i < pPatterns.size(); ++i)
      if (!fMatched[pPatterns[i].fIndex]) Matches(pPatterns[i]);
  }

  bool IsMatchedByExclude() {
    const TAsked* first = FirstMatch(fExcludes);
    return first != nullptr && !Excluded(first->fIndex);
  }

  bool Excluded(size_t pReason) {
    ++fCounts[pReason];
    fHasCounts = true;
    return false;
  }

  const TRef<TPatternFilter> fFilter;  // keeps the patterns alive
  TPatternItem fItem;
  TAskedPatterns fIncludes;
  TAskedPatterns fIncludePaths;
  TAskedPatterns fExcludes;
  bool fIncludesAll = false;
  TCounts fCounts;
  TMatched fMatched;
  size_t fUnmatched;
  bool fHasCounts = false;
};

TPatternFilter::TPatternFilter(TRef<IPatterns> pPatterns) : fPatterns(std::move(pPatterns)) {}

std::unique_ptr<IEntryFilter> TPatternFilter::CreateEntryFilter() {
  if (fActive.empty()) return nullptr;
  return std::make_unique<TEntryFilter>(*this);
}

void TPatternFilter::BeginScan() {
  fActive = fPatterns->GetItems();
  std::erase_if(fActive, [](const TRef<IPattern>& pPattern) { return !pPattern->GetActive(); });
  TCriticalSectionLock lock(fLock);
  fCounts.assign(fActive.size() + 2, 0);
  fMatched.assign(fActive.size(), false);
}

void TPatternFilter::AddCounts(const TCounts& pCounts, const TMatched& pMatched) {
  TCriticalSectionLock lock(fLock);
  for (size_t i = 0; i < pMatched.size(); ++i) fMatched[i] = fMatched[i] || pMatched[i];
  for (size_t i = 0; i < pCounts.size(); ++i) fCounts[i] += pCounts[i];
}

std::vector<TExclusion> TPatternFilter::GetExclusions() const {
  std::vector<TExclusion> exclusions;
  TCriticalSectionLock lock(fLock);
  auto add = [&](std::u16string pReason, int64_t pObjects) {
    if (pObjects > 0) exclusions.push_back({std::move(pReason), pObjects});
  };
  for (size_t i = 0; i < fActive.size(); ++i) add(u"by " + PatternToText(*fActive[i], {false, false}), fCounts[i]);
  if (!fCounts.empty()) {
    add(u"matching no pattern to include", fCounts[fCounts.size() - 2]);
    add(u"outside the paths to include", fCounts[fCounts.size() - 1]);
  }
  return exclusions;
}

std::vector<std::u16string> TPatternFilter::GetUnmatched() const {
  std::vector<std::u16string> unmatched;
  TCriticalSectionLock lock(fLock);
  for (size_t i = 0; i < fMatched.size(); ++i)
    if (!fMatched[i]) unmatched.push_back(PatternToText(*fActive[i], {false, false}));
  return unmatched;
}

std::vector<std::u16string> TPatternFilter::GetWarnings() const {
  std::vector<std::u16string> warnings;
  for (const TRef<IPattern>& pattern : fActive)
    if (std::u16string warning = pattern->GetWarning(); !warning.empty()) warnings.push_back(std::move(warning));
  return warnings;
}

std::u16string ActivePatternsText(const PatternMatching::IPatterns& pPatterns) {
  auto options = PatternMatching::TPatternsToStringRepresentationOptions::Default();
  options.ActivePatternsOnly = true;
  return pPatterns.ToString(options);
}

std::vector<std::u16string_view> PatternsOfText(std::u16string_view pText) {
  std::vector<std::u16string_view> patterns;
  while (!pText.empty()) {
    const size_t end = std::min(pText.find(u'\t'), pText.size());
    patterns.push_back(pText.substr(0, end));
    pText.remove_prefix(std::min(end + 1, pText.size()));
  }
  return patterns;
}

std::u16string FilterText(const IHierarchicalRoot& pRoot) {
  const TRef<IScanFilter> filter = pRoot.GetScanFilter();
  const auto* patterns = dynamic_cast<const TPatternFilter*>(filter.get());
  return patterns ? ActivePatternsText(*patterns->GetPatterns()) : std::u16string();
}

}  // namespace Vantrel

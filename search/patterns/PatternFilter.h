#pragma once

// A list of patterns as the filter of a scan, with counts of what it leaves out.

#include <string>
#include <string_view>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/roots/ScanFilter.h"
#include "platform/threads/CriticalSection.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel {

// Decides by a list of patterns what a scan takes in.
//
// A file is taken in if some include pattern matches it, or none exists, and no exclude pattern matches. A folder is
// taken in and walked unless an exclude pattern matches it. It is also left out if include patterns on full paths exist
// and none can match beneath it. Include patterns on other columns do not decide about folders, because they may match
// anywhere. Inactive patterns do not count.
class TPatternFilter : public TInterfaced<IScanFilter> {
 public:
  // A filter belongs to one root, because it counts for that root. Several filters may share a list. A scan uses the
  // patterns that are active when it begins.
  explicit TPatternFilter(TRef<PatternMatching::IPatterns> pPatterns);

  std::unique_ptr<IEntryFilter> CreateEntryFilter() override;
  void BeginScan() override;
  std::vector<TExclusion> GetExclusions() const override;
  std::vector<std::u16string> GetWarnings() const override;
  // The text forms of the patterns that have matched nothing since the scan began.
  std::vector<std::u16string> GetUnmatched() const;
  const TRef<PatternMatching::IPatterns>& GetPatterns() const { return fPatterns; }

 private:
  class TEntryFilter;
  // The numbers of entries left out. First by each pattern, in list order; then files without a match; then folders
  // outside the include paths.
  using TCounts = std::vector<int64_t>;
  using TMatched = std::vector<bool>;  // for each pattern, in list order
  void AddCounts(const TCounts& pCounts, const TMatched& pMatched);

  const TRef<PatternMatching::IPatterns> fPatterns;
  std::vector<TRef<PatternMatching::IPattern>> fActive;  // set when a scan begins, unchanged while it runs
  mutable TCriticalSection fLock;
  TCounts fCounts GUARDED_BY(fLock);
  TMatched fMatched GUARDED_BY(fLock);
};

// The active patterns as one text with tabs between them. Each reads back as an equal pattern.
std::u16string ActivePatternsText(const PatternMatching::IPatterns& pPatterns);
// The patterns of such a text. The views lie in it.
std::vector<std::u16string_view> PatternsOfText(std::u16string_view pText);
// Those of the root's filter. Empty without one.
std::u16string FilterText(const IHierarchicalRoot& pRoot);

}  // namespace Vantrel

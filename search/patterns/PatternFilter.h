#pragma once

// A list as the filter of a scan, with counts of what it leaves out.

#include "model/roots/ScanFilter.h"
#include "platform/threads/CriticalSection.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel {

// What a list of patterns lets a scan take in.
//
// A file is taken in when some include pattern matches it, or there is none, and no exclude pattern does. A folder is
// taken in, and walked, unless an exclude pattern matches it or no include pattern on full paths can be reached through
// it: what include patterns on other columns are about may lie anywhere. Inactive patterns do not count.
class TPatternFilter : public TInterfaced<IScanFilter> {
 public:
  // One filter belongs to one root, since it counts for it; the list may be shared. A scan uses the patterns that are
  // active when it begins.
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
  // What was left out: by each pattern, in list order; then files without a match; then folders off the include paths.
  using TCounts = std::vector<int64_t>;
  using TMatched = std::vector<bool>;  // by each pattern, in list order
  void AddCounts(const TCounts& pCounts, const TMatched& pMatched);

  const TRef<PatternMatching::IPatterns> fPatterns;
  std::vector<TRef<PatternMatching::IPattern>> fActive;  // set when a scan begins, fixed while it runs
  mutable TCriticalSection fLock;
  TCounts fCounts GUARDED_BY(fLock);
  TMatched fMatched GUARDED_BY(fLock);
};

}  // namespace Vantrel

#pragma once

// The root's own file conditions: the mask in its path and its expression.

#include <atomic>
#include <memory>
#include <string>

#include "model/roots/ScanFilter.h"

namespace Vantrel {

// An optional scan filter: a condition on a file's values. The search floor implements it.
class IExpression : public IInterface {
 public:
  virtual bool Evaluate(const IMetaDataFormatter& pEntry) = 0;
};

// How many files a root's own conditions left out.
struct TRootExclusions {
  std::atomic<int64_t> fByFileMask{0};
  std::atomic<int64_t> fByExpression{0};
  void Clear() {
    fByFileMask = 0;
    fByExpression = 0;
  }
};

// Applies a root's own file conditions, the mask in its path and its expression, after its filter, if it has one.
class TRootEntryFilter : public IEntryFilter {
 public:
  // The counts must outlive the filter.
  TRootEntryFilter(TRootExclusions& pExclusions, std::u16string pFileMask, TRef<IExpression> pExpression,
                   std::unique_ptr<IEntryFilter> pNested)
      : fExclusions(pExclusions),
        fFileMask(std::move(pFileMask)),
        fExpression(std::move(pExpression)),
        fNested(std::move(pNested)) {}

  void BeginFolder(const IHierarchicalEnumerator& pListing) override {
    if (fNested) fNested->BeginFolder(pListing);
  }
  bool IsFolderIncluded(const IHierarchicalEnumerator& pEntry) override {
    return !fNested || fNested->IsFolderIncluded(pEntry);
  }
  bool IsFileIncluded(const IHierarchicalEnumerator& pEntry) override;
  void EndFolder() override;

 private:
  TRootExclusions& fExclusions;
  // Counts of the current folder. They reach the threads' shared counts once per folder, not for every file.
  int64_t fByFileMask = 0;
  int64_t fByExpression = 0;
  const std::u16string fFileMask;
  const TRef<IExpression> fExpression;
  const std::unique_ptr<IEntryFilter> fNested;
};

}  // namespace Vantrel

#pragma once

// What a root asks by itself: the mask in its path, its expression.

#include <atomic>
#include <memory>
#include <string>

#include "model/roots/ScanFilter.h"

namespace Vantrel {

// An optional scan filter: a condition on a file's values. The search floor makes them.
class IExpression : public IInterface {
 public:
  virtual bool Evaluate(const IMetaDataFormatter& pEntry) = 0;
};

// How many files a root left out for reasons of its own.
struct TRootExclusions {
  std::atomic<int64_t> fByFileMask{0};
  std::atomic<int64_t> fByExpression{0};
  void Clear() {
    fByFileMask = 0;
    fByExpression = 0;
  }
};

// What a root asks of files by itself, the mask in its path and its expression, on top of its filter, if it has one.
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
  // Of the folder being listed: the threads' common counts are told once, not for every file.
  int64_t fByFileMask = 0;
  int64_t fByExpression = 0;
  const std::u16string fFileMask;
  const TRef<IExpression> fExpression;
  const std::unique_ptr<IEntryFilter> fNested;
};

}  // namespace Vantrel

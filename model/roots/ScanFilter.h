#pragma once

// The interfaces by which a scan asks what it takes in.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

// Judges the entries of one listing after the other, for a scan. Used by one thread at a time.
class IEntryFilter {
 public:
  virtual ~IEntryFilter() = default;
  // A new listing begins.
  virtual void BeginFolder(const IHierarchicalEnumerator& pListing) = 0;
  // Whether the scan takes the enumerator's current entry in. A folder that is left out is never opened.
  virtual bool IsFolderIncluded(const IHierarchicalEnumerator& pEntry) = 0;
  virtual bool IsFileIncluded(const IHierarchicalEnumerator& pEntry) = 0;
  // The listing has ended: what was left out is added to the filter's counts.
  virtual void EndFolder() = 0;
};

// Why entries were left out, and how many. The text is for people.
struct TExclusion {
  std::u16string fReason;
  int64_t fObjects = 0;
};

// What one root's scans take in. Any thread.
class IScanFilter : public IInterface {
 public:
  // A judge for one of the scan's threads, which the filter outlives.
  virtual std::unique_ptr<IEntryFilter> CreateEntryFilter() = 0;
  // A scan begins: counts start at 0, and changes made to the filter meanwhile take effect.
  virtual void BeginScan() = 0;
  // What was left out since then, by reason, only reasons that left something out. The order is fixed, whatever threads
  // did.
  virtual std::vector<TExclusion> GetExclusions() const = 0;
  // What went wrong while judging, one line each, for people.
  virtual std::vector<std::u16string> GetWarnings() const = 0;
};

}  // namespace Vantrel

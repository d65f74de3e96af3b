#pragma once

// The interfaces that decide which entries a scan includes.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel {

// Decides about the entries of one listing after the other, for a scan. Used by one thread at a time.
class IEntryFilter {
 public:
  virtual ~IEntryFilter() = default;
  // A new listing begins.
  virtual void BeginFolder(const IHierarchicalEnumerator& pListing) = 0;
  // Whether the scan includes the enumerator's current entry. A folder that is left out is never opened.
  virtual bool IsFolderIncluded(const IHierarchicalEnumerator& pEntry) = 0;
  virtual bool IsFileIncluded(const IHierarchicalEnumerator& pEntry) = 0;
  // The listing has ended. Adds the entries left out to the filter's counts.
  virtual void EndFolder() = 0;
};

// One reason for leaving entries out, and their number. The text is for users.
struct TExclusion {
  std::u16string fReason;
  int64_t fObjects = 0;
};

// Decides what one root's scans include. Any thread.
class IScanFilter : public IInterface {
 public:
  // Creates an entry filter for one of the scan's threads. The scan filter must outlive it.
  virtual std::unique_ptr<IEntryFilter> CreateEntryFilter() = 0;
  // A scan begins. Counts start at 0, and earlier changes of the filter take effect.
  virtual void BeginScan() = 0;
  // The entries left out since BeginScan, by reason. Reasons without entries are missing. The order is fixed and does
  // not depend on threads.
  virtual std::vector<TExclusion> GetExclusions() const = 0;
  // Problems of the filter's work, one line each, for users.
  virtual std::vector<std::u16string> GetWarnings() const = 0;
};

}  // namespace Vantrel

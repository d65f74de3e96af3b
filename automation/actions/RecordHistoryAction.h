#pragma once

// A row of the history as what follows a scan.

#include <string>

#include "automation/actions/PostScanActions.h"

namespace Vantrel::PostScanActions {

// Adds the totals of each finished scan to the history. A scan that was stopped, or that was loaded from a file, is no
// scan to remember.
class TRecordHistoryPostScanAction : public TBasePostScanAction {
 public:
  TRecordHistoryPostScanAction(std::u16string pDatabase, std::string pVersion)
      : fDatabase(std::move(pDatabase)), fVersion(std::move(pVersion)) {}

  // A history that cannot be written is told here, and not before the scan: nothing else is to suffer from it.
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override { return u"Record in \"" + fDatabase + u"\""; }
  uint32_t GetFlags() const override { return kPrepares; }

 private:
  const std::u16string fDatabase;
  const std::string fVersion;
};

}  // namespace Vantrel::PostScanActions

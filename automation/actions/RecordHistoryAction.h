#pragma once

// The action that adds a row to the history after a scan.

#include <string>

#include "automation/actions/PostScanActions.h"

namespace Vantrel::PostScanActions {

// Adds the totals of each finished scan to the history. Scans that were stopped or loaded from a file are not recorded.
class TRecordHistoryPostScanAction : public TBasePostScanAction {
 public:
  TRecordHistoryPostScanAction(std::u16string pDatabase, std::string pVersion)
      : fDatabase(std::move(pDatabase)), fVersion(std::move(pVersion)) {}

  // Reports a history that cannot be written after the scan, not before it, so that the other actions still run.
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override { return u"Record in \"" + fDatabase + u"\""; }
  uint32_t GetFlags() const override { return kPrepares; }

 private:
  const std::u16string fDatabase;
  const std::string fVersion;
};

}  // namespace Vantrel::PostScanActions

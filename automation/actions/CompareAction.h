#pragma once

// The action that compares a scan with an older one.

#include <string>

#include "automation/actions/ExportFile.h"
#include "automation/actions/PostScanActions.h"

namespace Vantrel::PostScanActions {

// Compares roots with an older scan from an XML file, so that later actions of the queue show the changes. The file is
// read before anything is written, because the run may save the new scan in its place.
class TComparePostScanAction : public TBasePostScanAction {
 public:
  // The list of roots must outlive the action. pIsCancelled is called while the file is read; true ends the reading.
  TComparePostScanAction(std::u16string pFileName, IScanRoots& pRoots, TExportFile::TIsCancelled pIsCancelled)
      : fFileName(std::move(pFileName)), fRoots(pRoots), fIsCancelled(std::move(pIsCancelled)) {}
  ~TComparePostScanAction() override { ForgetEarlier(); }

  void Prepare() override;
  void ReadInput(IHierarchicalRoot& pRoot) override;
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override { return u"Compare with \"" + fFileName + u"\""; }
  uint32_t GetFlags() const override { return kPrepares; }
  int GetFailureCode() const override;

 private:
  void ForgetEarlier();

  const std::u16string fFileName;
  IScanRoots& fRoots;
  const TExportFile::TIsCancelled fIsCancelled;
  TRef<IHierarchicalRoot> fEarlier;  // between reading and comparing
};

}  // namespace Vantrel::PostScanActions

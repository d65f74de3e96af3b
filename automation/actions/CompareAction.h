#pragma once

// The action that compares a scan with an older one.

#include <functional>
#include <string>
#include <string_view>

#include "automation/actions/ExportFile.h"
#include "automation/actions/PostScanActions.h"

namespace Vantrel::PostScanActions {

// Compares roots with an older scan from an XML file, so that later actions of the queue show the changes. Of a folder,
// the file with the newest scan of the root's path from before this day is taken, and without one nothing is compared.
// The file is read before anything is written, because the run may save the new scan in its place.
class TComparePostScanAction : public TBasePostScanAction {
 public:
  using TWriteNote = std::function<void(std::string_view)>;
  // The list of roots must outlive the action. pIsCancelled is called while the file is read; true ends the reading.
  // pWriteNote gets what the user should know about the comparison.
  TComparePostScanAction(std::u16string pFileName, IScanRoots& pRoots, TExportFile::TIsCancelled pIsCancelled,
                         TWriteNote pWriteNote)
      : fFileName(std::move(pFileName)),
        fRoots(pRoots),
        fIsCancelled(std::move(pIsCancelled)),
        fWriteNote(std::move(pWriteNote)) {}
  ~TComparePostScanAction() override { ForgetEarlier(); }

  void Prepare() override;
  void ReadInput(IHierarchicalRoot& pRoot) override;
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override { return u"Compare with \"" + fFileName + u"\""; }
  uint32_t GetFlags() const override { return kPrepares; }
  int GetFailureCode() const override;

 private:
  void ForgetEarlier();
  // The file to compare this root with, or empty.
  std::u16string FileFor(const IHierarchicalRoot& pRoot) const;
  // Says what makes the comparison show more than changes of the storage.
  void WarnOfDifferences(const IHierarchicalRoot& pRoot) const;

  const std::u16string fFileName;
  IScanRoots& fRoots;
  const TExportFile::TIsCancelled fIsCancelled;
  const TWriteNote fWriteNote;
  TRef<IHierarchicalRoot> fEarlier;  // between reading and comparing
};

}  // namespace Vantrel::PostScanActions

#pragma once

#include <string>

#include "automation/PostScanActions.h"

namespace Kiv::PostScanActions {

// Exports the root to a file when its scan has finished. What goes wrong is an EOSError that names the file.
class TFileExportPostScanAction : public TBasePostScanAction {
 public:
  // The handler and its media options must outlive the action.
  TFileExportPostScanAction(const TPostProcessActionHandler& pHandler, TMediaType pMedia, std::u16string pFileName,
                            std::string pProgramName, std::string pVersion);

  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override;
  uint32_t GetFlags() const override { return kMayClose; }
  bool UsesMedia(TMediaType pMedia) const override { return pMedia == fMedia; }
  const std::u16string& GetFileName() const { return fFileName; }

 private:
  const TPostProcessActionHandler& fHandler;
  const TMediaType fMedia;
  const std::u16string fFileName;
  const std::string fProgramName;
  const std::string fVersion;
};

}  // namespace Kiv::PostScanActions

#pragma once

// The mail with report and exports as what follows a scan.

#include <string>

#include "automation/actions/PostScanActions.h"
#include "automation/mail/Mail.h"

namespace Vantrel::PostScanActions {

// Mails the report on all roots once, together with the files that the other actions of the queue have written: so it
// comes last.
class TEmailPostScanAction : public TBasePostScanAction {
 public:
  // The handler and the options must outlive the action. The report is the mail's text, or a file beside the others
  // with pAttachReport.
  TEmailPostScanAction(const TPostProcessActionHandler& pHandler, const TGlobalOptions& pOptions,
                       Mail::TMailMessage pMessage, Mail::TMailServer pServer, bool pAttachReport,
                       std::string pProgramName);

  void Prepare() override { Mail::CheckMailServer(fServer); }
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  void Finish() override;
  std::u16string GetInformation() const override { return u"Mail to " + GetMailTo(); }
  uint32_t GetFlags() const override { return kMayClose; }
  bool UsesMedia(TMediaType pMedia) const override { return pMedia == TMediaType::mtText; }

  std::u16string GetMailTo() const;  // joined with ";"
  const std::u16string& GetSubject() const { return fMessage.fSubject; }

 private:
  const TPostProcessActionHandler& fHandler;
  const TGlobalOptions& fOptions;
  Mail::TMailMessage fMessage;
  const Mail::TMailServer fServer;
  const bool fAttachReport;
  const std::string fProgramName;
  std::string fReport;
  int64_t fReportLines = 0;
};

}  // namespace Vantrel::PostScanActions

#pragma once

// The action that mails the report and the exports.

#include <functional>
#include <string>
#include <string_view>

#include "automation/actions/PostScanActions.h"
#include "automation/mail/Mail.h"

namespace Vantrel::PostScanActions {

// Mails the report on all roots once, with the files that the other actions of the queue have written. So it runs last.
class TEmailPostScanAction : public TBasePostScanAction {
 public:
  using TShowLine = std::function<bool(std::string_view)>;  // false: stop writing
  // The handler and the options must outlive the action. The report is the mail's text, or an attached file with
  // pAttachReport. pShowLine gets the report line by line when no mail can be sent.
  TEmailPostScanAction(const TPostProcessActionHandler& pHandler, const TGlobalOptions& pOptions,
                       Mail::TMailMessage pMessage, Mail::TMailServer pServer, bool pAttachReport,
                       std::string pProgramName, TShowLine pShowLine);

  void Prepare() override { Mail::CheckMail(fMessage, fServer); }
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  void Finish() override;
  std::u16string GetInformation() const override { return u"Mail to " + GetMailTo(); }
  uint32_t GetFlags() const override { return kMayClose; }
  bool UsesMedia(TMediaType pMedia) const override { return pMedia == TMediaType::mtText; }

  std::u16string GetMailTo() const;  // joined with ";"
  const std::u16string& GetSubject() const { return fMessage.fSubject; }

 private:
  void Send();
  void ShowReport() const;

  const TPostProcessActionHandler& fHandler;
  const TGlobalOptions& fOptions;
  Mail::TMailMessage fMessage;
  const Mail::TMailServer fServer;
  const bool fAttachReport;
  const std::string fProgramName;
  const TShowLine fShowLine;
  std::string fReport;
  int64_t fReportLines = 0;
};

}  // namespace Vantrel::PostScanActions

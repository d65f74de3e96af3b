#include "automation/actions/EmailAction.h"

#include "automation/actions/ExportFile.h"
#include "export/text/TextExport.h"
#include "platform/files/Folders.h"

namespace Vantrel::PostScanActions {

namespace {

class TTextOutput final : public ILineOutput {
 public:
  TTextOutput(std::string& pText, int64_t& pLines) : fText(pText), fLines(pLines) {}
  bool WriteLine(std::string_view pLine) override {
    fText.append(pLine).append("\r\n");
    ++fLines;
    return true;
  }
  int64_t LineCount() const override { return fLines; }

 private:
  std::string& fText;
  int64_t& fLines;
};

void WriteFile(const std::u16string& pPath, std::string_view pText) {
  TOutputFile file(pPath);
  file.Write(pText);
  file.Commit();
}

}  // namespace

TEmailPostScanAction::TEmailPostScanAction(const TPostProcessActionHandler& pHandler, const TGlobalOptions& pOptions,
                                           Mail::TMailMessage pMessage, Mail::TMailServer pServer, bool pAttachReport,
                                           std::string pProgramName, TShowLine pShowLine)
    : fHandler(pHandler),
      fOptions(pOptions),
      fMessage(std::move(pMessage)),
      fServer(std::move(pServer)),
      fAttachReport(pAttachReport),
      fProgramName(std::move(pProgramName)),
      fShowLine(std::move(pShowLine)) {}

std::u16string TEmailPostScanAction::GetMailTo() const {
  std::u16string all;
  for (const std::u16string& address : fMessage.fTo) all.append(all.empty() ? u"" : u";").append(address);
  return all;
}

void TEmailPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  TMediaSettings settings = fHandler.MergedRecursionLevel(TMediaType::mtText);
  // A mail is for people to read, like the console.
  if (settings.fRecursionLevel.fFullExpand) settings.fRecursionLevel = {1, false};
  TTextOutput output(fReport, fReportLines);
  Exporting::TFormattedTextExport(settings, fOptions, fProgramName).Export(pRoot, output);
  if (fMessage.fSubject.empty()) fMessage.fSubject = u"Vantrel Report: " + pRoot.GetPath();
  if (!WasStopped(pRoot)) return;
  ShowReport();
  throw EExportCancelled("Stopped: no mail was sent");
}

void TEmailPostScanAction::Finish() {
  if (fReport.empty()) throw EInvalidOperation("No mail was sent: there is nothing to report");
  try {
    Send();
  } catch (const EException&) {
    ShowReport();
    throw;
  }
}

// Shows the report, which would otherwise be lost with the mail.
void TEmailPostScanAction::ShowReport() const {
  constexpr std::string_view kLineEnd = "\r\n";
  for (size_t begin = 0; begin < fReport.size();) {
    const size_t end = fReport.find(kLineEnd, begin);
    if (!fShowLine(std::string_view(fReport).substr(begin, end - begin))) return;
    begin = end + kLineEnd.size();
  }
}

void TEmailPostScanAction::Send() {
  Mail::TMailMessage message = fMessage;
  message.fAttachments = fHandler.CheckAttachments();
  if (!fAttachReport) {
    message.fText = fReport;
    return Mail::SendMail(message, fServer);
  }
  TTemporaryFiles files;  // live until the mail is sent
  message.fAttachments.push_back(files.Add(u"Report.txt"));
  WriteFile(message.fAttachments.back(), fReport);
  message.fText = "The report is attached.\r\n";
  Mail::SendMail(message, fServer);
}

}  // namespace Vantrel::PostScanActions

#include "app/RequestedActions.h"

#include <algorithm>

#include "app/CancelRequest.h"
#include "app/Version.h"
#include "automation/actions/CompareAction.h"
#include "automation/actions/EmailAction.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/actions/PictureAction.h"
#include "automation/actions/RecordHistoryAction.h"
#include "automation/commandline/CommandLineHandler.h"
#include "platform/system/Environment.h"
#include "platform/text/Text.h"

namespace Vantrel {

using CommandLine::TCommandLineState;

namespace {

void QueueMail(PostScanActions::TPostProcessActionHandler& pActions, const TCommandLineState& pRequested,
               const TRunSettings& pSettings) {
  const TGlobalOptions& options = *pRequested.fOptions;
  Mail::TMailServer server;
  server.fHost = options.MailServer;
  server.fPort = options.MailPort;
  server.fSecurity = options.MailSecurity;
  server.fUser = pRequested.fUserName.empty() ? options.MailUser : ToNativeBytes(pRequested.fUserName);
  server.fPassword = ToNativeBytes(pRequested.fPassword);
  if (server.fPassword.empty())
    server.fPassword = ToNativeBytes(EnvironmentVariable(u"VANTREL_PASSWORD").value_or(u""));
  Mail::TMailMessage message;
  message.fFrom = FromUtf8(options.MailFrom);
  message.fTo = pRequested.fMailTo;
  message.fSubject = pRequested.fMailSubject;
  // A report within an export would spoil the export.
  const auto isToOutput = [](const auto& pRequest) { return pRequest.fFile == TOutputFile::kStandardOutput; };
  const bool isTaken = std::any_of(pRequested.fExports.begin(), pRequested.fExports.end(), isToOutput) ||
                       std::any_of(pRequested.fPictures.begin(), pRequested.fPictures.end(), isToOutput);
  const auto showLine = [&pSettings, isTaken](std::string_view pLine) {
    if (!isTaken) return pSettings.fOutput->WriteLine(pLine);
    pSettings.fWriteError(pLine);
    return true;
  };
  pActions.Add(std::make_unique<PostScanActions::TEmailPostScanAction>(
      pActions, options, std::move(message), std::move(server), pRequested.fAttachReport, kProgramName, showLine));
}

}  // namespace

bool QueueRequestedActions(PostScanActions::TPostProcessActionHandler& pActions, const TCommandLineState& pRequested,
                           const TRunSettings& pSettings, IScanRoots& pRoots) {
  using namespace PostScanActions;
  const TGlobalOptions& options = *pRequested.fOptions;
  const TExportFile::TIsCancelled isCancelled = IsCancelRequested;
  const auto writeNote = [&pSettings](std::string_view pNote) { pSettings.fWriteError(pNote); };
  if (!pRequested.fCompareFile.empty())
    pActions.Add(std::make_unique<TComparePostScanAction>(pRequested.fCompareFile, pRoots, isCancelled, writeNote));
  if (options.RecordHistory)
    pActions.Add(std::make_unique<TRecordHistoryPostScanAction>(CommandLine::HistoryFile(options), kVersion));
  const TExportRun run{kProgramName, kVersion, CommandLine::NumberOfScans(pRequested) > 1, pRequested.fPathsEndWithNul,
                       isCancelled};
  for (const CommandLine::TExportRequest& request : pRequested.fExports)
    pActions.Add(std::make_unique<TFileExportPostScanAction>(pActions, options, request.fFormat, request.fFile, run));
  for (const CommandLine::TPictureRequest& request : pRequested.fPictures) {
    // That of the paths which --history names is drawn with their tables.
    const bool isOfHistory = request.fSubject == CommandLine::TPictureSubject::psHistory;
    if (isOfHistory && !pRequested.fHistoryPaths.empty() && !request.fFile.empty()) continue;
    pActions.Add(
        std::make_unique<TCustomPresenterPostScanAction>(options, request, run, writeNote, pSettings.fRenderer));
  }
  if (!pRequested.fMailTo.empty()) QueueMail(pActions, pRequested, pSettings);
  return pActions.ResolveRequirements();
}

}  // namespace Vantrel

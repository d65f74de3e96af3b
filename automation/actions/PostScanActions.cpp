#include "automation/actions/PostScanActions.h"

#include <algorithm>

#include "automation/actions/ExportFile.h"
#include "automation/commandline/ExitCodes.h"
#include "export/text/TextExport.h"
#include "platform/files/Folders.h"
#include "platform/system/Console.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::PostScanActions {

namespace {

constexpr std::u16string_view kLogPrefix = u"TPostProcessActionHandler.PerformPostProcessActions";

void Log(std::u16string_view pText) {
  if (IsDebugLogActive()) LogDebug(std::u16string(kLogPrefix).append(pText));
}

}  // namespace

TPostProcessActionHandler::TPostProcessActionHandler(IPostScanHost& pHost, TMediaOptions& pMedia, ILineOutput& pOutput)
    : fHost(pHost), fMedia(pMedia), fOutput(pOutput) {}

TMediaSettings TPostProcessActionHandler::MergedRecursionLevel(TMediaType pMedia) const {
  TMediaSettings settings = fMedia.Effective(pMedia);
  auto& recursion = settings.fRecursionLevel;
  if (WritesNothing()) {
    // A console is for people to read, so it shows a whole tree only on request.
    if (recursion.fLevel == recursion.kUnlimited && recursion.fFullExpand) {
      constexpr int64_t kRowsOfAScreen = 20;
      recursion = {1, false};
      if (!settings.fMostRows) settings.fMostRows = kRowsOfAScreen;
    }
    return settings;
  }
  int32_t deepest = TBasePostScanAction::kAnyLevel;
  for (const auto& [action, failed] : fActions)
    if (action && action->UsesMedia(pMedia)) deepest = std::max(deepest, action->GetRecursionlevel());
  if (deepest >= 0) recursion = {deepest, false};
  return settings;
}

bool TPostProcessActionHandler::PerformPostProcessActions(IHierarchicalRoot* pRoot, const IScanRoots& pScans) {
  if (pRoot == nullptr) throw EInvalidArgumentValue("pRoot must not be nil");
  Log(u" for: " + pRoot->GetPath());
  if (fHost.IsTerminating()) return true;
  const bool scansActive = pScans.CountActiveScans() > 0;
  bool written = RunActions(*pRoot);
  if (WritesNothing() && fHost.IsUnattended() && !WriteDefaultReport(*pRoot)) {
    fReportFailed = true;
    fFailures.push_back({TConsole::IsOutputClosed() ? "" : "The report could not be written", Vantrel::ecOutputFailed});
    written = false;
  }
  if (!scansActive && ShouldCloseApplication()) EndProgram();
  return written;
}

int TBasePostScanAction::GetFailureCode() const {
  return Vantrel::ecOutputFailed;
}

// True for an empty queue.
bool TPostProcessActionHandler::WritesNothing() const {
  return std::all_of(fActions.begin(), fActions.end(), [](const TQueued& pQueued) {
    return pQueued.fAction && (pQueued.fAction->GetFlags() & TBasePostScanAction::kPrepares) != 0;
  });
}

bool TPostProcessActionHandler::ShowsReport() const {
  return WritesNothing() || std::any_of(fActions.begin(), fActions.end(), [](const TQueued& pQueued) {
           return pQueued.fAction && pQueued.fAction->ShowsReport();
         });
}

bool TPostProcessActionHandler::CanWriteMore() const {
  if (WritesNothing()) return !fReportFailed;
  return std::any_of(fActions.begin(), fActions.end(), [](const TQueued& pQueued) {
    return pQueued.fAction && !pQueued.fFailed && (pQueued.fAction->GetFlags() & TBasePostScanAction::kPrepares) == 0;
  });
}

void TPostProcessActionHandler::Fail(TQueued& pQueued, std::string_view pMessage, int pExitCode) {
  pQueued.fFailed = true;
  fFailures.push_back({std::string(pMessage), pExitCode});
}

template <class TCall>
bool TPostProcessActionHandler::Call(TQueued& pQueued, const TCall& pCall) {
  try {
    pCall(*pQueued.fAction);
  } catch (const EExportCancelled& error) {
    Fail(pQueued, error.what(), Vantrel::ecCancelled);
  } catch (const EOSError& error) {
    Fail(pQueued, IsReaderGone(error) ? "" : error.what(), pQueued.fAction->GetFailureCode());
  } catch (const EException& error) {
    Fail(pQueued, error.what(), pQueued.fAction->GetFailureCode());
  }
  return !pQueued.fFailed;
}

// If one export fails, for example on a full disk, the others are still written.
template <class TCall>
bool TPostProcessActionHandler::CallEach(const TCall& pCall) {
  bool succeeded = true;
  for (TQueued& queued : fActions) {
    if (!queued.fAction) throw EInvalidOperation("The PostScanActions array must not contain nil values!");
    if (!queued.fFailed) succeeded = Call(queued, pCall) && succeeded;
  }
  return succeeded;
}

bool TPostProcessActionHandler::ResolveRequirements() {
  auto has = [](uint32_t pFlag) {
    return [pFlag](const TQueued& pQueued) { return pQueued.fAction && (pQueued.fAction->GetFlags() & pFlag) != 0; };
  };
  const auto others = std::stable_partition(fActions.begin(), fActions.end(), has(TBasePostScanAction::kPrepares));
  if (others != fActions.begin())
    std::stable_partition(fActions.begin(), fActions.end(), has(TBasePostScanAction::kSaves));
  return CallEach([](TBasePostScanAction& pAction) { pAction.Prepare(); });
}

bool TPostProcessActionHandler::FinishActions() {
  return CallEach([](TBasePostScanAction& pAction) { pAction.Finish(); });
}

std::vector<std::u16string> TPostProcessActionHandler::CheckAttachments() const {
  std::vector<std::u16string> files;
  for (const TQueued& queued : fActions) {
    for (std::u16string& file : queued.fAction->GetAttachments()) {
      if (!PathExists(file)) throw EInvalidOperation("The file to be mailed is not there: " + ToQuotedDisplay(file));
      files.push_back(std::move(file));
    }
  }
  return files;
}

std::vector<std::u16string> TPostProcessActionHandler::GetWrittenFiles() const {
  std::vector<std::u16string> files;
  for (const TQueued& queued : fActions)
    for (std::u16string& file : queued.fAction->GetWrittenFiles()) files.push_back(std::move(file));
  return files;
}

bool TPostProcessActionHandler::WriteDefaultReport(IHierarchicalRoot& pRoot) {
  Exporting::TFormattedTextExport report(MergedRecursionLevel(TMediaType::mtText), fMedia.GlobalOptions(),
                                         fHost.ProgramName());
  return report.Export(pRoot, fOutput);
}

bool TPostProcessActionHandler::RunActions(IHierarchicalRoot& pRoot) {
  bool read = true;
  for (TQueued& queued : fActions)
    if (queued.fAction && !queued.fFailed)
      read = Call(queued, [&](TBasePostScanAction& pAction) { pAction.ReadInput(pRoot); }) && read;
  return CallEach([&](TBasePostScanAction& pAction) {
           Log(u": " + pAction.GetInformation());
           pAction.Execute(pRoot, true, true);
         }) &&
         read;
}

void TPostProcessActionHandler::EndProgram() {
  if (fHost.ModalLevel() > 0) {
    Log(u": Not terminating appplication because ModalLevel is > 0.");
    return;
  }
  fHost.Terminate();
  Log(u": Terminating application.");
}

bool TPostProcessActionHandler::ShouldCloseApplication() const {
  if (fHost.IsUnattended()) return !fHost.MustStayOpen();
  return fHost.ClosesAfterExport() && std::any_of(fActions.begin(), fActions.end(), [](const TQueued& pQueued) {
           return pQueued.fAction && (pQueued.fAction->GetFlags() & TBasePostScanAction::kMayClose) != 0;
         });
}

}  // namespace Vantrel::PostScanActions

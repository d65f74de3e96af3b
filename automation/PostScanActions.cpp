#include "automation/PostScanActions.h"

#include <algorithm>

#include "export/TextExport.h"
#include "platform/DebugLog.h"
#include "platform/Errors.h"

namespace Kiv::PostScanActions {

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
  if (fActions.empty()) {
    // A console is for reading: nobody wants a whole tree there who has not asked for it.
    if (recursion.fLevel == recursion.kUnlimited && recursion.fFullExpand) recursion = {1, false};
    return settings;
  }
  int32_t deepest = TBasePostScanAction::kAnyLevel;
  for (const auto& action : fActions)
    if (action && action->UsesMedia(pMedia)) deepest = std::max(deepest, action->GetRecursionlevel());
  if (deepest >= 0) recursion = {deepest, false};
  return settings;
}

bool TPostProcessActionHandler::PerformPostProcessActions(IHierarchicalRoot* pRoot, const IScanRoots& pScans) {
  if (pRoot == nullptr) throw EInvalidArgumentValue("pRoot must not be nil");
  Log(u" for: " + pRoot->GetPath());
  if (fHost.IsTerminating()) return true;
  const bool scansActive = pScans.CountActiveScans() > 0;
  bool written = true;
  if (IsEmpty() && fHost.IsUnattended()) {
    written = WriteDefaultReport(*pRoot);
  } else {
    RunActions(*pRoot);
  }
  if (!scansActive && ShouldCloseApplication()) EndProgram();
  return written;
}

bool TPostProcessActionHandler::WriteDefaultReport(IHierarchicalRoot& pRoot) {
  Hierarchical::Exporting::Text::TFormattedTextExport report(MergedRecursionLevel(TMediaType::mtText),
                                                             fMedia.GlobalOptions(), fHost.ProgramName());
  report.SetMaximumWidth(fReportWidth);
  return report.Export(pRoot, fOutput);
}

void TPostProcessActionHandler::RunActions(IHierarchicalRoot& pRoot) {
  for (const auto& action : fActions) {
    if (!action) throw EInvalidOperation("The PostScanActions array must not contain nil values!");
    Log(u": " + action->GetInformation());
    action->Execute(pRoot, true, true);
  }
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
  return fHost.ClosesAfterExport() && std::any_of(fActions.begin(), fActions.end(), [](const auto& pAction) {
           return pAction && (pAction->GetFlags() & TBasePostScanAction::kMayClose) != 0;
         });
}

}  // namespace Kiv::PostScanActions

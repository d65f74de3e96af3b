#include "app/Application.h"

#include <algorithm>
#include <clocale>

#include "app/CancelRequest.h"
#include "app/RequestedActions.h"
#include "app/ScanTask.h"
#include "app/SearchTask.h"
#include "app/Version.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/HelpText.h"
#include "automation/commandline/KeptSearches.h"
#include "export/json/JSONLists.h"
#include "export/text/ListExport.h"
#include "export/xml/OptionsFile.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/system/Console.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "presentation/lists/DriveList.h"
#include "search/patterns/PatternFilter.h"
#include "window/main/WindowStart.h"

namespace Vantrel {

TApplication::TApplication(TRunSettings pSettings)
    : fSettings(std::move(pSettings)), fOptions(std::make_shared<TGlobalOptions>()), fLog(fSettings.fWriteError) {
  ForgetCancelRequest();
}

int TApplication::Run(std::span<const std::u16string> pTokens) {
  // Dates use the user's language and time formats. Numbers are formatted and read by the program's own rules.
  std::setlocale(LC_ALL, "");
  std::setlocale(LC_NUMERIC, "C");
  try {
    return RunCommandLine(pTokens);
  } catch (const ECommandLineParserCriticalException& error) {
    fSettings.fWriteError(error.what());
    for (const std::string& line : CommandLine::UsageText()) fSettings.fWriteError(line);
    return error.ExitCode();
  } catch (const std::bad_alloc&) {
    TConsole::WriteLastWords(kNoMemoryText);
    return ecInternalError;
  } catch (const std::exception& error) {  // a fault of the program: an error line instead of an abort
    fSettings.fWriteError(error.what());
    return ecInternalError;
  }
}

namespace {

bool NeedsWindowProgram(const CommandLine::TCommandLineState& pState) {
  return !pState.fHelp && !pState.fVersion && (pState.OpensWindow() || pState.NeedsFonts());
}

}  // namespace

int TApplication::RunCommandLine(std::span<const std::u16string> pTokens) {
  CommandLine::TCommandLineHandler handler(TKivCommandLineParser::GetInstance(), *fOptions, fSettings.fUserOptionsFile,
                                           fSettings.fAbilities);
  handler.HandleCommandLineSwitches(pTokens);
  if (fSettings.fContinueInWindowProgram && !handler.HasErrors() && NeedsWindowProgram(handler.State()))
    return fSettings.fContinueInWindowProgram(!handler.State().OpensWindow());
  for (const std::string& warning : handler.State().fWarnings) fSettings.fWriteError(warning);
  handler.FinalizeCommandLineOptions();
  fState = handler.State();
  TConsole::SetColorUse(fOptions->Colors);
  if (fState.fIsQuiet) fSettings.fShowProgress = false;
  fLog.Start(fState.fDebug, fState.fDebugLogFile);
  const int result = handler.ProcessCommandlineTasks(*this);
  fLog.Stop();
  return result;
}

int TApplication::WriteLines(const std::vector<std::string>& pLines) {
  const bool written = std::all_of(pLines.begin(), pLines.end(),
                                   [&](const std::string& pLine) { return fSettings.fOutput->WriteLine(pLine); });
  return written ? ecOk : ecOutputFailed;
}

int TApplication::ShowVersion() {
  return WriteLines({VersionText(fSettings.fPlatformName)});
}

int TApplication::SaveSettings() {
  try {
    Options::SaveOptionsFile(fSettings.fUserOptionsFile, *fOptions, kProgramName, kVersion);
    return ecOk;
  } catch (const EOSError& error) {
    fSettings.fWriteError(error.what());
    return ecOutputFailed;
  }
}

int TApplication::ForgetSettings() {
  RemoveQuietly(fSettings.fUserOptionsFile);
  if (!PathExists(fSettings.fUserOptionsFile)) return ecOk;
  fSettings.fWriteError("The settings cannot be removed: " + ToQuotedDisplay(fSettings.fUserOptionsFile));
  return ecOutputFailed;
}

int TApplication::ChangeSearches() {
  try {
    CommandLine::ChangeKeptSearches(fState, fSettings.fUserOptionsFile, kProgramName, kVersion);
    return ecOk;
  } catch (const EInvalidArgumentValue& error) {
    fSettings.fWriteError(error.what());
    return ecWrongCommandLine;
  } catch (const Options::EOptionsFileError& error) {
    fSettings.fWriteError(error.what());
    return ecOutputFailed;
  } catch (const EOSError& error) {
    fSettings.fWriteError(error.what());
    return ecOutputFailed;
  }
}

int TApplication::ListSearches() {
  // Those that this run keeps or forgets are in the file alone.
  TGlobalOptions options = *fOptions;
  if (fState.ChangesSearches()) {
    options.KeptSearches.clear();
    Options::LoadOptionsFile(fSettings.fUserOptionsFile, options);
  }
  return WriteLines(CommandLine::SearchLines(options));
}

int TApplication::ExportDriveList(const std::u16string& pFile) {
  using namespace Exporting;
  const Presentation::TList drives = Presentation::DriveList();
  using PostScanActions::TExportFormat;
  const TExportFormat format = PostScanActions::FormatOfFile(pFile, TExportFormat::efReport);
  const TMediaSettings settings = PostScanActions::RowSettings(format, *fOptions, pFile);
  auto write = [&](ILineOutput& pOutput) {
    if (format == TExportFormat::efReport) return WriteListAsText(drives, FormatOf(settings), pOutput);
    return WriteListAsDelimited(drives, settings, pOutput);
  };
  try {
    if (pFile.empty()) return write(*fSettings.fOutput) ? ecOk : ecOutputFailed;
    CreateFolderOf(pFile);
    PostScanActions::TExportFile file(pFile, IsCancelRequested);
    if (PostScanActions::IsJSON(format))
      WriteListAsJSON(drives, "drives", nullptr, PostScanActions::LayoutOf(format), file);
    else
      write(file);
    file.Commit();
    return ecOk;
  } catch (const PostScanActions::EExportCancelled& error) {
    fSettings.fWriteError(error.what());
    return ecCancelled;
  } catch (const EOSError& error) {
    if (!PostScanActions::IsReaderGone(error)) fSettings.fWriteError(error.what());
    return ecOutputFailed;
  }
}

int TApplication::ManageHistory() {
  return CommandLine::RunHistoryTasks(fState, *fSettings.fOutput, fSettings.fWriteError, fSettings.fRenderer);
}

int TApplication::OpenAndScan() {
  return TScanTask(fSettings, fState, fOptions, fLog).Run();
}

int TApplication::Search() {
  return TSearchTask(fSettings, fState, fOptions, fLog).Run();
}

int TApplication::OpenWindow() {
  Window::TWindowStart start;
  start.fOptions = fOptions;
  start.fUserOptionsFile = fSettings.fUserOptionsFile;
  start.fReadOnly = fState.fReadOnly;
  start.fCreateRoots = fSettings.fCreateRoots;
  start.fPaths = fState.fPaths;
  for (const std::u16string& file : fState.fOpenFiles) start.fOpenFiles.push_back(AbsolutePath(file));
  if (fState.fPatterns)
    start.fCreateFilter = [patterns = fState.fPatterns] { return MakeRef<TPatternFilter>(patterns); };
  start.fQuery = fState.fQuery;
  start.fSearchesAtOnce = fState.fSearchesAtOnce;
  start.fDuplicates = fState.fDuplicates;
  start.fQueueActions = [this](PostScanActions::TPostProcessActionHandler& pActions, IScanRoots& pRoots) {
    return QueueRequestedActions(pActions, fState, fSettings, pRoots);
  };
  start.fMessages = fState.fWarnings;
  start.fProgramName = kProgramName;
  start.fVersion = kVersion;
  return fSettings.fOpenWindow(start);
}

// Finds out before the scan whether the actions after it can work.
int TApplication::PrepareHistory() {
  try {
    for (const std::u16string* file : {&fState.fHistoryCSV, &fState.fHistoryExport})
      if (!file->empty()) PostScanActions::ProbeTarget(*file);
    for (const CommandLine::TPictureRequest& request : fState.fPictures)
      if (request.fSubject == CommandLine::TPictureSubject::psHistory && !request.fFile.empty())
        PostScanActions::ProbeTarget(request.fFile);
    return ecOk;
  } catch (const EOSError& error) {
    fSettings.fWriteError(error.what());
    return ecOutputFailed;
  }
}

}  // namespace Vantrel

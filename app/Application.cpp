#include "app/Application.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <future>

#include "app/ConsoleOutput.h"
#include "app/Version.h"
#include "automation/actions/CompareAction.h"
#include "automation/actions/EmailAction.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/actions/PictureAction.h"
#include "automation/actions/RecordHistoryAction.h"
#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/HelpText.h"
#include "export/text/ListExport.h"
#include "export/text/RootDescription.h"
#include "export/xml/OptionsFile.h"
#include "export/xml/XMLReader.h"
#include "model/roots/ScanRoots.h"
#include "model/roots/Storage.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/system/Console.h"
#include "platform/system/Environment.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "presentation/lists/DriveList.h"
#include "scan/engine/ScanServices.h"
#include "search/patterns/PatternFilter.h"

namespace Vantrel {

namespace {

constexpr int64_t kPollMilliseconds = 100;

std::atomic<bool> gCancelRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

std::string ProgressText(const TScanProgress& pProgress) {
  const TValueFormat format;
  auto text = [&](TColumn pColumn, int64_t pValue) { return ToUtf8(FormatValue(pColumn, pValue, format)); };
  return fmt::format("{} files, {} folders, {}  {}", text(TColumn::mdFiles, pProgress.fFiles),
                     text(TColumn::mdFolders, pProgress.fFolders), text(TColumn::mdSize, pProgress.fBytes),
                     ToDisplay(pProgress.fLastScannedFolder));
}

}  // namespace

TRunSettings CreateRunSettings(std::string pPlatformName) {
  static TConsoleOutput output;
  TRunSettings settings;
  settings.fPlatformName = std::move(pPlatformName);
  settings.fShowProgress = !TConsole::IsErrorRedirected();
  settings.fReportWidth = TConsole::OutputWidth();
  settings.fUserOptionsFile = Options::UserOptionsFile();
  settings.fOutput = &output;
  settings.fWriteError = [](std::string_view pText) { TConsole::WriteError(pText); };
  settings.fCreateRoots = [](std::shared_ptr<const TGlobalOptions> pOptions) {
    return CreateScanRoots(ScanEngine::CreateScanServices(), std::move(pOptions));
  };
  return settings;
}

TApplication::TApplication(TRunSettings pSettings)
    : fSettings(std::move(pSettings)),
      fOptions(std::make_shared<TGlobalOptions>()),
      fMedia(*fOptions),
      fActions(*this, fMedia, *fSettings.fOutput),
      fLog(fSettings.fWriteError) {
  fActions.SetReportWidth(fSettings.fReportWidth);
  gCancelRequested = false;
}

std::string TApplication::ProgramName() const {
  return kProgramName;
}

void TApplication::RequestCancel() {
  gCancelRequested.store(true, std::memory_order_relaxed);
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

int TApplication::RunCommandLine(std::span<const std::u16string> pTokens) {
  CommandLine::TCommandLineHandler handler(TKivCommandLineParser::GetInstance(), *fOptions, fSettings.fUserOptionsFile);
  handler.HandleCommandLineSwitches(pTokens);
  for (const std::string& warning : handler.State().fWarnings) fSettings.fWriteError(warning);
  handler.FinalizeCommandLineOptions();
  fState = handler.State();
  fLog.Start(fState.fDebug, fState.fDebugLogFile);
  const int result = handler.ProcessCommandlineTasks(*this);
  fLog.Stop();
  return result;
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

int TApplication::ExportDriveList(const std::u16string& pFile) {
  using namespace Exporting;
  const Presentation::TList drives = Presentation::DriveList();
  using PostScanActions::TExportFormat;
  const TExportFormat format = PostScanActions::FormatOfFile(pFile, TExportFormat::efReport);
  const TMediaSettings effective = fMedia.Effective(PostScanActions::MediaOf(format));
  auto write = [&](ILineOutput& pOutput) {
    if (format == TExportFormat::efReport) return WriteListAsText(drives, FormatOf(effective), pOutput);
    return WriteListAsDelimited(drives, PostScanActions::RowSettings(format, effective, pFile), pOutput);
  };
  try {
    if (pFile.empty()) return write(*fSettings.fOutput) ? ecOk : ecOutputFailed;
    CreateFolderOf(pFile);
    PostScanActions::TExportFile file(pFile, [] { return gCancelRequested.load(std::memory_order_relaxed); });
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

// False when an action cannot work.
bool TApplication::QueueActions(IScanRoots& pRoots) {
  using namespace PostScanActions;
  const TExportFile::TIsCancelled isCancelled = [] { return gCancelRequested.load(std::memory_order_relaxed); };
  if (!fState.fCompareFile.empty())
    fActions.Add(std::make_unique<TComparePostScanAction>(fState.fCompareFile, pRoots, isCancelled));
  if (fOptions->RecordHistory)
    fActions.Add(std::make_unique<TRecordHistoryPostScanAction>(CommandLine::HistoryFile(*fOptions), kVersion));
  const TExportRun run{kProgramName, kVersion, CommandLine::NumberOfScans(fState) > 1, fState.fPathsEndWithNul,
                       isCancelled};
  for (const CommandLine::TExportRequest& request : fState.fExports)
    fActions.Add(std::make_unique<TFileExportPostScanAction>(fActions, *fOptions, request.fFormat, request.fFile, run));
  const auto writeNote = [this](std::string_view pNote) { fSettings.fWriteError(pNote); };
  for (const CommandLine::TPictureRequest& request : fState.fPictures) {
    // That of the paths which --history names is drawn with their tables.
    const bool isOfHistory = request.fSubject == CommandLine::TPictureSubject::psHistory;
    if (isOfHistory && !fState.fHistoryPaths.empty() && !request.fFile.empty()) continue;
    fActions.Add(std::make_unique<TPicturePostScanAction>(*fOptions, request, run, writeNote));
  }
  if (!fState.fMailTo.empty()) QueueMail();
  return fActions.ResolveRequirements();
}

void TApplication::QueueMail() {
  Mail::TMailServer server;
  server.fHost = fOptions->MailServer;
  server.fPort = fOptions->MailPort;
  server.fSecurity = fOptions->MailSecurity;
  server.fUser = fState.fUserName.empty() ? fOptions->MailUser : ToNativeBytes(fState.fUserName);
  server.fPassword = ToNativeBytes(fState.fPassword);
  if (server.fPassword.empty())
    server.fPassword = ToNativeBytes(EnvironmentVariable(u"VANTREL_PASSWORD").value_or(u""));
  Mail::TMailMessage message;
  message.fFrom = FromUtf8(fOptions->MailFrom);
  message.fTo = fState.fMailTo;
  message.fSubject = fState.fMailSubject;
  // A report within an export would spoil the export.
  const auto isToOutput = [](const auto& pRequest) { return pRequest.fFile == TOutputFile::kStandardOutput; };
  const bool isTaken = std::any_of(fState.fExports.begin(), fState.fExports.end(), isToOutput) ||
                       std::any_of(fState.fPictures.begin(), fState.fPictures.end(), isToOutput);
  const auto showLine = [this, isTaken](std::string_view pLine) {
    if (!isTaken) return fSettings.fOutput->WriteLine(pLine);
    fSettings.fWriteError(pLine);
    return true;
  };
  fActions.Add(std::make_unique<PostScanActions::TEmailPostScanAction>(
      fActions, *fOptions, std::move(message), std::move(server), fState.fAttachReport, kProgramName, showLine));
}

// Reports what failed. Returns the highest of the exit codes.
int TApplication::WriteFailures() {
  int result = ecOk;
  for (const PostScanActions::TActionFailure& failure : fActions.TakeFailures()) {
    if (!failure.fMessage.empty()) fSettings.fWriteError(failure.fMessage);
    result = std::max(result, failure.fExitCode);
  }
  return result;
}

int TApplication::ManageHistory() {
  return CommandLine::RunHistoryTasks(fState, *fSettings.fOutput, fSettings.fReportWidth, fSettings.fWriteError);
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

int TApplication::OpenAndScan() {
  TRef<IScanRoots> roots = fSettings.fCreateRoots(fOptions);
  if (!QueueActions(*roots)) {
    roots->Dispose();
    return WriteFailures();
  }
  int result = ecOk;
  for (size_t i = 0; i < fState.fOpenFiles.size() && fActions.CanWriteMore(); ++i) {
    fPathsLeft = fState.fPaths.size() + fState.fOpenFiles.size() - i - 1;
    result = std::max(result, OpenFile(*roots, fState.fOpenFiles[i]));
  }
  result = std::max(result, ScanPaths(*roots, fState.fPaths));
  fActions.FinishActions();
  result = std::max(result, WriteFailures());
  WriteUnmatched();
  if (fSettings.fLeaveQuickly) {
    roots.detach();
  } else {
    roots->Dispose();
  }
  return result;
}

// Loads on a thread of its own, so that progress is shown and a signal stops it.
int TApplication::OpenFile(IScanRoots& pRoots, const std::u16string& pFile) {
  using namespace Vantrel::XML;
  std::atomic<uint64_t> bytesRead{0};
  auto load = std::async(std::launch::async, [&] {
    return TQZXMLReader::LoadFromFile({&pFile, 1}, pRoots, [&](const std::u16string&, uint64_t pBytes) {
      bytesRead.store(pBytes, std::memory_order_relaxed);
      return !gCancelRequested.load(std::memory_order_relaxed);
    });
  });
  while (load.wait_for(std::chrono::milliseconds(kPollMilliseconds)) != std::future_status::ready) {
    fLog.WriteWaiting();
    if (fSettings.fShowProgress)
      TConsole::WriteProgress("Reading XML file  " + ToUtf8(FormatValue(TColumn::mdSize, int64_t(bytesRead), {})));
  }
  if (fSettings.fShowProgress) TConsole::ClearProgress();
  const std::vector<TLoadedRoot> loaded = load.get();
  if (loaded.empty()) return ecCancelled;
  const TRef<IHierarchicalRoot> root = loaded.front().fRoot;
  if (!root) {
    fSettings.fWriteError(loaded.front().fError);
    return ecPathNotFound;
  }
  const int result = ReportLoaded(pRoots, loaded.front());
  if (fPathsLeft > 0 || !fSettings.fLeaveQuickly) pRoots.Remove(*root);
  return gCancelRequested ? std::max<int>(result, ecCancelled) : result;
}

int TApplication::ReportLoaded(IScanRoots& pRoots, const XML::TLoadedRoot& pLoaded) {
  IHierarchicalRoot& root = *pLoaded.fRoot;
  for (const std::string& note : pLoaded.fNotes) fSettings.fWriteError(note);
  if (fOptions->RecordHistory)
    fSettings.fWriteError("Not recorded in the history, since it was loaded from a file: " +
                          ToQuotedDisplay(root.GetPath()));
  const int result = PerformActions(pRoots, root);
  return root.GetState() & (rsHasErrors | rsCancelled) ? std::max<int>(result, ecIncomplete) : result;
}

int TApplication::WriteLines(const std::vector<std::string>& pLines) {
  const bool written = std::all_of(pLines.begin(), pLines.end(),
                                   [&](const std::string& pLine) { return fSettings.fOutput->WriteLine(pLine); });
  return written ? ecOk : ecOutputFailed;
}

// Scans one path after the other. Parallel scans would compete for the same drive and the same threads.
int TApplication::ScanPaths(IScanRoots& pRoots, const std::vector<std::u16string>& pPaths) {
  const std::vector<std::u16string> paths = WithoutRepeatedPaths(pRoots, pPaths);
  int result = ecOk;
  fPathsLeft = paths.size();
  for (const std::u16string& path : paths) {
    if (gCancelRequested) {
      fSettings.fWriteError("Not scanned: " + ToQuotedDisplay(path));
      result = std::max<int>(result, ecCancelled);
      continue;
    }
    if (!fActions.CanWriteMore()) break;  // the other reports could not be shown
    --fPathsLeft;
    result = std::max(result, ScanPath(pRoots, path));
  }
  return result;
}

int TApplication::ScanPath(IScanRoots& pRoots, const std::u16string& pPath) {
  TRef<IHierarchicalRoot> root;
  try {
    root = pRoots.CreateRoot(pPath);
  } catch (const EOSError& error) {  // this path cannot be understood; the others are scanned
    fSettings.fWriteError(error.what());
    return ecPathNotFound;
  } catch (const EUnknownProtocol& error) {
    fSettings.fWriteError(error.what());
    return ecPathNotFound;
  }
  const TRef<TPatternFilter> filter = fState.fPatterns ? MakeRef<TPatternFilter>(fState.fPatterns) : nullptr;
  if (filter) root->SetScanFilter(filter);
  root->Scan();
  WaitForScan(*root);
  const int result = ReportRoot(pRoots, *root, pPath);
  if (filter) {
    WriteWarnings(*filter);
    if ((root->GetState() & rsPathNotFound) == 0) NoteUnmatched(filter->GetUnmatched());
  }
  // Frees this path's tree, so that the next one can use its memory.
  if (fPathsLeft > 0 || !fSettings.fLeaveQuickly) pRoots.Remove(*root);
  return result;
}

void TApplication::WriteWarnings(const IScanFilter& pFilter) {
  for (const std::u16string& warning : pFilter.GetWarnings()) fSettings.fWriteError("Warning: " + ToDisplay(warning));
}

// A pattern that matches in one of several paths is not reported.
void TApplication::NoteUnmatched(const std::vector<std::u16string>& pPatterns) {
  if (!fUnmatched) fUnmatched = pPatterns;
  std::erase_if(*fUnmatched, [&](const std::u16string& pPattern) {
    return std::find(pPatterns.begin(), pPatterns.end(), pPattern) == pPatterns.end();
  });
}

// Paths that were not scanned could have matched.
void TApplication::WriteUnmatched() {
  if (!fUnmatched || gCancelRequested) return;
  for (const std::u16string& pattern : *fUnmatched)
    fSettings.fWriteError("Warning: the pattern " + ToDisplay(pattern) + " matched nothing");
}

void TApplication::WaitForScan(IHierarchicalRoot& pRoot) {
  while (!pRoot.WaitForScan(kPollMilliseconds)) {
    // Again and again: each time what hangs is interrupted.
    if (gCancelRequested) pRoot.CancelScan();
    fLog.WriteWaiting();
    if (fSettings.fShowProgress) TConsole::WriteProgress(ProgressText(pRoot.GetProgress()));
  }
  if (fSettings.fShowProgress) TConsole::ClearProgress();
}

int TApplication::ReportRoot(IScanRoots& pRoots, IHierarchicalRoot& pRoot, const std::u16string& pPath) {
  const TRootStates state = pRoot.GetState();
  if (state & rsPathNotFound) {
    const std::vector<TScanError> errors = pRoot.GetErrors();
    const std::string reason = errors.empty() ? "it cannot be opened" : ToDisplay(errors.front().fText);
    fSettings.fWriteError("Cannot scan " + ToQuotedDisplay(pPath) + ": " + reason);
    return ecPathNotFound;
  }
  const int performed = PerformActions(pRoots, pRoot);
  if (performed != ecOk) return performed;
  if (state & rsCancelled) return ecCancelled;
  return (state & rsHasErrors) ? ecIncomplete : ecOk;
}

int TApplication::PerformActions(IScanRoots& pRoots, IHierarchicalRoot& pRoot) {
  fActions.PerformPostProcessActions(&pRoot, pRoots);
  if (!fActions.ShowsReport()) {
    const TValueFormat format = FormatOf(fMedia.Effective(Exporting::TMediaType::mtText));
    constexpr int64_t kMostListed = 10;  // a report has room for more
    const auto listed = static_cast<size_t>(std::min<int64_t>(kMostListed, fOptions->NumberOfListedErrors));
    for (const std::string& line : Exporting::ErrorSummary(pRoot, format, listed)) fSettings.fWriteError(line);
  }
  return WriteFailures();
}

// A path inside another one is kept, because the user named both. The same path given twice is a mistake.
std::vector<std::u16string> TApplication::WithoutRepeatedPaths(const IScanRoots& pRoots,
                                                               const std::vector<std::u16string>& pPaths) {
  const char16_t delimiter = NativePathDelimiter();
  std::vector<std::u16string> kept;
  std::vector<std::u16string> absolute;
  for (const std::u16string& path : pPaths) {
    std::u16string full = path;
    try {
      full = WithoutTrailingDelimiter(pRoots.AbsolutePath(path), delimiter);
    } catch (const EException&) {  // told when its turn comes
    }
    const bool known = std::any_of(absolute.begin(), absolute.end(),
                                   [&](const std::u16string& pOther) { return SamePath(pOther, full, delimiter); });
    if (known) {
      fSettings.fWriteError(ToQuotedDisplay(path) + " was given more than once; it is scanned once");
      continue;
    }
    kept.push_back(path);
    absolute.push_back(full);
  }
  return kept;
}

}  // namespace Vantrel

#include "app/ScanTask.h"

#include <fmt/format.h>

#include <algorithm>

#include "app/CancelRequest.h"
#include "app/RequestedActions.h"
#include "app/ScanLoading.h"
#include "app/Version.h"
#include "automation/commandline/ExitCodes.h"
#include "export/text/PaddedTable.h"
#include "export/text/RootDescription.h"
#include "model/roots/Storage.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Console.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"

namespace Vantrel {

namespace {

constexpr int64_t kPollMilliseconds = 100;

// A folder that takes so long is worth a remark.
constexpr int64_t kLongMilliseconds = 2000;
constexpr int kLeastPathWidth = 20;

// The line with the path at its end, shortened in its middle. The console would cut off the name.
std::string WithPath(const std::string& pLine, const std::u16string& pPath) {
  const int width = Exporting::ConsoleWidth().fColumns - 1 - DisplayWidth(pLine);
  return pLine + Exporting::PathShortenedToWidth(ToDisplay(pPath), std::max(width, kLeastPathWidth));
}

// pPath stands for the folder that is scanned before there is one.
std::string ProgressText(const TScanProgress& pProgress, const std::u16string& pPath, bool pDecimalUnits) {
  if (pProgress.fPrepared < pProgress.fToPrepare)
    return fmt::format("Reading the file table  {} %", pProgress.fPrepared * 100 / pProgress.fToPrepare);
  const int64_t seconds = pProgress.fElapsed / 1000;
  TValueFormat format;
  format.fDecimalUnits = pDecimalUnits;
  auto text = [&](TColumn pColumn, int64_t pValue) { return ToUtf8(FormatValue(pColumn, pValue, format)); };
  const std::string begin = fmt::format("{}:{:02} (Ctrl+C stops)  {} files, ", seconds / 60, seconds % 60,
                                        text(TColumn::mdFiles, pProgress.fFiles));
  const std::string size = text(TColumn::mdSize, pProgress.fBytes);
  if (pProgress.fLongestListedElapsed >= kLongMilliseconds)
    return WithPath(begin + fmt::format("{}  waiting {} s for ", size, pProgress.fLongestListedElapsed / 1000),
                    pProgress.fLongestListed);
  const bool isBeginning = pProgress.fFiles + pProgress.fFolders == 0;
  const int64_t rate = (pProgress.fFiles + pProgress.fFolders) * 1000 / std::max<int64_t>(pProgress.fElapsed, 1);
  return WithPath(begin + fmt::format("{} folders, {}, {}/s  ", text(TColumn::mdFolders, pProgress.fFolders), size,
                                      text(TColumn::mdItems, rate)),
                  !pProgress.fLongestListed.empty() ? pProgress.fLongestListed
                  : isBeginning                     ? pPath
                                                    : pProgress.fLastScannedFolder);
}

}  // namespace

TScanTask::TScanTask(const TRunSettings& pSettings, const CommandLine::TCommandLineState& pState,
                     std::shared_ptr<TGlobalOptions> pOptions, TRunLog& pLog)
    : fSettings(pSettings),
      fState(pState),
      fOptions(std::move(pOptions)),
      fLog(pLog),
      fMedia(*fOptions),
      fActions(*this, fMedia, *fSettings.fOutput) {}

std::string TScanTask::ProgramName() const {
  return kProgramName;
}

int TScanTask::Run() {
  TRef<IScanRoots> roots = fSettings.fCreateRoots(fOptions);
  if (!QueueRequestedActions(fActions, fState, fSettings, *roots)) {
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
  if (fSettings.fShowProgress)
    for (const std::u16string& file : fActions.GetWrittenFiles())
      if (file != TOutputFile::kStandardOutput) fSettings.fWriteNote("Written: " + ToQuotedDisplay(file));
  result = std::max(result, WriteFailures());
  WriteUnmatched();
  if (fSettings.fLeaveQuickly) {
    roots.detach();
  } else {
    roots->Dispose();
  }
  return result;
}

int TScanTask::OpenFile(IScanRoots& pRoots, const std::u16string& pFile) {
  const TLoadedScanFile loaded = LoadScanFile(pFile, pRoots, fSettings, fLog);
  if (!loaded.fRoot) return loaded.fResult;
  const int result = ReportLoaded(pRoots, *loaded.fRoot);
  if (fPathsLeft > 0 || !fSettings.fLeaveQuickly) pRoots.Remove(*loaded.fRoot);
  return IsCancelRequested() ? std::max<int>(result, ecCancelled) : result;
}

int TScanTask::ReportLoaded(IScanRoots& pRoots, IHierarchicalRoot& pRoot) {
  if (fOptions->RecordHistory)
    fSettings.fWriteError("Not recorded in the history, since it was loaded from a file: " +
                          ToQuotedDisplay(pRoot.GetPath()));
  const int result = PerformActions(pRoots, pRoot);
  return pRoot.GetState() & (rsHasErrors | rsCancelled) ? std::max<int>(result, ecIncomplete) : result;
}

// Scans one path after the other. Parallel scans would compete for the same drive and the same threads.
int TScanTask::ScanPaths(IScanRoots& pRoots, const std::vector<std::u16string>& pPaths) {
  const std::vector<std::u16string> paths = WithoutRepeatedPaths(pRoots, pPaths);
  int result = ecOk;
  fPathsLeft = paths.size();
  for (const std::u16string& path : paths) {
    if (IsCancelRequested()) {
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

int TScanTask::ScanPath(IScanRoots& pRoots, const std::u16string& pPath) {
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

void TScanTask::WaitForScan(IHierarchicalRoot& pRoot) {
  while (!pRoot.WaitForScan(kPollMilliseconds)) {
    // Again and again: each time what hangs is interrupted.
    if (IsCancelRequested()) pRoot.CancelScan();
    fLog.WriteWaiting();
    if (fSettings.fShowProgress)
      TConsole::WriteProgress(ProgressText(pRoot.GetProgress(), pRoot.GetPath(), fOptions->DecimalUnits));
  }
  if (fSettings.fShowProgress) TConsole::ClearProgress();
}

int TScanTask::ReportRoot(IScanRoots& pRoots, IHierarchicalRoot& pRoot, const std::u16string& pPath) {
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

int TScanTask::PerformActions(IScanRoots& pRoots, IHierarchicalRoot& pRoot) {
  fActions.PerformPostProcessActions(&pRoot, pRoots);
  if (!fActions.ShowsReport()) {
    const TValueFormat format = FormatOf(fMedia.Effective(Exporting::TMediaType::mtText));
    constexpr int64_t kMostListed = 10;  // a report has room for more
    const auto listed = static_cast<size_t>(std::min<int64_t>(kMostListed, fOptions->NumberOfListedErrors));
    for (const std::string& line : Exporting::ErrorSummary(pRoot, format, listed)) fSettings.fWriteError(line);
  }
  return WriteFailures();
}

// Reports what failed. Returns the highest of the exit codes.
int TScanTask::WriteFailures() {
  int result = ecOk;
  for (const PostScanActions::TActionFailure& failure : fActions.TakeFailures()) {
    if (!failure.fMessage.empty()) fSettings.fWriteError(failure.fMessage);
    result = std::max(result, failure.fExitCode);
  }
  return result;
}

void TScanTask::WriteWarnings(const IScanFilter& pFilter) {
  for (const std::u16string& warning : pFilter.GetWarnings()) fSettings.fWriteError("Warning: " + ToDisplay(warning));
}

// A pattern that matches in one of several paths is not reported.
void TScanTask::NoteUnmatched(const std::vector<std::u16string>& pPatterns) {
  if (!fUnmatched) fUnmatched = pPatterns;
  std::erase_if(*fUnmatched, [&](const std::u16string& pPattern) {
    return std::find(pPatterns.begin(), pPatterns.end(), pPattern) == pPatterns.end();
  });
}

// Paths that were not scanned could have matched.
void TScanTask::WriteUnmatched() {
  if (!fUnmatched || IsCancelRequested()) return;
  for (const std::u16string& pattern : *fUnmatched)
    fSettings.fWriteError("Warning: the pattern " + ToDisplay(pattern) + " matched nothing");
}

// A path inside another one is kept, because the user named both. The same path given twice is a mistake.
std::vector<std::u16string> TScanTask::WithoutRepeatedPaths(const IScanRoots& pRoots,
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

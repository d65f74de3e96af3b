#include "app/SearchTask.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "app/CancelRequest.h"
#include "app/DuplicatesTask.h"
#include "app/ResultWriting.h"
#include "app/ScanLoading.h"
#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/SearchRequest.h"
#include "export/text/RootDescription.h"
#include "export/walk/MediaOptions.h"
#include "model/roots/ScanConfiguration.h"
#include "model/roots/Storage.h"
#include "model/tree/TreeWalk.h"
#include "platform/system/Console.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"

namespace Vantrel {

using namespace PostScanActions;
using Search::TFileSearch;
using Search::TSearchError;

namespace {

constexpr int64_t kMillisecondsBetweenLooks = 100;

bool HoldsFiles(IFolderData& pTop) {
  TTreeWalkSettings settings;
  settings.fShowsFiles = true;
  settings.fOrder = TSiblingOrder::soAny;
  return !TTreeWalk(settings).ForEach(pTop, [](const TTreeRow& pRow) { return !pRow.IsFile(); });
}

std::string CountOf(int64_t pCount, std::string_view pOne, std::string_view pMany) {
  return Exporting::CountText(pCount, pOne, pMany, {});
}

}  // namespace

int TSearchTask::Run() {
  if (!ProbeTargets()) return ecOutputFailed;
  const TRef<IScanRoots> roots = fSettings.fCreateRoots(fOptions);
  Search::TFileSearchSettings settings;
  settings.fExpression = CommandLine::ExpressionOf(fState);
  const bool comparesFolders =
      fState.fDuplicates.fIsWanted && fState.fDuplicates.fMode == Search::TDuplicatesSearchMode::DuplicateFolders;
  if (comparesFolders && fState.fPatterns)
    fSettings.fWriteError("Warning: patterns leave files out, so folders may be equal that differ in these files");
  settings.fMostFound = fOptions->SearchLimit;
  settings.fThreads = fOptions->MaximumThreads;
  settings.fPriority = fOptions->ThreadPriority;
  settings.fEnumeratorOptions = EnumeratorOptionsOf(*fOptions);
  if (fState.fPatterns) settings.fFilter = MakeRef<TPatternFilter>(fState.fPatterns);
  const TRef<IScanFilter> filter = settings.fFilter;
  const int64_t started = TickCount64();
  TFileSearch search(std::move(settings));
  int result = std::max(AddScans(*roots, search), AddPaths(*roots, search));
  search.Start();
  WaitFor(search);
  result = std::max(result, Report(search));
  if (filter)
    for (const std::u16string& warning : filter->GetWarnings()) fSettings.fWriteError("Warning: " + ToDisplay(warning));

  if (fState.fDuplicates.fIsWanted) {
    result = std::max(result, FindDuplicates(search, started));
    roots->Dispose();
    return result;
  }
  TSearchResults results;
  results.fItems = std::move(fFound);
  SortResults(results.fItems, *fOptions);
  results.fTitle = u"Found by " + *fState.fQuery;
  const TValueFormat format = FormatOf(Exporting::TMediaOptions(*fOptions).Effective(Exporting::TMediaType::mtText));
  const Search::TSearchProgress progress = search.GetProgress();
  results.fSummary = fmt::format("{}, among {} and {} in {}", FoundSummary(results.fItems, format),
                                 Exporting::CountText(progress.fFiles, "file", "files", format),
                                 Exporting::CountText(progress.fFolders, "folder", "folders", format),
                                 Exporting::SecondsText(TickCount64() - started));
  if (search.WasCancelled()) results.fSummary += " - cancelled";
  if (search.HasFoundEnough()) results.fSummary += " - ended at the limit";
  if (progress.fErrors > 0) results.fSummary += " - incomplete";
  result = std::max(result, WriteResults(WriterOf(results, *fOptions), fSettings, fState));
  roots->Dispose();
  return result;
}

int TSearchTask::FindDuplicates(const TFileSearch& pSearch, int64_t pStarted) {
  TSearchedFiles searched;
  searched.fFound = std::move(fFound);
  searched.fTops = fTops;
  for (const TSearchError& error : pSearch.GetErrors()) searched.fIncompleteFolders.push_back(error.fPath);
  searched.fFiles = pSearch.GetProgress().fFiles;
  searched.fWasCancelled = pSearch.WasCancelled();
  return TDuplicatesTask(fSettings, fState, fOptions, fLog).Run(std::move(searched), pStarted);
}

bool TSearchTask::ProbeTargets() {
  try {
    for (const CommandLine::TExportRequest& request : fState.fExports) ProbeTarget(request.fFile);
    return true;
  } catch (const EOSError& error) {
    fSettings.fWriteError(error.what());
    return false;
  }
}

int TSearchTask::AddPaths(IScanRoots& pRoots, TFileSearch& pSearch) {
  int result = ecOk;
  std::vector<std::u16string> added;
  for (const std::u16string& path : fState.fPaths) {
    try {
      const TRef<IHierarchicalRoot> root = pRoots.CreateRoot(path);
      if (std::find(added.begin(), added.end(), root->GetTitle()) != added.end()) {
        fSettings.fWriteError(ToQuotedDisplay(path) + " was given more than once; it is searched once");
        continue;
      }
      added.push_back(root->GetTitle());
      fTops.push_back(root->GetPath());
      pSearch.AddPath(*root);
    } catch (const EOSError& error) {
      fSettings.fWriteError(error.what());
      result = ecPathNotFound;
    } catch (const EUnknownProtocol& error) {
      fSettings.fWriteError(error.what());
      result = ecPathNotFound;
    }
  }
  return result;
}

int TSearchTask::AddScans(IScanRoots& pRoots, TFileSearch& pSearch) {
  int result = ecOk;
  for (const std::u16string& file : fState.fOpenFiles) {
    const TLoadedScanFile loaded = LoadScanFile(file, pRoots, fSettings, fLog);
    result = std::max(result, loaded.fResult);
    if (!loaded.fRoot) continue;
    const TRef<IFolderData> top = loaded.fRoot->GetTopFolder();
    if (!top) continue;
    if (top->GetFiles() > 0 && !HoldsFiles(*top))
      fSettings.fWriteError("Only folders are searched, since the file holds no single files: " +
                            ToQuotedDisplay(file));
    pSearch.AddTree(loaded.fRoot);
  }
  return result;
}

void TSearchTask::WaitFor(TFileSearch& pSearch) {
  for (bool hasEnded = false; !hasEnded;) {
    hasEnded = pSearch.WaitForEnd(kMillisecondsBetweenLooks);
    // Again and again: each time what hangs is interrupted.
    if (!hasEnded && IsCancelRequested()) pSearch.Cancel();
    std::vector<Search::TFoundItem> found = pSearch.TakeFound();
    std::move(found.begin(), found.end(), std::back_inserter(fFound));
    fLog.WriteWaiting();
    if (hasEnded || !fSettings.fShowProgress) continue;
    const Search::TSearchProgress progress = pSearch.GetProgress();
    TConsole::WriteProgress(fmt::format("{} found among {}  {}", CountOf(progress.fFound, "item", "items"),
                                        CountOf(progress.fFiles + progress.fFolders, "item", "items"),
                                        ToDisplay(progress.fLastFolder)));
  }
  if (fSettings.fShowProgress) TConsole::ClearProgress();
}

int TSearchTask::Report(const TFileSearch& pSearch) {
  for (const std::u16string& warning : pSearch.GetWarnings()) fSettings.fWriteError("Warning: " + ToDisplay(warning));
  const int result = ReportErrors(pSearch);
  return pSearch.WasCancelled() ? std::max<int>(result, ecCancelled) : result;
}

int TSearchTask::ReportErrors(const TFileSearch& pSearch) {
  std::vector<TSearchError> errors = pSearch.GetErrors();
  std::sort(errors.begin(), errors.end(),
            [](const TSearchError& pA, const TSearchError& pB) { return pA.fPath < pB.fPath; });
  int result = ecOk;
  for (const TSearchError& error : errors) {
    if (!error.fIsTarget) continue;
    fSettings.fWriteError("Cannot search " + ToQuotedDisplay(error.fPath) + ": " + ToDisplay(error.fText));
    result = ecPathNotFound;
  }
  std::erase_if(errors, [](const TSearchError& pError) { return pError.fIsTarget; });
  if (errors.empty()) return result;
  const auto count = static_cast<int64_t>(errors.size());
  std::vector<std::string> lines;
  for (const TSearchError& error : errors)
    lines.push_back(fmt::format("{}: {}{}", ToDisplay(error.fPath), ToDisplay(error.fText),
                                error.fIsPartial ? " (read in part)" : ""));
  ListUnread(fSettings, "incomplete: " + CountOf(count, "file or folder", "files and folders") + " could not be read",
             lines, fOptions->NumberOfListedErrors);
  return std::max<int>(result, ecIncomplete);
}

}  // namespace Vantrel

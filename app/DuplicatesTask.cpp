#include "app/DuplicatesTask.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "app/CancelRequest.h"
#include "app/ResultWriting.h"
#include "automation/actions/SearchResults.h"
#include "automation/commandline/ExitCodes.h"
#include "export/text/RootDescription.h"
#include "export/walk/MediaOptions.h"
#include "platform/system/Console.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"

namespace Vantrel {

using namespace PostScanActions;
using Exporting::CountText;
using Search::TDuplicateSearch;
using enum Search::TDuplicatesSearchMode;

namespace {

constexpr int64_t kMillisecondsBetweenReports = 100;

std::string DuplicatesProgressText(const Search::TDuplicateProgress& pProgress, const TValueFormat& pFormat) {
  const auto size = [&](int64_t pBytes) { return ToUtf8(FormatValue(TColumn::mdSize, pBytes, pFormat)); };
  std::string text(pProgress.fPhase);
  if (pProgress.fAllFiles > 0)
    text += fmt::format(" {} of {}", pProgress.fFiles, CountText(pProgress.fAllFiles, "item", "items", {}));
  if (pProgress.fAllBytes > 0) text += fmt::format(", {} of {}", size(pProgress.fBytes), size(pProgress.fAllBytes));
  return text + ", " + CountText(pProgress.fDuplicates, "duplicate", "duplicates", {});
}

TValueFormat ReportFormat(TGlobalOptions& pOptions) {
  return FormatOf(Exporting::TMediaOptions(pOptions).Effective(Exporting::TMediaType::mtText));
}

}  // namespace

int TDuplicatesTask::Run(TSearchedFiles pSearched, int64_t pStarted) {
  const TValueFormat format = ReportFormat(*fOptions);
  Search::TDuplicateSearchSettings settings = DuplicateSettingsOf(fState.fDuplicates, *fOptions, pSearched);
  if (pSearched.fWasCancelled) pSearched.fFound.clear();
  const TRef<History::TChecksumDatabase> cache = ChecksumCacheOf(fState.fDuplicates, *fOptions);
  settings.fCache = cache;
  TDuplicateSearch search(std::move(settings), std::move(pSearched.fFound));
  WaitFor(search);
  if (cache) cache->Flush();
  if (cache && !cache->Problem().empty())
    fSettings.fWriteError("Warning: checksums are computed anew, or not kept. " + cache->Problem());
  const bool wasCancelled = pSearched.fWasCancelled || search.WasCancelled();
  Search::TDuplicateResult found = search.TakeResult();
  int result = Report(found.fNotes);
  std::string among = fmt::format(", among {} in {}", CountText(pSearched.fFiles, "file", "files", format),
                                  Exporting::SecondsText(TickCount64() - pStarted));
  if (wasCancelled) among += " - cancelled";
  if (result != ecOk || !pSearched.fIncompleteFolders.empty()) among += " - incomplete";
  if (wasCancelled) result = std::max<int>(result, ecCancelled);
  const bool isUnique = fState.fDuplicates.fMode == UniqueFiles;
  return std::max(result,
                  isUnique ? WriteUnique(std::move(found.fUnique), among) : WriteGroups(std::move(found), among));
}

void TDuplicatesTask::WaitFor(TDuplicateSearch& pSearch) {
  TValueFormat format;
  format.fDecimalUnits = fOptions->DecimalUnits;
  while (!pSearch.WaitForEnd(kMillisecondsBetweenReports)) {
    // Again and again: each time what hangs is interrupted.
    if (IsCancelRequested()) pSearch.Cancel();
    fLog.WriteWaiting();
    if (fSettings.fShowProgress) TConsole::WriteProgress(DuplicatesProgressText(pSearch.GetProgress(), format));
  }
  fLog.WriteWaiting();
  if (fSettings.fShowProgress) TConsole::ClearProgress();
}

int TDuplicatesTask::Report(const std::vector<Search::TDuplicateNote>& pNotes) {
  std::vector<std::string> lines;
  for (const Search::TDuplicateNote& note : pNotes)
    lines.push_back(ToDisplay(note.fPath) + ": " + ToDisplay(note.fText));
  const auto count = static_cast<int64_t>(lines.size());
  ListUnread(fSettings, "incomplete: " + CountText(count, "file", "files", {}) + " could not be compared", lines,
             fOptions->NumberOfListedErrors);
  return lines.empty() ? ecOk : ecIncomplete;
}

int TDuplicatesTask::WriteGroups(Search::TDuplicateResult pFound, const std::string& pAmong) {
  const bool areFolders = fState.fDuplicates.fMode == DuplicateFolders;
  const TValueFormat format = ReportFormat(*fOptions);
  TDuplicateResults results;
  results.fTitle = areFolders ? u"Equal folders" : u"Duplicate files";
  results.fFound = std::move(pFound);
  results.fSummary = DuplicatesSummary(results.fFound, areFolders, format) + pAmong;
  return WriteResults(
      {[&](ILineOutput& pOutput) { return WriteDuplicates(results, TExportFormat::efReport, *fOptions, {}, pOutput); },
       [&](const CommandLine::TExportRequest& pRequest, const TExportRun& pRun) {
         ExportDuplicates(results, pRequest, *fOptions, pRun);
       }},
      fSettings, fState);
}

int TDuplicatesTask::WriteUnique(std::vector<Search::TFoundItem> pFiles, const std::string& pAmong) {
  const TValueFormat format = ReportFormat(*fOptions);
  TSearchResults results;
  results.fItems = std::move(pFiles);
  SortResults(results.fItems, *fOptions);
  results.fTitle = u"Files without a duplicate";
  results.fSummary = FoundSummary(results.fItems, format) + pAmong;
  return WriteResults(WriterOf(results, *fOptions), fSettings, fState);
}

}  // namespace Vantrel

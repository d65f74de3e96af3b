#pragma once

// The part of a run that looks for duplicates among what a search has found.

#include <memory>
#include <string>
#include <vector>

#include "app/RunLog.h"
#include "app/RunSettings.h"
#include "automation/actions/DuplicateResults.h"
#include "automation/commandline/CommandLineState.h"
#include "search/duplicates/DuplicateSearch.h"

namespace Vantrel {

// Finds the duplicates and writes them. Main thread only.
class TDuplicatesTask {
 public:
  // All arguments must outlive the run. pState's options are pOptions.
  TDuplicatesTask(const TRunSettings& pSettings, const CommandLine::TCommandLineState& pState,
                  std::shared_ptr<TGlobalOptions> pOptions, TRunLog& pLog)
      : fSettings(pSettings), fState(pState), fOptions(std::move(pOptions)), fLog(pLog) {}

  // Returns the exit code. The search began at pStarted, in the milliseconds of TickCount64.
  int Run(PostScanActions::TSearchedFiles pSearched, int64_t pStarted);

 private:
  void WaitFor(Search::TDuplicateSearch& pSearch);
  int Report(const std::vector<Search::TDuplicateNote>& pNotes);
  int WriteGroups(Search::TDuplicateResult pFound, const std::string& pAmong);
  int WriteUnique(std::vector<Search::TFoundItem> pFiles, const std::string& pAmong);

  const TRunSettings& fSettings;
  const CommandLine::TCommandLineState& fState;
  const std::shared_ptr<TGlobalOptions> fOptions;
  TRunLog& fLog;
};

}  // namespace Vantrel

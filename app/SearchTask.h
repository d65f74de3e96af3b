#pragma once

// The part of a run that searches for files, in paths or in opened scan files.

#include <memory>
#include <string>
#include <vector>

#include "app/RunLog.h"
#include "app/RunSettings.h"
#include "automation/actions/SearchResults.h"
#include "automation/commandline/CommandLineState.h"
#include "search/files/FileSearch.h"

namespace Vantrel {

// Searches everything that a command line names, and writes what was found. Main thread only.
class TSearchTask {
 public:
  // All arguments must outlive the run. pState's options are pOptions.
  TSearchTask(const TRunSettings& pSettings, const CommandLine::TCommandLineState& pState,
              std::shared_ptr<TGlobalOptions> pOptions, TRunLog& pLog)
      : fSettings(pSettings), fState(pState), fOptions(std::move(pOptions)), fLog(pLog) {}

  // Returns the exit code.
  int Run();

 private:
  bool ProbeTargets();
  // Adds what is to be searched, and says what cannot be.
  int AddPaths(IScanRoots& pRoots, Search::TFileSearch& pSearch);
  int AddScans(IScanRoots& pRoots, Search::TFileSearch& pSearch);
  void WaitFor(Search::TFileSearch& pSearch);
  // What went wrong in the search.
  int Report(const Search::TFileSearch& pSearch);
  int ReportErrors(const Search::TFileSearch& pSearch);
  int FindDuplicates(const Search::TFileSearch& pSearch, int64_t pStarted);

  const TRunSettings& fSettings;
  const CommandLine::TCommandLineState& fState;
  const std::shared_ptr<TGlobalOptions> fOptions;
  TRunLog& fLog;
  std::vector<Search::TFoundItem> fFound;
  std::vector<std::u16string> fTops;  // the paths that are searched
};

}  // namespace Vantrel

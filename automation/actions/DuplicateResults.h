#pragma once

// How a request makes a search for duplicates. Writes the groups: as text, in rows for programs, as a list of paths.

#include <string>
#include <vector>

#include "automation/actions/FileExportAction.h"
#include "automation/commandline/CommandLineState.h"
#include "export/history/ChecksumDatabase.h"
#include "search/duplicates/DuplicateSettings.h"
#include "search/files/FoundItem.h"

namespace Vantrel::PostScanActions {

// What a search has found for a search for duplicates, and how it went.
struct TSearchedFiles {
  std::vector<Search::TFoundItem> fFound;
  std::vector<std::u16string> fTops;  // the searched paths
  std::vector<std::u16string> fIncompleteFolders;
  int64_t fFiles = 0;  // looked at
  bool fWasCancelled = false;
};

// The settings of the search for duplicates, without a cache.
Search::TDuplicateSearchSettings DuplicateSettingsOf(const CommandLine::TDuplicatesRequest& pRequest,
                                                     const TGlobalOptions& pOptions, const TSearchedFiles& pSearched);
// The checksums of earlier searches, if the options name a file of them and the request reads contents; else nullptr.
TRef<History::TChecksumDatabase> ChecksumCacheOf(const CommandLine::TDuplicatesRequest& pRequest,
                                                 const TGlobalOptions& pOptions);

// What is written, and in which words.
struct TDuplicateResults {
  std::u16string fTitle;
  Search::TDuplicateResult fFound;
  std::string fSummary;  // the last line of a text
};

// "12 groups of equal files with 30 names, 4.2 GB wasted"
std::string DuplicatesSummary(const Search::TDuplicateResult& pFound, bool pAreFolders, const TValueFormat& pFormat);

// Writes the groups to an open output. False when it takes no more lines. Path lists are not for this.
bool WriteDuplicates(const TDuplicateResults& pResults, TExportFormat pFormat, TGlobalOptions& pOptions,
                     std::u16string_view pFile, Exporting::ILineOutput& pOutput);
// Writes them to the file of a request, which replaces its target when complete. EOSError, EExportCancelled.
void ExportDuplicates(const TDuplicateResults& pResults, const CommandLine::TExportRequest& pRequest,
                      TGlobalOptions& pOptions, const TExportRun& pRun);

}  // namespace Vantrel::PostScanActions

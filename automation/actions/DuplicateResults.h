#pragma once

// Writes the groups of duplicates: as text, in rows for programs, as a list of paths.

#include <string>

#include "automation/actions/FileExportAction.h"
#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::PostScanActions {

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

#pragma once

// Writes what a search has found: as text, in rows for programs, as a list of paths.

#include <span>
#include <string>
#include <vector>

#include "automation/actions/FileExportAction.h"
#include "search/files/FoundItem.h"

namespace Vantrel::PostScanActions {

// What is written, and in which words.
struct TSearchResults {
  std::u16string fTitle;  // "Found in /data: size:>1GB"
  std::vector<Search::TFoundItem> fItems;
  std::string fSummary;  // the last line of a text
};

// Sorts by what --sortby asks for; without it, by size, the largest first.
void SortResults(std::vector<Search::TFoundItem>& pItems, TGlobalOptions& pOptions);

// "12 files and 3 folders found, 4.2 GB"
std::string FoundSummary(std::span<const Search::TFoundItem> pItems, const TValueFormat& pFormat);

// Writes the results to an open output. False when it takes no more lines. Path lists are not for this.
bool WriteSearchResults(const TSearchResults& pResults, TExportFormat pFormat, TGlobalOptions& pOptions,
                        std::u16string_view pFile, Exporting::ILineOutput& pOutput);
// Writes them to the file of a request, which replaces its target when complete. EOSError, EExportCancelled.
void ExportSearchResults(const TSearchResults& pResults, const CommandLine::TExportRequest& pRequest,
                         TGlobalOptions& pOptions, const TExportRun& pRun);

}  // namespace Vantrel::PostScanActions

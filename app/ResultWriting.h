#pragma once

// Writes what a run has found, to the console or to the requested files.

#include <functional>
#include <string>
#include <vector>

#include "app/RunSettings.h"
#include "automation/actions/SearchResults.h"
#include "automation/commandline/CommandLineState.h"

namespace Vantrel {

// How one kind of results is written.
struct TResultWriter {
  std::function<bool(PostScanActions::ILineOutput&)> fShow;  // false: the output takes no more lines
  std::function<void(const CommandLine::TExportRequest&, const PostScanActions::TExportRun&)> fExport;
};

// For files that were found. Both arguments must outlive the writer.
TResultWriter WriterOf(const PostScanActions::TSearchResults& pResults, TGlobalOptions& pOptions);

// Writes to all requested files, or to the console if none is requested. Returns the exit code. Main thread only.
int WriteResults(const TResultWriter& pWriter, const TRunSettings& pSettings,
                 const CommandLine::TCommandLineState& pState);

// Lists what could not be read, after a head line; at most pMost and ten. Nothing without lines.
void ListUnread(const TRunSettings& pSettings, const std::string& pHead, const std::vector<std::string>& pLines,
                int64_t pMost);

}  // namespace Vantrel

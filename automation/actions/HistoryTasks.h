#pragma once

// The history on the command line: shown, exported, imported, scans deleted.

#include <functional>
#include <string>

#include "automation/commandline/CommandLineState.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::CommandLine {

// The file of the history: that of the options, else in the user's own data folder; empty when the system tells none.
std::u16string HistoryFile(const Vantrel::TGlobalOptions& pOptions);

// Does what the command line asks of the history: imports, deletions, tables with charts, the CSV file, the export, in
// this order. Messages go one by one to pWriteError. Returns the exit code.
int RunHistoryTasks(const TCommandLineState& pState, Vantrel::Exporting::ILineOutput& pOutput, int pWidth,
                    const std::function<void(std::string_view)>& pWriteError);

}  // namespace Vantrel::CommandLine

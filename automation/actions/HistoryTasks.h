#pragma once

// The command line's tasks on the history: show, export, import, delete scans.

#include <functional>
#include <string>

#include "automation/commandline/CommandLineState.h"
#include "export/pictures/PictureRenderer.h"
#include "export/walk/HierarchicalExport.h"

namespace Vantrel::CommandLine {

// The file of the history: the one in the options, otherwise one in the user's data folder. Empty when the system names
// no such folder.
std::u16string HistoryFile(const Vantrel::TGlobalOptions& pOptions);

// Runs the command line's tasks on the history in this order: imports, deletions, tables with charts, the CSV file, the
// export. Sends messages one by one to pWriteError. Charts become PNG files if there is a renderer. Returns the exit
// code.
int RunHistoryTasks(const TCommandLineState& pState, Vantrel::Exporting::ILineOutput& pOutput,
                    const std::function<void(std::string_view)>& pWriteError,
                    Vantrel::Pictures::IPictureRenderer* pRenderer = nullptr);

}  // namespace Vantrel::CommandLine

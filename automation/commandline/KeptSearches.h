#pragma once

// The searches that a user keeps with a name, in the options file.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/CommandLineState.h"

namespace Vantrel::CommandLine {

// The query of that name, in any letter case; nullptr when there is none.
const std::u16string* FindKeptSearch(const TGlobalOptions& pOptions, std::u16string_view pName);

// Keeps and forgets the searches that the run names, in options, or in the user's own options file alone: what the run
// sets otherwise is not kept. EInvalidArgumentValue for a name to forget that is not there, EOptionsFileError and
// EOSError.
void ChangeKeptSearches(const TCommandLineState& pState, TGlobalOptions& pOptions);
void ChangeKeptSearches(const TCommandLineState& pState, const std::u16string& pFile, std::string_view pProgramName,
                        std::string_view pVersion);

// A line for each search that --find knows: its name and its query.
std::vector<std::string> SearchLines(const TGlobalOptions& pOptions);

}  // namespace Vantrel::CommandLine

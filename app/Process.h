#pragma once

// The run on the process's own streams, with Ctrl+C, and how the process ends.

#include <span>
#include <string>

#include "app/RunSettings.h"

namespace Vantrel {

// Runs the program on the process's streams and returns the exit code. The entry points call it once.
int RunOnStreams(TRunSettings pSettings, std::span<const std::u16string> pTokens);
// Ends the process after that.
[[noreturn]] void EndProcess(int pCode);

}  // namespace Vantrel

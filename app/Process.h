#pragma once

// The run on the process's own streams, with Ctrl+C, and how the process ends.

#include <span>
#include <string>

namespace Vantrel {

// Runs the program on the process's streams and ends the process; the entry points of both platforms call it.
[[noreturn]] void RunProcess(const std::string& pPlatformName, std::span<const std::u16string> pTokens);

}  // namespace Vantrel

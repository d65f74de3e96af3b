#pragma once

// Completions for bash, zsh and fish, made from the tables.

#include <string>
#include <vector>

namespace Vantrel::CommandLine {

// Scripts that complete switches, options and their values, made from the switch and option tables. Each is a single
// text whose lines end in LF on every platform.
std::vector<std::string> BashCompletions();
std::vector<std::string> ZshCompletions();
std::vector<std::string> FishCompletions();

}  // namespace Vantrel::CommandLine

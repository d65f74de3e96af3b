#pragma once

#include <string>
#include <vector>

namespace Vantrel::CommandLine {

// Scripts that complete switches, options and their values, made from the switch and option tables.
std::vector<std::string> BashCompletions();
std::vector<std::string> ZshCompletions();
std::vector<std::string> FishCompletions();

}  // namespace Vantrel::CommandLine

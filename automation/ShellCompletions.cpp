#include "automation/ShellCompletions.h"

namespace Vantrel::CommandLine {

std::vector<std::string> BashCompletions() { return {}; }
std::vector<std::string> ZshCompletions() { return {}; }
std::vector<std::string> FishCompletions() { return {}; }

}  // namespace Vantrel::CommandLine

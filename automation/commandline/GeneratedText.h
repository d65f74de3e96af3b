#pragma once

// What the manual page and the completions have in common.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/SwitchTable.h"

namespace Vantrel::CommandLine {

// What the manual page and the completions have in common.

// UTF-8, ASCII letters in lower case.
std::string LowerText(std::string pText);
// "--scan": the spelling of a switch that is shown and completed.
std::string SwitchName(const TSwitch& pSwitch);
// The lines as a single one, with LF between them: the console ends what it writes with CRLF, and both shells and
// formatters take a CR for a part of the line. So the only CR stands behind a closing comment.
std::vector<std::string> AsOneText(const std::vector<std::string>& pLines, std::string_view pCommentSign);

}  // namespace Vantrel::CommandLine

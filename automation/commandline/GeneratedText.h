#pragma once

// Helpers that help, the manual page and the completions share.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/SwitchTable.h"

namespace Vantrel::CommandLine {

// The text with its ASCII letters in lower case. UTF-8.
std::string LowerText(std::string pText);
// "--scan": the spelling of a switch that is shown and completed.
std::string SwitchName(const TSwitch& pSwitch);
// As it is typed: "-h" rather than "--h".
std::string TypedName(const TSwitch& pSwitch);
// What the help says beyond the first line of a switch, with the names of the columns where its value is one of them.
std::string DetailsOf(const TSwitch& pSwitch);
// The names of all columns as they are typed, with this text between them.
std::string ColumnWords(std::string_view pBetween);
// Joins the lines with LF into one. On Windows the console ends its output with CRLF, and shells and formatters read a
// CR as a part of the line. So the only CR stands after a closing comment.
std::vector<std::string> AsOneText(const std::vector<std::string>& pLines, std::string_view pCommentSign);

}  // namespace Vantrel::CommandLine

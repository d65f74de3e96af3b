#pragma once

#include <string>
#include <vector>

namespace Vantrel::CommandLine {

// Texts of "--help", line by line, made from the switch and option tables.

// Fits a screen of 24 lines and 80 columns.
std::vector<std::string> HelpText();
// Every option with its default and range.
std::vector<std::string> OptionsHelpText();
// What is told when the command line names nothing to do.
std::vector<std::string> UsageText();

}  // namespace Vantrel::CommandLine

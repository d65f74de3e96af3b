#pragma once

// The manual page, made from the tables.

#include <string>
#include <vector>

namespace Vantrel::CommandLine {

// The manual page, section 1, in man's macros, made from the switch and option tables; for "man -l -". A single text
// whose lines end in LF on every platform.
std::vector<std::string> ManualPage();

}  // namespace Vantrel::CommandLine

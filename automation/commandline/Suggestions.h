#pragma once

// What an unknown switch was probably meant to be.

#include <string>
#include <string_view>

#include "automation/commandline/CommandLineParser.h"

namespace Vantrel::CommandLine {

// ". Did you mean --depth?" for a token such as "--max-depth", which other programs have, or "--dpeth", which is nearly
// a switch or an option. Empty when nothing is near enough.
std::string SuggestionFor(const TKivCommandLineParser& pParser, std::u16string_view pToken);

}  // namespace Vantrel::CommandLine

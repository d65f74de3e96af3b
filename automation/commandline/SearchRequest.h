#pragma once

// The search that a command line asks for: its query, and what does not go with it.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/CommandLineState.h"
#include "search/query/AdaptedExpression.h"

namespace Vantrel::CommandLine {

// The conditions of the requested query, made ready for what is searched. EQueryError when the query is not valid,
// ENotSupportedException when the paths or the opened scans cannot answer a condition.
Search::TAdaptedExpression ExpressionOf(const TCommandLineState& pState);

// What is wrong with the requested search, one message each, for users. Empty without a search.
std::vector<std::string> SearchErrors(const TCommandLineState& pState);

}  // namespace Vantrel::CommandLine

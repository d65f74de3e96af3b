#include "automation/commandline/SearchRequest.h"

#include <algorithm>

#include "automation/commandline/CommandLineHandler.h"
#include "platform/text/Text.h"
#include "search/files/FileFactsReader.h"
#include "search/query/Parser.h"

namespace Vantrel::CommandLine {

using Search::TFileFactsReader;

Search::TAdaptedExpression ExpressionOf(const TCommandLineState& pState) {
  Search::TSearchAbilities abilities = Search::kAllSearchAbilities;
  if (!pState.fPaths.empty()) abilities &= TFileFactsReader::kOfStorage;
  if (!pState.fOpenFiles.empty()) abilities &= TFileFactsReader::kOfTree;
  return AdaptExpression(Search::TDSMExpressionParser().Parse(pState.fQuery.value_or(u"")), abilities);
}

namespace {

// What of the command line belongs to scans only.
std::vector<std::string> NotForSearches(const TCommandLineState& pState) {
  std::vector<std::string> switches;
  const auto isXML = [](const TExportRequest& pRequest) { return pRequest.fFormat == TExportFormat::efXML; };
  if (std::any_of(pState.fExports.begin(), pState.fExports.end(), isXML)) switches.emplace_back("--xml");
  if (!pState.fCompareFile.empty()) switches.emplace_back("--compare");
  if (!pState.fPictures.empty()) switches.emplace_back("a picture");
  if (!pState.fMailTo.empty()) switches.emplace_back("--email");
  if (pState.HasHistoryTasks()) switches.emplace_back("--history");
  return switches;
}

}  // namespace

std::vector<std::string> SearchErrors(const TCommandLineState& pState) {
  std::vector<std::string> errors;
  if (!pState.fQuery) return errors;
  for (const std::string& item : NotForSearches(pState))
    errors.push_back("A search finds files and makes no scan: " + item + " does not go with --search");
  if (NumberOfScans(pState) == 0 && !pState.OpensWindow())
    errors.emplace_back("Nothing to search was given: name a path, or a scan file with --open");
  try {
    ExpressionOf(pState);
  } catch (const Search::EQueryError& error) {
    errors.push_back(DescribeQueryError(*pState.fQuery, error));
  } catch (const Search::ENotSupportedException& error) {
    const bool isOpened = !pState.fOpenFiles.empty();
    errors.push_back(std::string(error.what()) +
                     (isOpened ? ". A scan file does not hold what it asks for; search the path itself" : ""));
  }
  return errors;
}

}  // namespace Vantrel::CommandLine

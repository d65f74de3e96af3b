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
  Search::TQuerySettings settings;
  settings.fNormalizesUnicode = pState.fOptions->NormalizeUnicode;
  return AdaptExpression(Search::TDSMExpressionParser(settings).Parse(pState.fQuery.value_or(u"")), abilities);
}

Search::TDuplicatesCompareTypes TDuplicatesRequest::CompareTypes() const {
  using enum Search::TDuplicatesCompareType;
  Search::TDuplicatesCompareTypes types;
  if (fByName) types.push_back(ctName);
  if (fBySize) types.push_back(ctSize);
  if (fByDate) types.push_back(ctLastChange);
  if (fByContents || types.empty()) types.push_back(fContents);
  return types;
}

namespace {

// What of the command line belongs to scans only.
std::vector<std::string> NotForSearches(const TCommandLineState& pState) {
  std::vector<std::string> switches;
  const auto writes = [&](TExportFormat pFormat) {
    return std::any_of(pState.fExports.begin(), pState.fExports.end(),
                       [pFormat](const TExportRequest& pRequest) { return pRequest.fFormat == pFormat; });
  };
  if (writes(TExportFormat::efXML)) switches.emplace_back("--xml");
  if (writes(TExportFormat::efNcdu)) switches.emplace_back("--ncdu");
  if (!pState.fCompareFile.empty()) switches.emplace_back("--compare");
  if (!pState.fPictures.empty()) switches.emplace_back("a picture");
  if (!pState.fMailTo.empty()) switches.emplace_back("--email");
  if (pState.HasHistoryTasks()) switches.emplace_back("--history");
  return switches;
}

// What is wrong with a search for duplicates.
std::vector<std::string> DuplicatesErrors(const TCommandLineState& pState) {
  std::vector<std::string> errors;
  const TDuplicatesRequest& request = pState.fDuplicates;
  if (!request.fIsWanted) {
    if (!request.fDetail.empty()) errors.push_back(request.fDetail + " is for duplicates: search with --duplicates");
    return errors;
  }
  if (!pState.fOpenFiles.empty())
    errors.emplace_back("A scan file holds no contents to compare: --open does not go with --duplicates");
  const bool readsContents = Search::ComparesContents(request.CompareTypes());
  if (request.fVerify && !readsContents)
    errors.emplace_back("--verify compares contents: name them with --duplicateby, or leave that out");
  if (request.fMode != Search::TDuplicatesSearchMode::DuplicateFolders) return errors;
  if (pState.fQuery)
    errors.emplace_back(
        "Folders are compared with all that is in them: --search does not go with --duplicates folders");
  if (request.fByDate || !readsContents)
    errors.emplace_back(
        "Folders are equal by the names and contents in them. --duplicateby name,contents compares their own names as "
        "well");
  return errors;
}

}  // namespace

std::vector<std::string> SearchErrors(const TCommandLineState& pState) {
  std::vector<std::string> errors = DuplicatesErrors(pState);
  if (!pState.fKeptName.empty() && !pState.fQuery)
    errors.push_back("--keepsearch keeps a query: name it with --search");
  if (!pState.IsSearch()) return errors;
  const std::string asked = pState.fDuplicates.fIsWanted ? "--duplicates" : "--search";
  for (const std::string& item : NotForSearches(pState))
    errors.push_back("A search finds files and makes no scan: " + item + " does not go with " + asked);
  const bool needsPath = pState.fDuplicates.fIsWanted || (pState.fKeptName.empty() && !pState.OpensWindow());
  if (NumberOfScans(pState) == 0 && needsPath)
    errors.emplace_back("Nothing to search was given: name a path, or a scan file with --open");
  try {
    ExpressionOf(pState);
  } catch (const Search::EQueryError& error) {
    errors.push_back(DescribeQueryError(pState.fQuery.value_or(u""), error));
  } catch (const Search::ENotSupportedException& error) {
    const bool isOpened = !pState.fOpenFiles.empty();
    errors.push_back(std::string(error.what()) +
                     (isOpened ? ". A scan file does not hold what it asks for; search the path itself" : ""));
  }
  return errors;
}

}  // namespace Vantrel::CommandLine

#include "automation/commandline/KeptSearches.h"

#include <fmt/format.h>

#include <algorithm>

#include "export/xml/OptionsFile.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "search/files/ReadySearches.h"

namespace Vantrel::CommandLine {

namespace {

template <class TOptions>
auto Find(TOptions& pOptions, std::u16string_view pName) {
  return std::find_if(pOptions.KeptSearches.begin(), pOptions.KeptSearches.end(),
                      [&](const auto& pSearch) { return SameTextAscii(pSearch.first, pName); });
}

}  // namespace

const std::u16string* FindKeptSearch(const TGlobalOptions& pOptions, std::u16string_view pName) {
  const auto found = Find(pOptions, pName);
  return found == pOptions.KeptSearches.end() ? nullptr : &found->second;
}

void ChangeKeptSearches(const TCommandLineState& pState, TGlobalOptions& pOptions) {
  for (const std::u16string& name : pState.fForgottenSearches) {
    const auto found = Find(pOptions, name);
    if (found == pOptions.KeptSearches.end())
      throw EInvalidArgumentValue("No search named " + ToQuotedDisplay(name) + " is kept");
    pOptions.KeptSearches.erase(found);
  }
  if (pState.fKeptName.empty()) return;
  if (const auto found = Find(pOptions, pState.fKeptName); found != pOptions.KeptSearches.end())
    pOptions.KeptSearches.erase(found);
  pOptions.KeptSearches.emplace(pState.fKeptName, *pState.fQuery);
}

void ChangeKeptSearches(const TCommandLineState& pState, const std::u16string& pFile, std::string_view pProgramName,
                        std::string_view pVersion) {
  TGlobalOptions options;
  try {
    Options::LoadOptionsFile(pFile, options);
  } catch (const Options::EOptionsFileError& error) {
    if (!error.IsMissing()) throw;
  }
  ChangeKeptSearches(pState, options);
  Options::SaveOptionsFile(pFile, options, pProgramName, pVersion);
}

std::vector<std::string> SearchLines(const TGlobalOptions& pOptions) {
  std::vector<std::string> lines;
  const auto add = [&](std::u16string_view pName, std::u16string_view pQuery) {
    constexpr int kColumn = 20;
    const std::string name = ToDisplay(pName);
    const int blanks = std::max(1, kColumn - DisplayWidth(name));
    lines.push_back(name + std::string(static_cast<size_t>(blanks), ' ') + ToDisplay(pQuery));
  };
  for (const auto& [name, query] : pOptions.KeptSearches) add(name, query);
  for (const Search::TReadySearch& ready : Search::ReadySearches()) add(ready.fName, ready.fQuery);
  return lines;
}

}  // namespace Vantrel::CommandLine

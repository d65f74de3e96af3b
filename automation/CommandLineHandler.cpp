#include "automation/CommandLineHandler.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/ExitCodes.h"
#include "export/XMLReader.h"
#include "platform/Text.h"

namespace Vantrel::CommandLine {

using Kiv::ToDisplay;
using Kiv::TValueKind;

namespace {

std::u16string Folded(std::u16string_view pText) {
  std::u16string folded(pText);
  for (char16_t& character : folded) character = Kiv::FoldAscii(character);
  return folded;
}

// Insertions, deletions, replacements and swaps of neighbours that turn one text into the other.
size_t EditDistance(std::u16string_view pA, std::u16string_view pB) {
  std::vector<std::vector<size_t>> cost(pA.size() + 1, std::vector<size_t>(pB.size() + 1));
  for (size_t i = 0; i <= pA.size(); ++i) {
    for (size_t j = 0; j <= pB.size(); ++j) {
      if (i == 0 || j == 0) {
        cost[i][j] = i + j;
        continue;
      }
      const size_t replaced = cost[i - 1][j - 1] + (pA[i - 1] == pB[j - 1] ? 0 : 1);
      cost[i][j] = std::min({replaced, cost[i - 1][j] + 1, cost[i][j - 1] + 1});
      if (i > 1 && j > 1 && pA[i - 1] == pB[j - 2] && pA[i - 2] == pB[j - 1])
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
    }
  }
  return cost[pA.size()][pB.size()];
}

}  // namespace

TCommandLineHandler::TCommandLineHandler(Kiv::TKivCommandLineParser& pParser, Kiv::TGlobalOptions& pOptions)
    : fParser(pParser), fOptions(pOptions) {
  for (const TSwitch& item : AllSwitches()) {
    if (SwitchOf(fParser.FindRegistered(std::u16string(u"/").append(item.fItem.fName))) == nullptr)
      fParser.RegisterCmdLineSwitch(item.fItem);
  }
}

void TCommandLineHandler::Reset() {
  fState = {};
  fSeen.clear();
  fErrors.clear();
}

void TCommandLineHandler::HandleCommandLineSwitches(TTokens pTokens) {
  Reset();
  for (size_t i = 0; i < pTokens.size();) {
    const std::u16string& token = pTokens[i];
    if (token == u"--") {  // paths from here on, whatever they begin with
      fState.fPaths.insert(fState.fPaths.end(), pTokens.begin() + static_cast<ptrdiff_t>(i) + 1, pTokens.end());
      return;
    }
    if (!fParser.IsSwitch(token)) {
      if (token.empty()) {
        fErrors.push_back("An empty path was given");
      } else {
        fState.fPaths.push_back(token);
      }
      ++i;
    } else if (const TSwitch* known = SwitchOf(fParser.FindRegistered(token))) {
      i += HandleSwitch(*known, pTokens, i);
    } else {
      i += HandleOption(pTokens, i);
    }
  }
}

// Returns the number of tokens that the switch and its values took.
size_t TCommandLineHandler::HandleSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex) {
  const Kiv::TSplitToken split = Kiv::SplitSwitchValue(pTokens[pIndex]);
  const std::string shown = ToDisplay(split.fSwitch);
  const bool seen = std::find(fSeen.begin(), fSeen.end(), &pSwitch) != fSeen.end();
  fSeen.push_back(&pSwitch);
  if (seen && !pSwitch.fItem.fRepeatable) {
    fErrors.push_back("The command line option " + shown +
                      " is allowed only once. You may however specify multiple values separated by semicolon.");
  }
  const TValueKind kind = pSwitch.fItem.fValueKind;
  if (split.fHasValue && kind == TValueKind::vkNone) {
    fErrors.push_back("The command line option " + shown + " takes no value");
    return 1;
  }
  std::vector<std::u16string> values;
  size_t next = pIndex + 1;
  if (split.fHasValue) {
    values.emplace_back(split.fValue);
  } else if (kind != TValueKind::vkNone) {
    const size_t most = kind == TValueKind::vkPaths ? pTokens.size() : 1;
    while (next < pTokens.size() && values.size() < most && fParser.IsValueOfKind(pTokens[next], kind))
      values.push_back(pTokens[next++]);
  }
  const size_t pathsBefore = fState.fPaths.size();
  for (const std::u16string& value : values) ApplyValue(pSwitch, shown, value);
  if (values.empty() && !pSwitch.fExpected.empty()) {
    fErrors.push_back(fmt::format("{} was expected after the command line parameter {}", pSwitch.fExpected, shown));
  } else if (kind == TValueKind::vkPaths) {
    // "/SCAN -- PATH" is fine: what follows is taken as paths anyhow.
    const bool pathsFollow = next + 1 < pTokens.size() && pTokens[next] == u"--";
    if (fState.fPaths.size() == pathsBefore && !pathsFollow)
      fErrors.push_back("A path was expected after the command line parameter " + shown);
  } else if (values.empty()) {
    pSwitch.fApply(fState, {});
  }
  return next - pIndex;
}

void TCommandLineHandler::ApplyValue(const TSwitch& pSwitch, const std::string& pShown, const std::u16string& pValue) {
  try {
    pSwitch.fApply(fState, pValue);
  } catch (const Kiv::EInvalidArgumentValue& error) {
    fErrors.push_back(pShown + " " + error.what());
  }
}

size_t TCommandLineHandler::HandleOption(TTokens pTokens, size_t pIndex) {
  std::string error;
  const size_t consumed = fParser.TryApplyCommandLineOptionToGlobalOptions(pTokens, pIndex, fOptions, error);
  if (consumed > 0) return consumed;
  const std::u16string_view token = Kiv::SplitSwitchValue(pTokens[pIndex]).fSwitch;
  const bool isOption =
      Kiv::FindOption(Kiv::ToUtf8(Kiv::TKivCommandLineParser::RemoveSwitchIndicator(token))) != nullptr;
  fErrors.push_back(isOption ? error : error + SuggestionFor(token));
  // A refused value is not taken for a path as well.
  const bool hasValue = isOption && pIndex + 1 < pTokens.size() && fParser.IsValue(pTokens[pIndex + 1]) &&
                        !Kiv::SplitSwitchValue(pTokens[pIndex]).fHasValue;
  return hasValue ? 2 : 1;
}

// The nearest switch or option, when it is near enough to have been meant.
std::string TCommandLineHandler::SuggestionFor(std::u16string_view pToken) const {
  const std::u16string_view name = Kiv::TKivCommandLineParser::RemoveSwitchIndicator(pToken);
  constexpr size_t kLongestName = 64;  // whatever is longer is a text that went astray
  const std::u16string typed = Folded(name.substr(0, kLongestName));
  std::u16string best;
  size_t bestDistance = std::max<size_t>(1, typed.size() / 3) + 1;
  auto consider = [&](std::u16string_view pCandidate) {
    const size_t distance = EditDistance(typed, Folded(pCandidate));
    if (distance >= bestDistance || distance >= pCandidate.size()) return;
    bestDistance = distance;
    best = pCandidate;
  };
  for (const Kiv::TCommandLineItem& item : fParser.RegisteredSwitches()) consider(item.fName);
  for (const Kiv::TOptionInfo& option : Kiv::AllOptions()) consider(Kiv::FromUtf8(option.fName));
  if (best.empty()) return {};
  const std::u16string_view indicator = pToken.substr(0, pToken.size() - name.size());
  return ". Did you mean " + ToDisplay(std::u16string(indicator) + best) + "?";
}

void TCommandLineHandler::FinalizeCommandLineOptions() {
  const bool namesNothing = fState.fPaths.empty() && fState.fOpenFiles.empty();
  size_t scans = fState.fPaths.size();
  for (const std::u16string& files : fState.fOpenFiles) scans += XML::Parser::SplitFileNames(files).size();
  if (scans > 1 && !fState.fXMLFile.empty())
    fErrors.push_back("Several scans cannot go into one XML file. Run Vantrel for each of them.");
  if (scans > 1 && !fState.fCompareFile.empty())
    fErrors.push_back("Several scans cannot be compared with one file. Run Vantrel for each of them.");
  if (fErrors.empty() && namesNothing && !fState.fHelp && !fState.fVersion) {
    fErrors.push_back(
        fState.fUnattended
            ? "No valid command line option was passed in non-UI mode. Please see help file for a list of "
              "available command line options."
            : "No path to scan was given");
  }
  if (fState.fHelp && !fState.fHelpTopic.empty() && !Kiv::SameTextAscii(fState.fHelpTopic, u"options"))
    fErrors.push_back("There is no help on " + ToDisplay(fState.fHelpTopic) + ", only on \"options\"");
  if (fErrors.empty()) return;
  std::string message;
  for (const std::string& error : fErrors) message.append(message.empty() ? "" : "\r\n").append(error);
  throw Kiv::ECommandLineParserCriticalException(message, ecWrongCommandLine);
}

}  // namespace Vantrel::CommandLine

#include "automation/commandline/CommandLineHandler.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/actions/ExportFile.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/HelpText.h"
#include "export/xml/OptionsFile.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/system/FileTime.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

std::u16string Folded(std::u16string_view pText) {
  std::u16string folded(pText);
  for (char16_t& character : folded) character = Vantrel::FoldAscii(character);
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

size_t NumberOfScans(const TCommandLineState& pState) {
  return pState.fPaths.size() + pState.fOpenFiles.size();
}

TCommandLineHandler::TCommandLineHandler(Vantrel::TKivCommandLineParser& pParser, Vantrel::TGlobalOptions& pOptions,
                                         std::u16string pUserOptionsFile)
    : fParser(pParser), fOptions(pOptions), fUserOptionsFile(std::move(pUserOptionsFile)) {
  for (const TSwitch& item : AllSwitches()) {
    if (SwitchOf(fParser.FindRegistered(std::u16string(u"/").append(item.fItem.fName))) == nullptr)
      fParser.RegisterCmdLineSwitch(item.fItem);
  }
  Reset();
}

void TCommandLineHandler::Reset() {
  fState = {};
  fState.fOptions = &fOptions;
  fSeen.clear();
  fErrors.clear();
  fHelpText.clear();
  fUserOptionsError.clear();
}

void TCommandLineHandler::HandleCommandLineSwitches(TTokens pTokens) {
  Reset();
  const TTokens switches =
      pTokens.first(static_cast<size_t>(std::find(pTokens.begin(), pTokens.end(), u"--") - pTokens.begin()));
  fIsMailed = fParser.FindSwitch(u"EMAIL", switches) || !fParser.FindPathsAfterSwitch(u"EMAIL", switches).empty();
  LoadOptionsFiles(switches);
  for (size_t i = 0; i < pTokens.size();) {
    const std::u16string& token = pTokens[i];
    if (token == u"--") {  // paths from here on, whatever they begin with
      fState.fPaths.insert(fState.fPaths.end(), pTokens.begin() + static_cast<ptrdiff_t>(i) + 1, pTokens.end());
      return;
    }
    if (fParser.IsIgnored(token)) {
      i += i + 1 < pTokens.size() && fParser.IsValue(pTokens[i + 1]) ? 2 : 1;
    } else if (!fParser.IsSwitch(token)) {
      if (token.empty()) {
        fErrors.push_back("An empty path was given");
      } else if (IsMistypedSwitch(token)) {
        fErrors.push_back("Unknown Command line option: " + ToDisplay(token) + SuggestionFor(token));
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

// Before everything else, wherever they stand: what the command line sets goes first.
void TCommandLineHandler::LoadOptionsFiles(TTokens pTokens) {
  if (!fUserOptionsFile.empty() && !fParser.FindSwitch(u"NOOPTIONS", pTokens)) LoadOptionsFile(fUserOptionsFile, true);
  for (const std::u16string& file : fParser.FindPathsAfterSwitch(u"OPTIONS", pTokens))
    if (!file.empty()) LoadOptionsFile(file, false);
}

void TCommandLineHandler::LoadOptionsFile(const std::u16string& pFile, bool pIsUsersOwn) {
  try {
    const std::vector<std::string> skipped = Vantrel::Options::LoadOptionsFile(pFile, fOptions).fSkipped;
    constexpr size_t kMostTold = 20;
    for (size_t i = 0; i < std::min(skipped.size(), kMostTold); ++i)
      fState.fWarnings.push_back(Vantrel::ToQuotedDisplay(pFile) + ", " + skipped[i]);
    if (skipped.size() > kMostTold)
      fState.fWarnings.push_back(
          fmt::format("{}: {} more were skipped", Vantrel::ToQuotedDisplay(pFile), skipped.size() - kMostTold));
  } catch (const Vantrel::Options::EOptionsFileError& error) {
    // In a home that this user may not look into, as under sudo -u, there are no options of this user's.
    if (pIsUsersOwn && !error.IsMissing() && Vantrel::PathExists(pFile)) fUserOptionsError = error.what();
    if (!pIsUsersOwn) fErrors.emplace_back(error.what());
  }
}

// Returns the number of tokens that the switch and its values took.
size_t TCommandLineHandler::HandleSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex) {
  const Vantrel::TSplitToken split = Vantrel::SplitSwitchValue(pTokens[pIndex]);
  const std::string shown = ToDisplay(split.fSwitch);
  const TSwitch* main = &MainSwitchOf(pSwitch);
  const bool seen = std::find(fSeen.begin(), fSeen.end(), main) != fSeen.end();
  fSeen.push_back(main);
  if (seen && !pSwitch.fItem.fRepeatable) {
    fErrors.push_back("The command line option " + shown +
                      " is allowed only once. You may however specify multiple values separated by semicolon.");
  }
  const TValueKind kind = pSwitch.fItem.fValueKind;
  if (kind == TValueKind::vkFile || kind == TValueKind::vkOptionalFile)
    return HandleFileSwitch(pSwitch, pTokens, pIndex);
  if (split.fHasValue && kind == TValueKind::vkNone) {
    fErrors.push_back("The command line option " + shown + " takes no value");
    return 1;
  }
  if (split.fHasValue && kind == TValueKind::vkOptionalBoolean && !fParser.IsValueOfKind(split.fValue, kind)) {
    fErrors.push_back(
        fmt::format("{}: {} is not allowed; expected true|false", shown, Vantrel::ToQuotedDisplay(split.fValue)));
    return 1;
  }
  size_t next = pIndex + 1;
  std::vector<std::u16string> values;
  if (split.fHasValue)
    values.emplace_back(split.fValue);
  else
    values = TakeValues(pSwitch, pTokens, next);
  if (kind == TValueKind::vkPath) std::erase(values, std::u16string());  // an empty variable of a script
  if (pSwitch.fApply == nullptr) {
    fErrors.push_back(fmt::format("{}: {}", shown, pSwitch.fHelp));
    return next - pIndex;
  }
  // "/SCAN -- PATH" is fine: what follows is taken as paths anyhow.
  const bool pathsFollow =
      kind == TValueKind::vkPaths && next + 1 < pTokens.size() && pTokens[next] == u"--" && values.empty();
  if (!pathsFollow) ApplyValues(pSwitch, shown, values);
  return next - pIndex;
}

std::vector<std::u16string> TCommandLineHandler::TakeValues(const TSwitch& pSwitch, TTokens pTokens,
                                                            size_t& pNext) const {
  const TValueKind kind = pSwitch.fItem.fValueKind;
  const size_t most = kind == TValueKind::vkPaths || kind == TValueKind::vkAnything ? pTokens.size() : 1;
  std::vector<std::u16string> values;
  while (pNext < pTokens.size() && values.size() < most && fParser.IsValueOfKind(pTokens[pNext], kind))
    values.push_back(Vantrel::TKivCommandLineParser::Dequoted(pTokens[pNext++]));
  return values;
}

void TCommandLineHandler::ApplyValues(const TSwitch& pSwitch, const std::string& pShown,
                                      std::span<const std::u16string> pValues) {
  const size_t pathsBefore = fState.fPaths.size();
  for (const std::u16string& value : pValues) ApplyValue(pSwitch, pShown, value);
  const bool isMissing =
      pSwitch.fItem.fValueKind == TValueKind::vkPaths ? fState.fPaths.size() == pathsBefore : pValues.empty();
  if (!isMissing) return;
  if (pSwitch.fExpected.empty())
    ApplyValue(pSwitch, pShown, {});
  else
    fErrors.push_back(fmt::format("{} was expected after the command line parameter {}", pSwitch.fExpected, pShown));
}

void TCommandLineHandler::ApplyValue(const TSwitch& pSwitch, const std::string& pShown, const std::u16string& pValue) {
  try {
    pSwitch.fApply(fState, pValue);
  } catch (const Vantrel::EException& error) {
    fErrors.push_back(pShown + " " + error.what());
  }
}

// --- files to write ------------------------------------------------------------------------------------------------

bool TCommandLineHandler::IsFileName(const std::u16string& pToken) const {
  constexpr char16_t kAnyDelimiter = u'\\';
  return !pToken.empty() && !fParser.IsSwitch(pToken) && pToken != u"--" && !pToken.ends_with(kAnyDelimiter) &&
         !pToken.ends_with(u'/') && !Vantrel::FolderExists(pToken);
}

bool TCommandLineHandler::CheckFileName(const std::string& pShown, const std::u16string* pToken) {
  if (pToken != nullptr && IsFileName(*pToken)) return true;
  fErrors.push_back(fmt::format("A file path was expected after the command line parameter {}, but found: {}", pShown,
                                pToken == nullptr ? "" : ToDisplay(*pToken)));
  return false;
}

size_t TCommandLineHandler::HandleFileSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex) {
  const Vantrel::TSplitToken split = Vantrel::SplitSwitchValue(pTokens[pIndex]);
  const std::string shown = ToDisplay(split.fSwitch);
  if (split.fHasValue) {
    const std::u16string file(split.fValue);
    if (CheckFileName(shown, &file)) ApplyValue(pSwitch, shown, file);
    return 1;
  }
  const bool hasNext = pIndex + 1 < pTokens.size();
  const bool isSwitch = hasNext && (fParser.IsSwitch(pTokens[pIndex + 1]) || pTokens[pIndex + 1] == u"--");
  // Then a folder behind the switch is a path to scan.
  const bool mayBeMissing = pSwitch.fItem.fValueKind == TValueKind::vkOptionalFile || fIsMailed;
  if (mayBeMissing && (!hasNext || !IsFileName(pTokens[pIndex + 1]))) {
    ApplyValue(pSwitch, shown, {});
    return 1;
  }
  if (CheckFileName(shown, hasNext ? &pTokens[pIndex + 1] : nullptr))
    ApplyValue(pSwitch, shown, Vantrel::TKivCommandLineParser::Dequoted(pTokens[pIndex + 1]));
  return hasNext && !isSwitch ? 2 : 1;
}

// --- options -------------------------------------------------------------------------------------------------------

size_t TCommandLineHandler::HandleOption(TTokens pTokens, size_t pIndex) {
  std::string error;
  const size_t consumed = fParser.TryApplyCommandLineOptionToGlobalOptions(pTokens, pIndex, fOptions, error);
  if (consumed > 0) return consumed;
  const std::u16string_view token = Vantrel::SplitSwitchValue(pTokens[pIndex]).fSwitch;
  const bool isOption =
      Vantrel::FindOption(Vantrel::ToUtf8(Vantrel::TKivCommandLineParser::RemoveSwitchIndicator(token))) != nullptr;
  fErrors.push_back(isOption ? error : error + SuggestionFor(token));
  // A refused value is not taken for a path as well.
  const bool hasValue = isOption && pIndex + 1 < pTokens.size() && fParser.IsValue(pTokens[pIndex + 1]) &&
                        !Vantrel::SplitSwitchValue(pTokens[pIndex]).fHasValue;
  return hasValue ? 2 : 1;
}

// "/EXEL" where "/" begins paths as well: one that is not there, and nearly a switch. In capitals only: a "/data" that
// is missing is not taken for "/DATE".
bool TCommandLineHandler::IsMistypedSwitch(const std::u16string& pToken) const {
  const bool hasLowerCase =
      std::any_of(pToken.begin(), pToken.end(), [](char16_t c) { return c >= u'a' && c <= u'z'; });
  return pToken.starts_with(u'/') && !hasLowerCase && !SuggestionFor(pToken).empty() && !Vantrel::PathExists(pToken);
}

// The nearest switch or option, when it is near enough to have been meant.
std::string TCommandLineHandler::SuggestionFor(std::u16string_view pToken) const {
  // "/CSV=file": with two dashes it would be right.
  const std::u16string_view front = Vantrel::WithoutJoinedValue(pToken);
  const bool isJoined = front.size() < pToken.size() && fParser.NamesKnown(front);
  const std::u16string_view name = Vantrel::TKivCommandLineParser::RemoveSwitchIndicator(isJoined ? front : pToken);
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
  for (const Vantrel::TCommandLineItem& item : fParser.RegisteredSwitches()) consider(item.fName);
  for (const Vantrel::TOptionInfo& option : Vantrel::AllOptions()) consider(Vantrel::FromUtf8(option.fName));
  if (best.empty()) return {};
  const std::u16string_view indicator = isJoined ? u"--" : pToken.substr(0, pToken.size() - name.size());
  return ". Did you mean " + ToDisplay(std::u16string(indicator) + best) + (isJoined ? "=?" : "?");
}

// --- the whole -----------------------------------------------------------------------------------------------------

void TCommandLineHandler::FinalizeCommandLineOptions() {
  CheckHistory();
  CheckScans();
  FinalizeExports();
  if (fState.fHelp && !TryFindHelp(fState.fHelpTopic, fHelpText))
    fErrors.push_back("There is no help on " + ToDisplay(fState.fHelpTopic) +
                      "; try \"--help switches\" or \"--help options\"");
  if (fState.fReadOnly && fState.fSaveSettings)
    fErrors.push_back("/SAVESETTINGS is not allowed together with /READONLY or /RESTRICTED");
  if (fState.fSaveSettings && fUserOptionsFile.empty())
    fErrors.push_back("The system tells no place for settings: set HOME, or leave out /SAVESETTINGS");
  // Who asks for help gets it all the same.
  if (!fUserOptionsError.empty() && !fState.fHelp && !fState.fVersion)
    fErrors.push_back(fUserOptionsError + ". /NOOPTIONS leaves it out");
  if (fState.fForgetSettings) fState.fSaveSettings = false;
  if (fErrors.empty()) return;
  std::string message;
  for (const std::string& error : fErrors) message.append(message.empty() ? "" : "\r\n").append(error);
  throw Vantrel::ECommandLineParserCriticalException(message, ecWrongCommandLine);
}

void TCommandLineHandler::CheckHistory() {
  // Kept in the settings, it is to be the same file from wherever the program is started.
  if (!fOptions.HistoryFile.empty()) fOptions.HistoryFile = Vantrel::ToNativeBytes(HistoryFile(fOptions));
  if ((fOptions.RecordHistory || fState.HasHistoryTasks()) && HistoryFile(fOptions).empty())
    fErrors.push_back("The system tells no place for the history: set HOME, or name a file with --HistoryFile");
  if (!fState.fHistoryCSV.empty() && fState.fHistoryPaths.empty())
    fErrors.push_back("--history-csv writes the history that --history names: name a path with it");
}

void TCommandLineHandler::CheckScans() {
  const auto isPathList = [](const TExportRequest& pRequest) { return pRequest.fFormat == TExportFormat::efPathList; };
  if (fState.fPathsEndWithNul && std::none_of(fState.fExports.begin(), fState.fExports.end(), isPathList))
    fErrors.push_back("--null is for path lists: write one with --pathlist");
  const size_t scans = NumberOfScans(fState);
  if (scans > 1 && !fState.fCompareFile.empty())
    fErrors.push_back("Several scans cannot be compared with one file. Run Vantrel for each of them.");
  const bool hasTask = scans > 0 || fState.fHelp || fState.fVersion || fState.fExportDriveList ||
                       fState.fSaveSettings || fState.HasHistoryTasks();
  if (hasTask || !fErrors.empty()) return;
  fErrors.push_back(fState.fUnattended ? "No valid command line option was passed in non-UI mode. Please see help file "
                                         "for a list of available command line options."
                                       : "No path to scan was given");
}

void TCommandLineHandler::FinalizeExports() {
  const char16_t delimiter = Vantrel::NativePathDelimiter();
  const std::u16string date = u"_" + Vantrel::CurrentDateText();
  auto finalize = [&](std::u16string& pFile) {
    if (pFile.empty() || pFile == u"-") return;
    pFile = Vantrel::AbsolutePath(pFile);
    if (fState.fDateInFileNames) pFile = Vantrel::PostScanActions::WithPartInName(pFile, date);
  };
  finalize(fState.fDriveListFile);
  finalize(fState.fHistoryCSV);
  finalize(fState.fHistoryExport);
  std::vector<std::u16string> files;
  auto reserve = [&](const std::u16string& pFile) {
    if (pFile.empty()) return;
    const bool known = std::any_of(files.begin(), files.end(), [&](const std::u16string& pOther) {
      return Vantrel::SamePath(pOther, pFile, delimiter);
    });
    if (known) fErrors.push_back("Two exports would go into the same file: " + Vantrel::ToQuotedDisplay(pFile));
    files.push_back(pFile);
  };
  for (const std::u16string* file : {&fState.fDriveListFile, &fState.fHistoryCSV, &fState.fHistoryExport})
    reserve(*file);
  for (TExportRequest& request : fState.fExports) {
    finalize(request.fFile);
    reserve(request.fFile);
  }
  // Of several scans, each one's lists have its name in theirs.
  if (NumberOfScans(fState) > 1) return;
  for (const TExportRequest& request : fState.fExports)
    for (const std::u16string& file : Vantrel::PostScanActions::ListFiles(request.fFormat, request.fFile, fOptions))
      reserve(file);
}

int TCommandLineHandler::ProcessCommandlineTasks(ICommandLineTasks& pTasks) {
  if (fState.fHelp) return pTasks.ShowHelp(fHelpText);
  if (fState.fVersion) return pTasks.ShowVersion();
  int result = ecOk;
  if (fState.fSaveSettings) result = pTasks.SaveSettings();
  if (result == ecOk && fState.fExportDriveList) result = pTasks.ExportDriveList(fState.fDriveListFile);
  if (result == ecOk && (!fState.fPaths.empty() || !fState.fOpenFiles.empty())) result = pTasks.OpenAndScan();
  // The scan just made is part of the history that is shown.
  if (fState.HasHistoryTasks() && result != ecCancelled) result = std::max(result, pTasks.ManageHistory());
  return result;
}

}  // namespace Vantrel::CommandLine

#include "automation/commandline/CommandLineHandler.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/actions/ExportFile.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/commandline/ExitCodes.h"
#include "automation/commandline/HelpText.h"
#include "automation/commandline/RunFiles.h"
#include "automation/commandline/SearchRequest.h"
#include "automation/commandline/Suggestions.h"
#include "automation/commandline/SwitchEffects.h"
#include "export/xml/OptionsFile.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/system/FileTime.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

// "-xd" as "-x", "-d", and "-xd2" as "-x", "-d2": one-letter switches, of which only the last may take a value. Empty
// for any other token.
std::vector<std::u16string> LettersApart(const Vantrel::TKivCommandLineParser& pParser, std::u16string_view pToken) {
  std::vector<std::u16string> letters;
  if (!pToken.starts_with(u'-') || pToken.starts_with(u"--")) return letters;
  for (size_t i = 1; i < pToken.size(); ++i) {
    letters.push_back({u'-', pToken[i]});
    const Vantrel::TCommandLineItem* item = pParser.FindRegistered(letters.back());
    if (item == nullptr) return {};
    if (item->fValueKind == TValueKind::vkNone) continue;
    const std::u16string_view rest = pToken.substr(i + 1);
    if (rest.find_first_not_of(u"0123456789") != rest.npos) return {};
    letters.back() += rest;
    break;
  }
  return letters;
}

}  // namespace

bool TCommandLineState::NeedsFonts() const {
  return std::any_of(fPictures.begin(), fPictures.end(),
                     [](const TPictureRequest& pRequest) { return HasExtension(pRequest.fFile, u".png"); });
}

size_t NumberOfScans(const TCommandLineState& pState) {
  return pState.fPaths.size() + pState.fOpenFiles.size();
}

TCommandLineHandler::TCommandLineHandler(Vantrel::TKivCommandLineParser& pParser, Vantrel::TGlobalOptions& pOptions,
                                         std::u16string pUserOptionsFile, TProgramAbilities pAbilities)
    : fParser(pParser), fOptions(pOptions), fUserOptionsFile(std::move(pUserOptionsFile)), fAbilities(pAbilities) {
  for (const TSwitch& item : AllSwitches()) {
    if (SwitchOf(fParser.FindRegistered(std::u16string(u"/").append(item.fItem.fName))) == nullptr)
      fParser.RegisterCmdLineSwitch(item.fItem);
  }
  Reset();
}

void TCommandLineHandler::Reset() {
  fState = {};
  fState.fOptions = &fOptions;
  fState.fAbilities = fAbilities;
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
  Vantrel::UseAsCommonOptions(fOptions);
  for (size_t i = 0; i < pTokens.size();) {
    const std::u16string& token = pTokens[i];
    if (token == u"--") {  // only paths follow, whatever they begin with
      fState.fPaths.insert(fState.fPaths.end(), pTokens.begin() + static_cast<ptrdiff_t>(i) + 1, pTokens.end());
      return;
    }
    if (fParser.IsIgnored(token)) {
      i += i + 1 < pTokens.size() && fParser.IsValue(pTokens[i + 1]) ? 2 : 1;
    } else if (!fParser.IsSwitch(token)) {
      if (token.empty()) {
        fErrors.push_back("An empty path was given");
      } else if (IsMistypedSwitch(token)) {
        fErrors.push_back("Unknown Command line option: " + ToDisplay(token) + SuggestionFor(fParser, token));
      } else {
        fState.fPaths.push_back(token);
      }
      ++i;
    } else if (const TSwitch* known = SwitchOf(fParser.FindRegistered(token))) {
      i += HandleSwitch(*known, pTokens, i);
    } else if (std::vector<std::u16string> apart = LettersApart(fParser, token); !apart.empty()) {
      i += HandleLetters(std::move(apart), pTokens.subspan(i + 1));
    } else {
      i += HandleOption(pTokens, i);
    }
  }
}

// Loaded before everything else, wherever the switches stand: the command line overrides every options file.
void TCommandLineHandler::LoadOptionsFiles(TTokens pTokens) {
  // The file to be forgotten is not loaded: even a damaged file must be removable.
  constexpr std::u16string_view kLeftOut[] = {u"NOOPTIONS", u"FORGETSETTINGS"};
  if (!fUserOptionsFile.empty() && !fParser.FindSwitches(kLeftOut, pTokens)) LoadOptionsFile(fUserOptionsFile, true);
  fState.fOptionsFiles = fParser.FindPathsAfterSwitch(u"OPTIONS", pTokens);
  for (const std::u16string& file : fState.fOptionsFiles)
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
    // This user may not read the home folder, as under sudo -u. So there are no options of this user.
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
  if (kind == TValueKind::vkPath) std::erase(values, std::u16string());  // from an empty variable of a script
  if (pSwitch.fApply == nullptr) {
    fErrors.push_back(fmt::format("{}: {}", shown, pSwitch.fHelp));
    return next - pIndex;
  }
  // "/SCAN -- PATH" is valid: the tokens after "--" are paths in any case.
  const bool pathsFollow =
      kind == TValueKind::vkPaths && next + 1 < pTokens.size() && pTokens[next] == u"--" && values.empty();
  if (!pathsFollow) ApplyValues(pSwitch, shown, values);
  return next - pIndex;
}

size_t TCommandLineHandler::HandleLetters(std::vector<std::u16string> pLetters, TTokens pFollowing) {
  const size_t letters = pLetters.size();
  pLetters.insert(pLetters.end(), pFollowing.begin(), pFollowing.end());
  size_t taken = 0;
  for (size_t i = 0; i < letters; ++i)
    taken = HandleSwitch(*SwitchOf(fParser.FindRegistered(pLetters[i])), pLetters, i);
  return taken;
}

std::vector<std::u16string> TCommandLineHandler::TakeValues(const TSwitch& pSwitch, TTokens pTokens,
                                                            size_t& pNext) const {
  const TValueKind kind = pSwitch.fItem.fValueKind;
  const size_t most = kind == TValueKind::vkPaths || kind == TValueKind::vkAnything ? pTokens.size() : 1;
  std::vector<std::u16string> values;
  while (pNext < pTokens.size() && values.size() < most && fParser.IsValueOfKind(pTokens[pNext], kind))
    values.push_back(pTokens[pNext++]);
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
  // A folder after the switch is then a path to scan.
  const bool mayBeMissing = pSwitch.fItem.fValueKind == TValueKind::vkOptionalFile || fIsMailed;
  if (mayBeMissing && (!hasNext || !IsFileName(pTokens[pIndex + 1]))) {
    ApplyValue(pSwitch, shown, {});
    return 1;
  }
  if (CheckFileName(shown, hasNext ? &pTokens[pIndex + 1] : nullptr)) ApplyValue(pSwitch, shown, pTokens[pIndex + 1]);
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
  fErrors.push_back(isOption ? error : error + SuggestionFor(fParser, token));
  // A refused value is not also taken as a path.
  const bool hasValue = isOption && pIndex + 1 < pTokens.size() && fParser.IsValue(pTokens[pIndex + 1]) &&
                        !Vantrel::SplitSwitchValue(pTokens[pIndex]).fHasValue;
  return hasValue ? 2 : 1;
}

// Finds a misspelled switch such as "/EXEL" where "/" also begins paths: the path does not exist and is nearly a
// switch. Capitals only, so that a missing "/data" is not taken for "/DATE".
bool TCommandLineHandler::IsMistypedSwitch(const std::u16string& pToken) const {
  const bool hasLowerCase =
      std::any_of(pToken.begin(), pToken.end(), [](char16_t pUnit) { return pUnit >= u'a' && pUnit <= u'z'; });
  return pToken.starts_with(u'/') && !hasLowerCase && !SuggestionFor(fParser, pToken).empty() &&
         !Vantrel::PathExists(pToken);
}

// --- the whole -----------------------------------------------------------------------------------------------------

void TCommandLineHandler::FinalizeCommandLineOptions() {
  // As programs of this kind do. A run without a user names its paths, since no user chose its current folder.
  if (!HasTask() && !fState.fUnattended && fErrors.empty()) fState.fPaths.push_back(u".");
  if (fState.fReverses) ReverseOrders(fOptions);
  fState.fHadOutputs = fState.HasOutputs();
  CheckPictures();
  CheckHistory();
  CheckScans();
  for (std::string& message : SearchErrors(fState)) fErrors.push_back(std::move(message));
  CheckWindow();
  FinalizeExports();
  for (std::string& message : FilesOfRun(fState, fUserOptionsFile).Conflicts()) fErrors.push_back(std::move(message));
  // "-h /data": other programs read sizes for people from that, and take no topic.
  const bool isPath = Vantrel::PathExists(fState.fHelpTopic);
  if (fState.fHelp && !TryFindHelp(fState.fHelpTopic, fHelpText) && !(isPath && TryFindHelp({}, fHelpText)))
    fErrors.push_back("There is no help on " + ToDisplay(fState.fHelpTopic) +
                      "; try \"--help switches\" or \"--help options\"");
  if (fState.fForgetSettings) fState.fSaveSettings = false;
  if (fState.fReadOnly && fState.ChangesSearches())
    fErrors.push_back("Searches cannot be kept or forgotten together with /READONLY or /RESTRICTED");
  if (fState.fReadOnly && (fState.fSaveSettings || fState.fForgetSettings))
    fErrors.push_back(fmt::format("{} is not allowed together with /READONLY or /RESTRICTED",
                                  fState.fForgetSettings ? "/FORGETSETTINGS" : "/SAVESETTINGS"));
  if ((fState.fSaveSettings || fState.ChangesSearches()) && fUserOptionsFile.empty())
    fErrors.push_back("The system tells no place for settings: set HOME, or leave out /SAVESETTINGS");
  // An options file that cannot be loaded does not stop help.
  if (!fUserOptionsError.empty() && !fState.fHelp && !fState.fVersion)
    fErrors.push_back(fUserOptionsError + ". /NOOPTIONS leaves it out");
  CheckSavedName(fOptions.HistoryFile, "the history");
  CheckSavedName(fOptions.ChecksumCache, "the checksum cache");
  if (fErrors.empty()) return;
  std::string message;
  for (const std::string& error : fErrors) message.append(message.empty() ? "" : "\r\n").append(error);
  throw Vantrel::ECommandLineParserCriticalException(message, ecWrongCommandLine);
}

void TCommandLineHandler::CheckSavedName(const std::string& pFile, std::string_view pWhat) {
  if (!fState.fSaveSettings || Vantrel::ToUtf8(Vantrel::FromNativeBytes(pFile)) == pFile) return;
  fErrors.push_back(fmt::format("/SAVESETTINGS keeps text in UTF-8 only, and the name of {} is none: {}", pWhat,
                                Vantrel::ToQuotedDisplay(Vantrel::FromNativeBytes(pFile))));
}

void TCommandLineHandler::CheckHistory() {
  // The path is made absolute, so that saved settings name the same file wherever the program is started.
  if (!fOptions.HistoryFile.empty()) fOptions.HistoryFile = Vantrel::ToNativeBytes(HistoryFile(fOptions));
  if (!fOptions.ChecksumCache.empty())
    fOptions.ChecksumCache =
        Vantrel::ToNativeBytes(Vantrel::AbsolutePath(Vantrel::FromNativeBytes(fOptions.ChecksumCache)));
  if (fState.UsesHistory() && HistoryFile(fOptions).empty())
    fErrors.push_back("The system tells no place for the history: set HOME, or name a file with --HistoryFile");
  for (const auto& [file, name] :
       {std::pair(&fState.fHistoryCSV, "--history-csv"), std::pair(&fState.fHistoryJSON, "--history-json")})
    if (!file->empty() && fState.fHistoryPaths.empty())
      fErrors.push_back(fmt::format("{} writes the history that --history names: name a path with it", name));
}

void TCommandLineHandler::CheckScans() {
  const auto isPathList = [](const TExportRequest& pRequest) { return pRequest.fFormat == TExportFormat::efPathList; };
  if (fState.fPathsEndWithNul && std::none_of(fState.fExports.begin(), fState.fExports.end(), isPathList))
    fErrors.push_back("--null is for path lists: write one with --pathlist");
  const size_t scans = NumberOfScans(fState);
  const auto holdsOne = [](const TExportRequest& pRequest) {
    return pRequest.fFile == u"-" &&
           (pRequest.fFormat == TExportFormat::efXML || pRequest.fFormat == TExportFormat::efNcdu);
  };
  if (scans > 1 && std::any_of(fState.fExports.begin(), fState.fExports.end(), holdsOne))
    fErrors.push_back("The standard output takes one scan as XML or for ncdu: name a file, and each scan gets its own");
  if (scans > 1 && !fState.fCompareFile.empty() && !Vantrel::FolderExists(fState.fCompareFile))
    fErrors.push_back("Several scans cannot be compared with one file. Run Vantrel for each of them.");
  if (scans > static_cast<size_t>(fOptions.MaximumRoots))
    fErrors.push_back(fmt::format("{} scans are asked for, and one run takes {} (option MaximumRoots)", scans,
                                  fOptions.MaximumRoots));
  if (!HasTask() && !fState.IsSearch() && fErrors.empty())
    fErrors.push_back(
        "No valid command line option was passed in non-UI mode. Please see help file for a list of available command "
        "line options.");
}

bool TCommandLineHandler::HasTask() const {
  return NumberOfScans(fState) > 0 || fState.fShowWindow || fState.OpensWindow() || fState.fHelp || fState.fVersion ||
         fState.fExportDriveList || fState.fSaveSettings || fState.fForgetSettings || fState.ChangesSearches() ||
         fState.fListsSearches || fState.HasHistoryTasks();
}

void TCommandLineHandler::CheckWindow() {
  if (!fState.fShowWindow || fState.fHelp || fState.fVersion) return;
  if (fState.fUnattended) fErrors.push_back("/GUI opens the window, and /NOGUI does without: leave out one of them");
  if (fAbilities.fWindow == TWindowUse::wuNever)
    fErrors.push_back("There is no window: the program vantrel-gui is not in the folder of this program");
}

void TCommandLineHandler::FinalizeExports() {
  const std::u16string date = u"_" + Vantrel::CurrentDateText();
  auto finalize = [&](std::u16string& pFile) {
    if (pFile.empty() || pFile == u"-") return;
    pFile = Vantrel::AbsolutePath(pFile);
    if (fState.fDateInFileNames) pFile = Vantrel::PostScanActions::WithPartInName(pFile, date);
  };
  finalize(fState.fDriveListFile);
  finalize(fState.fHistoryCSV);
  finalize(fState.fHistoryJSON);
  finalize(fState.fHistoryExport);
  for (TExportRequest& request : fState.fExports) finalize(request.fFile);
  for (TPictureRequest& request : fState.fPictures) finalize(request.fFile);
}

// Pictures that no mail takes along and that have no file are those of reports, which are options by now.
void TCommandLineHandler::CheckPictures() {
  if (fState.fMailTo.empty())
    std::erase_if(fState.fPictures, [](const TPictureRequest& pRequest) { return pRequest.fFile.empty(); });
  if (fState.fShowHistoryOfScans)
    fState.fHistoryPaths.insert(fState.fHistoryPaths.end(), fState.fPaths.begin(), fState.fPaths.end());
  auto has = [&](const auto& pCondition) {
    return std::any_of(fState.fPictures.begin(), fState.fPictures.end(), pCondition);
  };
  const bool hasTreemap =
      has([](const TPictureRequest& pRequest) { return pRequest.fSubject == TPictureSubject::psTreemap; });
  if (hasTreemap && fOptions.TreemapColors == TTreemapColors::tcGrowth && fState.fCompareFile.empty())
    fErrors.push_back("--TreemapColors growth shows changes since an older scan: name its file with --compare");
  const bool toOutput = has([](const TPictureRequest& pRequest) { return pRequest.fFile == u"-"; });
  if (toOutput && std::max(NumberOfScans(fState), fState.fHistoryPaths.size()) > 1)
    fErrors.push_back("The standard output takes one picture, and each of several scans gets its own");
  const bool hasHistory =
      has([](const TPictureRequest& pRequest) { return pRequest.fSubject == TPictureSubject::psHistory; });
  if (fState.fPictures.size() > 0 && NumberOfScans(fState) == 0 && !(hasHistory && !fState.fHistoryPaths.empty()))
    fErrors.push_back("There is nothing to draw: name a path to scan");
}

int TCommandLineHandler::ProcessCommandlineTasks(ICommandLineTasks& pTasks) {
  if (fState.fHelp) return pTasks.ShowHelp(fHelpText);
  if (fState.fVersion) return pTasks.ShowVersion();
  int result = ecOk;
  if (fState.HasHistoryTasks()) result = pTasks.PrepareHistory();
  if (result != ecOk) return result;
  if (fState.fSaveSettings) result = pTasks.SaveSettings();
  if (fState.fForgetSettings) result = pTasks.ForgetSettings();
  if (result == ecOk && fState.fExportDriveList) result = pTasks.ExportDriveList(fState.fDriveListFile);
  if (result == ecOk && fState.ChangesSearches()) result = pTasks.ChangeSearches();
  if (result == ecOk && fState.fListsSearches) result = pTasks.ListSearches();
  if (result == ecOk && fState.IsSearch() && NumberOfScans(fState) > 0 && !fState.OpensWindow()) return pTasks.Search();
  if (result == ecOk && fState.OpensWindow())
    result = pTasks.OpenWindow();
  else if (result == ecOk && (!fState.fPaths.empty() || !fState.fOpenFiles.empty()))
    result = pTasks.OpenAndScan();
  // The history shown includes the scan just made.
  if (fState.HasHistoryTasks() && result != ecCancelled) result = std::max(result, pTasks.ManageHistory());
  return result;
}

}  // namespace Vantrel::CommandLine

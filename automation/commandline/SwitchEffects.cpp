#include "automation/commandline/SwitchEffects.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>

#include "automation/actions/FileExportAction.h"
#include "automation/commandline/KeptSearches.h"
#include "automation/mail/Mail.h"
#include "export/xml/XMLReader.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/files/ReadySearches.h"
#include "search/patterns/PatternFile.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/TypedPattern.h"

namespace Vantrel::CommandLine {

using namespace Vantrel::Exporting;
using PostScanActions::FormatOfFile;
using Vantrel::PatternMatching::CreateFromFile;
using Vantrel::PatternMatching::CreateTypedPattern;
using Vantrel::PatternMatching::IPatterns;
using Vantrel::PatternMatching::TPatternType;

namespace {

IPatterns& PatternsOf(TCommandLineState& pState) {
  if (!pState.fPatterns) {
    pState.fPatterns = MakeRef<PatternMatching::TPatternList>(NativePathDelimiter());
    pState.fPatterns->SetAutoSort(true);
  }
  return *pState.fPatterns;
}

// The value that a word of a choice stands for. pRange shows the words.
template <class T>
T ValueOfWord(std::u16string_view pWord, std::initializer_list<std::pair<std::u16string_view, T>> pWords,
              std::string_view pRange) {
  for (const auto& [word, value] : pWords)
    if (SameTextAscii(pWord, word)) return value;
  throw EInvalidArgumentValue(fmt::format("{} is not allowed; expected {}", ToQuotedDisplay(pWord), pRange));
}

void AddExport(TCommandLineState& pState, TExportFormat pFormat, std::u16string_view pFile) {
  pState.fExports.push_back({pFormat, std::u16string(pFile)});
}

}  // namespace

bool IsOn(std::u16string_view pValue) {
  return pValue.empty() || pValue == u"1" || SameTextAscii(pValue, u"true");
}

std::vector<std::u16string> SplitPaths(std::u16string_view pPaths) {
  if (PathExists(std::u16string(pPaths))) return {std::u16string(pPaths)};
  return XML::SplitFileNames(pPaths);
}

// --- what is scanned -----------------------------------------------------------------------------------------------

// Paths may be joined with ";".
void AddPaths(TCommandLineState& pState, std::u16string_view pValue) {
  for (std::u16string& path : SplitPaths(pValue)) pState.fPaths.push_back(std::move(path));
}

void AddCurrentFolder(TCommandLineState& pState, std::u16string_view) {
  pState.fPaths.emplace_back(u".");
}

void OpenFile(TCommandLineState& pState, std::u16string_view pFiles) {
  for (std::u16string& file : SplitPaths(pFiles)) pState.fOpenFiles.push_back(std::move(file));
}

void SearchFor(TCommandLineState& pState, std::u16string_view pQuery) {
  pState.fQuery = pQuery;
}

void SearchAtOnce(TCommandLineState& pState, std::u16string_view pQuery) {
  SearchFor(pState, pQuery);
  pState.fSearchesAtOnce = true;
}

// The options files are loaded already.
void SearchReady(TCommandLineState& pState, std::u16string_view pName) {
  if (const std::u16string* query = FindKeptSearch(*pState.fOptions, pName)) return SearchFor(pState, *query);
  const Search::TReadySearch* search = Search::FindReadySearch(pName);
  if (search) return SearchFor(pState, search->fQuery);
  std::string names;
  for (const Search::TReadySearch& known : Search::ReadySearches())
    names.append(names.empty() ? "" : ", ").append(ToUtf8(known.fName));
  for (const auto& [name, query] : pState.fOptions->KeptSearches) names.append(", ").append(ToDisplay(name));
  throw EInvalidArgumentValue("knows no search named " + ToQuotedDisplay(pName) + ". There are " + names);
}

void FindDuplicates(TCommandLineState& pState, std::u16string_view pMode) {
  using enum Search::TDuplicatesSearchMode;
  pState.fDuplicates.fIsWanted = true;
  pState.fDuplicates.fMode = ValueOfWord<Search::TDuplicatesSearchMode>(
      pMode,
      {{u"", DuplicateFiles}, {u"files", DuplicateFiles}, {u"folders", DuplicateFolders}, {u"unique", UniqueFiles}},
      "files|folders|unique");
}

void CompareBy(TCommandLineState& pState, std::u16string_view pProperties) {
  TDuplicatesRequest& request = pState.fDuplicates;
  request.fDetail = "--duplicateby";
  const std::pair<std::u16string_view, bool*> known[] = {{u"name", &request.fByName},
                                                         {u"size", &request.fBySize},
                                                         {u"date", &request.fByDate},
                                                         {u"contents", &request.fByContents}};
  for (size_t begin = 0; begin <= pProperties.size();) {
    const size_t end = std::min(pProperties.find_first_of(u",;", begin), pProperties.size());
    const std::u16string_view word = pProperties.substr(begin, end - begin);
    const auto found = std::find_if(std::begin(known), std::end(known),
                                    [&](const auto& pKnown) { return SameTextAscii(pKnown.first, word); });
    if (found == std::end(known))
      throw EInvalidArgumentValue(ToQuotedDisplay(word) +
                                  " is not allowed; expected name, size, date and contents, "
                                  "joined with \",\"");
    *found->second = true;
    begin = end + 1;
  }
}

void UseChecksum(TCommandLineState& pState, std::u16string_view pName) {
  using enum Search::TDuplicatesCompareType;
  pState.fDuplicates.fDetail = "--duplicatechecksum";
  pState.fDuplicates.fContents = ValueOfWord<Search::TDuplicatesCompareType>(
      pName, {{u"fast", ctFastChecksum}, {u"md5", ctMD5}, {u"sha256", ctSHA256}}, "fast|md5|sha256");
}

void TakeEmptyFiles(TCommandLineState& pState, std::u16string_view) {
  pState.fDuplicates.fWithEmpty = true;
  pState.fDuplicates.fDetail = "--emptyfiles";
}

void VerifyDuplicates(TCommandLineState& pState, std::u16string_view) {
  pState.fDuplicates.fVerify = true;
  pState.fDuplicates.fDetail = "--verify";
}

void KeepSearch(TCommandLineState& pState, std::u16string_view pName) {
  if (Search::FindReadySearch(pName) != nullptr)
    throw EInvalidArgumentValue("cannot take the name " + ToQuotedDisplay(pName) + ": a ready-made search has it");
  pState.fKeptName = pName;
}

void ForgetSearch(TCommandLineState& pState, std::u16string_view pName) {
  if (!FindKeptSearch(*pState.fOptions, pName))
    throw EInvalidArgumentValue("finds no search named " + ToQuotedDisplay(pName) + " among those that are kept");
  pState.fForgottenSearches.emplace_back(pName);
}

void AddInclude(TCommandLineState& pState, std::u16string_view pPattern) {
  PatternsOf(pState).Add(CreateTypedPattern(pPattern, TPatternType::ptyInclude));
}

void AddExclude(TCommandLineState& pState, std::u16string_view pPattern) {
  PatternsOf(pState).Add(CreateTypedPattern(pPattern, TPatternType::ptyExclude));
}

void ImportPatterns(TCommandLineState& pState, std::u16string_view pFile) {
  const std::u16string file(pFile);
  pState.fPatternFiles.push_back(file);
  PatternsOf(pState).AddRange(*CreateFromFile(file, TPatternType::ptyInclude, CreateTypedPattern));
}

// --- what is written -----------------------------------------------------------------------------------------------

void ExportCSV(TCommandLineState& pState, std::u16string_view pFile) {
  const bool isReport = HasExtension(pFile, u".txt");
  AddExport(pState, isReport ? TExportFormat::efReport : FormatOfFile(pFile, TExportFormat::efCSV), pFile);
}

void ExportText(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, FormatOfFile(pFile, TExportFormat::efReport), pFile);
}

void ExportPathList(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, TExportFormat::efPathList, pFile);
}

void ExportXML(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, TExportFormat::efXML, pFile);
}

void ExportJSON(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, HasExtension(pFile, u".jsonl") ? TExportFormat::efJSONLines : TExportFormat::efJSON, pFile);
}

void ExportJSONLines(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, TExportFormat::efJSONLines, pFile);
}

void ExportNcdu(TCommandLineState& pState, std::u16string_view pFile) {
  AddExport(pState, TExportFormat::efNcdu, pFile);
}

void ExportByName(TCommandLineState& pState, std::u16string_view pFile) {
  if (HasExtension(pFile, u".xml") || HasExtension(pFile, u".zip")) return ExportXML(pState, pFile);
  if (HasExtension(pFile, u".svg") || HasExtension(pFile, u".png")) return DrawTreemap(pState, pFile);
  ExportText(pState, pFile);
}

void ExportDriveList(TCommandLineState& pState, std::u16string_view pFile) {
  pState.fExportDriveList = true;
  pState.fDriveListFile = pFile;
}

namespace {

using enum TPictureSubject;

// Refuses names from which no picture's format follows. A switch with an optional file takes any name of no folder, so
// this also finds a path to scan that does not exist.
void CheckPictureName(const TCommandLineState& pState, std::u16string_view pFile, bool pMayLackText) {
  if (pFile.empty() || pFile == u"-" || HasExtension(pFile, u".svg")) return;
  if (!HasExtension(pFile, u".png"))
    throw EInvalidArgumentValue("writes pictures, and " + ToQuotedDisplay(pFile) +
                                " is not the name of one: end it with .svg or .png");
  if (pMayLackText || pState.fAbilities.fHasFonts) return;
  const std::u16string instead = std::u16string(pFile.substr(0, pFile.size() - 4)) + u".svg";
  throw EInvalidArgumentValue(
      "writes SVG, since only the window program, vantrel-gui, has fonts for PNG: name the file " +
      ToQuotedDisplay(instead));
}

// Without a file, the chart is added to reports, and a mail takes it along as a picture.
void AddChart(TCommandLineState& pState, TPictureSubject pSubject, std::optional<TChartForm> pForm,
              std::u16string_view pFile, bool TGlobalOptions::*pInReports) {
  CheckPictureName(pState, pFile, false);
  if (pFile.empty()) pState.fOptions->*pInReports = true;
  pState.fPictures.push_back({pSubject, pForm, std::u16string(pFile)});
}

}  // namespace

void DrawTreemap(TCommandLineState& pState, std::u16string_view pFile) {
  CheckPictureName(pState, pFile, true);
  pState.fPictures.push_back({psTreemap, {}, std::u16string(pFile)});
}

void DrawFolders(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psFolders, {}, pFile, &TGlobalOptions::ChartFolders);
}

void DrawFoldersPie(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psFolders, TChartForm::cfPie, pFile, &TGlobalOptions::ChartFolders);
}

void DrawFoldersBars(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psFolders, TChartForm::cfBar, pFile, &TGlobalOptions::ChartFolders);
}

void DrawExtensions(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psExtensions, {}, pFile, &TGlobalOptions::ChartExtensions);
}

void DrawExtensionsPie(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psExtensions, TChartForm::cfPie, pFile, &TGlobalOptions::ChartExtensions);
}

void DrawFileTypes(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psFileTypes, {}, pFile, &TGlobalOptions::ChartFileTypes);
}

void DrawUsers(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psUsers, {}, pFile, &TGlobalOptions::ChartUsers);
}

void DrawUsersPie(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psUsers, TChartForm::cfPie, pFile, &TGlobalOptions::ChartUsers);
}

void DrawFileAges(TCommandLineState& pState, std::u16string_view pFile) {
  AddChart(pState, psFileAges, {}, pFile, &TGlobalOptions::ChartFileAges);
}

void DrawHistory(TCommandLineState& pState, std::u16string_view pFile) {
  CheckPictureName(pState, pFile, false);
  if (pFile.empty()) pState.fShowHistoryOfScans = true;
  pState.fPictures.push_back({psHistory, {}, std::u16string(pFile)});
}

// --- mail ----------------------------------------------------------------------------------------------------------

void MailTo(TCommandLineState& pState, std::u16string_view pAddresses) {
  const std::vector<std::u16string> addresses = Mail::SplitMailAddresses(pAddresses);
  if (addresses.empty()) throw EInvalidArgumentValue(ToQuotedDisplay(pAddresses) + " names nobody");
  for (const std::u16string& address : addresses) {
    Mail::CheckMailAddress(address);
    pState.fMailTo.push_back(address);
  }
}

// --- history -------------------------------------------------------------------------------------------------------

void ShowHistory(TCommandLineState& pState, std::u16string_view pPath) {
  pState.fHistoryPaths.emplace_back(pPath);
}

void DeleteFromHistory(TCommandLineState& pState, std::u16string_view pScan) {
  int64_t scan = 0;
  if (!TryParseInt64(ToUtf8(pScan), scan) || scan < 1)
    throw EInvalidArgumentValue(ToQuotedDisplay(pScan) + " is no scan's ID; --history shows them");
  pState.fHistoryDeletions.push_back(scan);
}

void ImportHistory(TCommandLineState& pState, std::u16string_view pFile) {
  pState.fHistoryImports.emplace_back(pFile);
}

// --- settings and the run ------------------------------------------------------------------------------------------

void AskHelp(TCommandLineState& pState, std::u16string_view pTopic) {
  pState.fHelp = true;
  pState.fHelpTopic = pTopic;
}

void Nothing(TCommandLineState&, std::u16string_view) {}

}  // namespace Vantrel::CommandLine

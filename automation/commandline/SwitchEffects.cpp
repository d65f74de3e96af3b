#include "automation/commandline/SwitchEffects.h"

#include <algorithm>

#include "automation/actions/FileExportAction.h"
#include "automation/mail/Mail.h"
#include "export/xml/XMLReader.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFile.h"
#include "search/patterns/PatternList.h"
#include "search/patterns/SizeText.h"
#include "search/patterns/TypedPattern.h"

namespace Vantrel::CommandLine {

using namespace Vantrel::Exporting;
using PostScanActions::FormatOfFile;
using Vantrel::PatternMatching::CreateFromFile;
using Vantrel::PatternMatching::CreateTypedPattern;
using Vantrel::PatternMatching::IPatterns;
using Vantrel::PatternMatching::TPatternType;

namespace {

constexpr int64_t kSmallFolder = 10 << 20;

IPatterns& PatternsOf(TCommandLineState& pState) {
  if (!pState.fPatterns) {
    pState.fPatterns = MakeRef<PatternMatching::TPatternList>(NativePathDelimiter());
    pState.fPatterns->SetAutoSort(true);
  }
  return *pState.fPatterns;
}

// Sets a value for every kind of output with rows and columns.
template <class TChange>
void ChangeTextExports(TCommandLineState& pState, const TChange& pChange) {
  for (const TMediaType media : {TMediaType::mtText, TMediaType::mtCSV}) pChange(pState.fOptions->Media(media));
}

std::string ColumnNames() {
  std::string names;
  for (int column = 0; column < static_cast<int>(TColumn::mdCount); ++column)
    names.append(column == 0 ? "" : ", ").append(ToUtf8(ColumnInfo(static_cast<TColumn>(column)).fName));
  return names;
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

void ExportDriveList(TCommandLineState& pState, std::u16string_view pFile) {
  pState.fExportDriveList = true;
  pState.fDriveListFile = pFile;
}

// --- what it looks like --------------------------------------------------------------------------------------------

void Expand(TCommandLineState& pState, std::u16string_view pLevel) {
  int64_t level = TRecursionLevel::kUnlimited;
  const bool isLevel = TryParseInt64(ToUtf8(pLevel), level) && level >= -1 && level <= TRecursionLevel::kUnlimited;
  if (!isLevel && !pLevel.empty())
    pState.fWarnings.push_back("Unexpected value after /EXPAND: " + ToDisplay(pLevel) +
                               ". Doing a full expand instead.");
  // The user's choice is marked, even if it is all levels, so that no use of the settings replaces it with its own
  // default.
  if (!isLevel || level < 0) level = TRecursionLevel::kUnlimited;
  // An XML file without some folders is useless for a later comparison. So only its own option, XMLLevels, limits it.
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fRecursionLevel = {static_cast<int32_t>(level), false};
  });
}

void SortBy(TCommandLineState& pState, std::u16string_view pColumn) {
  std::optional<TSortOrder> order;
  if (!TryParseSortOrder(pColumn, order))
    throw EInvalidArgumentValue(ToQuotedDisplay(pColumn) +
                                " names no order; expected a column, then \",ascending\" or \",descending\" if wanted. "
                                "Columns are " +
                                ColumnNames());
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fSortOrder = order; });
}

void UseColumns(TCommandLineState& pState, std::u16string_view pColumns) {
  std::vector<TColumn> columns;
  if (!TryParseColumns(pColumns, columns))
    throw EInvalidArgumentValue(ToQuotedDisplay(pColumns) + " names no columns joined with \";\". Columns are " +
                                ColumnNames());
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fColumns = columns; });
}

void ShowFiles(TCommandLineState& pState, std::u16string_view pValue) {
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    if (IsOn(pValue))
      pSettings.fIncludedObjectTypes |= ioFiles;
    else
      pSettings.fIncludedObjectTypes &= ~TIncludedObjectTypes{ioFiles};
  });
}

void SetElements(TCommandLineState& pState, std::u16string_view pElements) {
  int64_t elements = 0;
  if (!TryParseInt64(ToUtf8(pElements), elements) || elements < 1 || elements > kAllObjectTypes)
    throw EInvalidArgumentValue(
        ToQuotedDisplay(pElements) +
        " is not allowed; expected the sum of 1 for folders, 2 for the files of a folder as one "
        "row and 4 for single files");
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fIncludedObjectTypes = static_cast<TIncludedObjectTypes>(elements);
  });
}

void HideSmallFolders(TCommandLineState& pState, std::u16string_view pSize) {
  const int64_t size = pSize.empty() ? kSmallFolder : ParseSizeText(pSize);
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) { pSettings.fSmallestFolder = size; });
}

void SetTitle(TCommandLineState& pState, std::u16string_view pTitle) {
  const std::string title = ToUtf8(pTitle);
  if (title != ToNativeBytes(pTitle)) throw EInvalidArgumentValue(ToQuotedDisplay(pTitle) + " is no text");
  pState.fOptions->ExportTitle = title;
}

void SetSeparator(TCommandLineState& pState, std::u16string_view pSeparator) {
  std::u16string separator;
  if (!TryParseSeparator(pSeparator, separator))
    throw EInvalidArgumentValue(ToQuotedDisplay(pSeparator) +
                                " cannot stand between fields: it is empty or holds a quote or a line break");
  ChangeTextExports(pState, [&](TMediaSettings& pSettings) {
    pSettings.fSeparator = separator;
    pSettings.fUseAlternativeSeparator = false;
  });
}

void OmitHeaders(TCommandLineState& pState, std::u16string_view) {
  ChangeTextExports(pState, [](TMediaSettings& pSettings) { pSettings.fIncludeHeader = false; });
}

void OmitUnits(TCommandLineState& pState, std::u16string_view) {
  ChangeTextExports(pState, [](TMediaSettings& pSettings) { pSettings.fShowUnits = false; });
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

#include "model/options/GlobalOptions.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "model/options/OptionDeclarations.h"
#include "model/options/OptionDefaults.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

using namespace Exporting;
using namespace OptionDeclarations;

// "1;7;30": numbers of days in ascending order. A single trailing ";" is accepted.
bool IsAgeList(std::string_view pText) {
  if (pText.ends_with(';')) pText.remove_suffix(1);
  int64_t last = -1;
  for (bool more = true; more;) {
    const size_t end = pText.find(';');
    int64_t days = 0;
    if (!TryParseInt64(pText.substr(0, end), days) || days <= last) return false;
    last = days;
    more = end != std::string_view::npos;
    if (more) pText.remove_prefix(end + 1);
  }
  return true;
}

// "1000x700".
bool ParsePictureSize(std::u16string_view pText, TPictureSize& pSize) {
  constexpr int64_t kMost = 16384;  // pixels of a side
  const std::string text = ToUtf8(pText);
  const size_t cross = text.find_first_of("xX");
  int64_t width = 0;
  int64_t height = 0;
  if (cross == std::string::npos || !TryParseInt64(text.substr(0, cross), width) ||
      !TryParseInt64(text.substr(cross + 1), height) || width < 1 || height < 1 || width > kMost || height > kMost)
    return false;
  pSize = {static_cast<int32_t>(width), static_cast<int32_t>(height)};
  return true;
}

std::u16string PictureSizeText(const TPictureSize& pSize) {
  return FromUtf8(std::to_string(pSize.fWidth) + "x" + std::to_string(pSize.fHeight));
}

// --- export settings -----------------------------------------------------------------------------------------------

// A field in the settings of one kind of output.
template <class T>
struct TMediaField {
  TMediaType fMedia;
  T TMediaSettings::*fField;
  T& operator()(TGlobalOptions& pOptions) const { return pOptions.Media(fMedia).*fField; }
  const T& operator()(const TGlobalOptions& pOptions) const { return pOptions.Media(fMedia).*fField; }
};

// A kind of output's own unit, or that of the global options. Sets three fields of the settings.
TOptionInfo MediaUnit(const std::string& pPrefix, TMediaType pMedia) {
  static constexpr std::pair<std::string_view, TSizeUnit> units[] = {
      {"auto", TSizeUnit::suAutomatic}, {"B", TSizeUnit::suBytes}, {"KB", TSizeUnit::suKB},
      {"MB", TSizeUnit::suMB},          {"GB", TSizeUnit::suGB},   {"TB", TSizeUnit::suTB}};
  auto set = [pMedia](TGlobalOptions& pOptions, std::string_view pText) {
    TMediaSettings& settings = pOptions.Media(pMedia);
    if (SameTextAscii(pText, "general")) {
      settings.fOverrideUnits = false;
      return true;
    }
    for (const auto& [word, unit] : units) {
      if (!SameTextAscii(pText, word)) continue;
      settings.fOverrideUnits = true;
      settings.fAutomaticUnit = unit == TSizeUnit::suAutomatic;
      if (!settings.fAutomaticUnit) settings.fSizeUnit = unit;
      return true;
    }
    return false;
  };
  auto get = [pMedia](const TGlobalOptions& pOptions) -> std::string {
    const TMediaSettings& settings = pOptions.Media(pMedia);
    if (!settings.fOverrideUnits) return "general";
    for (const auto& [word, unit] : units)
      if (unit == (settings.fAutomaticUnit ? TSizeUnit::suAutomatic : settings.fSizeUnit)) return std::string(word);
    return "general";
  };
  return {pPrefix + "SizeUnit",
          TOptionKind::okChoice,
          "Unit of sizes in this format; general: that of SizeUnit",
          "general",
          "general|auto|B|KB|MB|GB|TB",
          set,
          get};
}

TOptionInfo MediaLevels(const std::string& pPrefix, TMediaType pMedia) {
  auto set = [pMedia](TGlobalOptions& pOptions, std::string_view pText) {
    int64_t level = 0;
    if (!TryParseInt64(pText, level) || level < -1 || level > TRecursionLevel::kUnlimited) return false;
    pOptions.Media(pMedia).fRecursionLevel =
        level < 0 ? TRecursionLevel() : TRecursionLevel{static_cast<int32_t>(level), false};
    return true;
  };
  auto get = [pMedia](const TGlobalOptions& pOptions) {
    const TRecursionLevel& level = pOptions.Media(pMedia).fRecursionLevel;
    return std::to_string(level.fFullExpand ? -1 : level.fLevel);
  };
  return {pPrefix + "Levels",
          TOptionKind::okInteger,
          "Levels below the top in this format; -1: all",
          "-1",
          "-1..2147483647",
          set,
          get};
}

void AddMediaOptions(std::vector<TOptionInfo>& pOptions, const std::string& pPrefix, TMediaType pMedia) {
  const TMediaSettings byDefault = DefaultMediaSettings(pMedia);
  auto field = [&]<class T>(T TMediaSettings::*pField) { return TMediaField<T>{pMedia, pField}; };
  auto boolean = [&](const char* pName, bool TMediaSettings::*pField, const char* pHelp) {
    pOptions.push_back(Boolean(pPrefix + pName, field(pField), byDefault.*pField, pHelp));
  };
  auto separator = [&](const char* pName, std::u16string TMediaSettings::*pField, const char* pHelp) {
    auto text = [](const std::u16string& pSeparator) { return SeparatorText(pSeparator); };
    auto parse = [](std::u16string_view pText, std::u16string& pTarget) { return TryParseSeparator(pText, pTarget); };
    pOptions.push_back(Parsed<std::u16string>(pPrefix + pName, field(pField), ToUtf8(SeparatorText(byDefault.*pField)),
                                              "text or TAB", parse, text, pHelp));
  };
  boolean("IncludeHeader", &TMediaSettings::fIncludeHeader,
          "Begin with captions, in reports also with title and drive");
  boolean("UsePlainByteValues", &TMediaSettings::fUsePlainByteValues, "Write sizes as numbers of bytes");
  boolean("ShowUnits", &TMediaSettings::fShowUnits, "Write units behind numbers");
  pOptions.push_back(MediaUnit(pPrefix, pMedia));
  separator("Separator", &TMediaSettings::fSeparator, "What stands between columns");
  separator("AlternativeSeparator", &TMediaSettings::fAlternativeSeparator, "A second separator to switch to");
  boolean("UseAlternativeSeparator", &TMediaSettings::fUseAlternativeSeparator, "Use the second separator");
  pOptions.push_back(Integer(pPrefix + "IncludedObjectTypes", field(&TMediaSettings::fIncludedObjectTypes),
                             byDefault.fIncludedObjectTypes, 1, kAllObjectTypes,
                             "Sum of 1 folders, 2 the files of a folder as one row, 4 single files"));
  boolean("IncludeExpandedOnly", &TMediaSettings::fIncludeExpandedOnly, "Only what a view shows expanded");
  pOptions.push_back(MediaLevels(pPrefix, pMedia));
  pOptions.push_back(Parsed<std::optional<TSortOrder>>(
      pPrefix + "SortBy", field(&TMediaSettings::fSortOrder), "", "column or column,ascending or column,descending",
      TryParseSortOrder, SortOrderText, "Order of what lies in one folder"));
  pOptions.push_back(Parsed<std::vector<TColumn>>(pPrefix + "Columns", field(&TMediaSettings::fColumns), "",
                                                  "column;column;...", TryParseColumns, ColumnsText,
                                                  "Columns in this order"));
  pOptions.push_back(Integer(pPrefix + "SmallestFolder", field(&TMediaSettings::fSmallestFolder), 0, 0, INT64_MAX,
                             "Leave out what has fewer bytes"));
  pOptions.push_back(Parsed<double>(pPrefix + "SmallestShare", field(&TMediaSettings::fSmallestShare), "0%", "0%..100%",
                                    TryParseShare, ShareText, "Leave out what is a smaller part of the whole"));
  if (pMedia == TMediaType::mtText)
    pOptions.push_back(Parsed<std::optional<int64_t>>(pPrefix + "Rows", field(&TMediaSettings::fMostRows), "",
                                                      "0..1000000", TryParseRows, RowsText,
                                                      "Rows of one folder or list that a report shows; 0 for all"));
  boolean("NeutralizeFormulas", &TMediaSettings::fNeutralizeFormulas,
          "Put an apostrophe before names that begin like a formula");
  if (pMedia != TMediaType::mtCSV) return;
  boolean("ByteOrderMark", &TMediaSettings::fByteOrderMark, "Begin the file with a byte-order mark");
}

constexpr int32_t kMostInt = 2147483647;

// What is scanned and collected, and how.
std::vector<TOptionInfo> ScanOptions() {
  using TOptions = TGlobalOptions;
  return {
      Integer("MaximumThreads", &TOptions::MaximumThreads, 8, 1, 256, "Threads that scan, all scans together"),
      Integer("ThreadPriority", &TOptions::ThreadPriority, 3, 0, 6,
              "Priority of the scan: 0 idle, 3 normal, 6 highest"),
      Integer("LongPathLength", &TOptions::LongPathLength, 260, 1, 32767,
              "Paths with at least so many characters are marked as long"),
      Integer("NumberOfTopFiles", &TOptions::NumberOfTopFiles, 100, 0, 100000, "Show the top 100 largest files"),
      Integer("NumberOfListedErrors", &TOptions::NumberOfListedErrors, 20, 0, kMostInt,
              "Folders that a report lists as unreadable"),
      Boolean("KeepFiles", &TOptions::KeepFiles, true, "Keep every file in the tree, not only folders"),
      Boolean("CollectExtensions", &TOptions::CollectExtensions, true, "Collect sizes by file name extension"),
      Boolean("CollectOwners", &TOptions::CollectOwners, kCollectOwnersByDefault, "Collect sizes by owner"),
      Choice<TDateType>("FileAgesDateType", &TOptions::FileAgesDateType,
                        {{"change", TDateType::dtLastChange},
                         {"creation", TDateType::dtCreation},
                         {"access", TDateType::dtLastAccess},
                         {"none", TDateType::dtNone}},
                        "Date that file ages count from; none collects no ages"),
      Text("FileAges", &TOptions::FileAges, "1;7;30;182;365;730;2147483647", "days;days;... in ascending order",
           IsAgeList, "Upper bounds of the file age intervals"),
      Boolean("ShareHardLinks", &TOptions::ShareHardLinks, kShareHardLinksByDefault,
              "Count a file with several hard links once on storage"),
      Boolean("FollowSymbolicLinks", &TOptions::FollowSymbolicLinks, false, "Scan the folders that links point to"),
      Boolean("FollowMountPoints", &TOptions::FollowMountPoints, false, "Scan volumes mounted into folders (Windows)"),
      Boolean("StayOnFileSystem", &TOptions::StayOnFileSystem, false, "Leave other file systems out"),
      Boolean("UseBackupPrivilege", &TOptions::UseBackupPrivilege, true, "Read folders by backup privilege (Windows)"),
      Boolean("ScanMFT", &TOptions::ScanMFT, true, "Read whole NTFS volumes through their file table"),
      Boolean("MftSystemFiles", &TOptions::MftSystemFiles, false,
              "Show the files that an NTFS volume keeps about itself"),
      Boolean("MftCompatible", &TOptions::MftCompatible, false,
              "Read file tables by the compatible rules (docs/ntfs.md)"),
      Boolean("FolderDateBasedOnFilesOnly", &TOptions::FolderDateBasedOnFilesOnly, false,
              "Take a folder's dates from its files alone"),
      Boolean("UseAllocatedForShares", &TOptions::UseAllocatedForShares, true,
              "Order by allocated size, and reckon percentages from it"),
      Integer("MaximumRoots", &TOptions::MaximumRoots, 1000, 1, 100000, "Paths that one run takes"),
  };
}

// How searches read names, and when they end.
std::vector<TOptionInfo> SearchOptions() {
  using TOptions = TGlobalOptions;
  return {
      Integer("SearchLimit", &TOptions::SearchLimit, 0, 0, kMostInt, "Results at which a search ends; 0 for no limit"),
      Boolean("NormalizeUnicode", &TOptions::NormalizeUnicode, false,
              "Find accented letters in both of their Unicode forms"),
      Text("ChecksumCache", &TOptions::ChecksumCache, "", "", nullptr,
           "File that keeps checksums for the next search for duplicates; none: not kept"),
  };
}

// What reports and exports show.
std::vector<TOptionInfo> ReportOptions() {
  using TOptions = TGlobalOptions;
  return {
      Choice<TSizeUnit>("SizeUnit", &TOptions::SizeUnit,
                        {{"auto", TSizeUnit::suAutomatic},
                         {"B", TSizeUnit::suBytes},
                         {"KB", TSizeUnit::suKB},
                         {"MB", TSizeUnit::suMB},
                         {"GB", TSizeUnit::suGB},
                         {"TB", TSizeUnit::suTB}},
                        "Unit in which reports show sizes"),
      Boolean("DecimalUnits", &TOptions::DecimalUnits, false, "Units are powers of 1,000: kB, MB, GB, TB"),
      Choice<TColorUse>(
          "Colors", &TOptions::Colors,
          {{"auto", TColorUse::cuAutomatic}, {"always", TColorUse::cuAlways}, {"never", TColorUse::cuNever}},
          "Where reports have colours and bars; auto: on a terminal"),
      Boolean("ShowUnchanged", &TOptions::ShowUnchanged, false, "After a comparison, show what did not change as well"),
      Text("ExportTitle", &TOptions::ExportTitle, "", "", nullptr,
           "First line of a report in place of its name and date"),
      Boolean("ListTopFiles", &TOptions::ListTopFiles, false, "Add the list of the largest files to exports"),
      Boolean("ListTopFolders", &TOptions::ListTopFolders, false, "Add the folders with the largest files to exports"),
      Boolean("ListExtensions", &TOptions::ListExtensions, false, "Add the list of file name extensions to exports"),
      Boolean("ListFileTypes", &TOptions::ListFileTypes, false, "Add the list of file-type groups to exports"),
      Boolean("ListUsers", &TOptions::ListUsers, false, "Add the list of owners to exports"),
      Boolean("ListFileAges", &TOptions::ListFileAges, false, "Add the list of file ages to exports"),
      Boolean("ChartFolders", &TOptions::ChartFolders, false, "Add a chart of the folders to reports"),
      Boolean("ChartExtensions", &TOptions::ChartExtensions, false, "Add a chart of the extensions to reports"),
      Boolean("ChartFileTypes", &TOptions::ChartFileTypes, false, "Add a chart of the file types to reports"),
      Boolean("ChartUsers", &TOptions::ChartUsers, false, "Add a chart of the owners to reports"),
      Boolean("ChartFileAges", &TOptions::ChartFileAges, false, "Add a chart of the file ages to reports"),
  };
}

// How charts and treemaps are drawn.
std::vector<TOptionInfo> PictureOptions() {
  using TOptions = TGlobalOptions;
  return {
      Parsed<TPictureSize>("PictureSize", &TOptions::PictureSize, "1000x700", "WIDTHxHEIGHT, each 1..16384",
                           ParsePictureSize, PictureSizeText, "Size of pictures in pixels"),
      Boolean("DarkPictures", &TOptions::DarkPictures, false, "Draw pictures on a dark ground"),
      Integer("ChartItems", &TOptions::ChartItems, 12, 2, 100, "Items of a chart; the rest is one more"),
      Choice<TChartForm>("ChartType", &TOptions::ChartType,
                         {{"auto", TChartForm::cfAutomatic},
                          {"bar", TChartForm::cfBar},
                          {"column", TChartForm::cfColumn},
                          {"pie", TChartForm::cfPie},
                          {"ring", TChartForm::cfRing}},
                         "Form of the charts whose switch names no form"),
      Choice<THistoryChartForm>("HistoryChartType", &TOptions::HistoryChartType,
                                {{"area", THistoryChartForm::hfArea}, {"line", THistoryChartForm::hfLine}},
                                "Form of the chart of the history"),
      Choice<TTreemapSource>("TreemapOf", &TOptions::TreemapOf,
                             {{"folders", TTreemapSource::tsFolders},
                              {"extensions", TTreemapSource::tsExtensions},
                              {"owners", TTreemapSource::tsOwners}},
                             "What a treemap shows"),
      Choice<TTreemapColors>("TreemapColors", &TOptions::TreemapColors,
                             {{"type", TTreemapColors::tcType},
                              {"extension", TTreemapColors::tcExtension},
                              {"age", TTreemapColors::tcAge},
                              {"depth", TTreemapColors::tcDepth},
                              {"growth", TTreemapColors::tcGrowth}},
                             "What the colours of a treemap of folders mean"),
  };
}

// How mails are sent.
std::vector<TOptionInfo> MailOptions() {
  using TOptions = TGlobalOptions;
  return {
      Text("MailServer", &TOptions::MailServer, "", "", nullptr, "SMTP server that mails go to; none: sendmail"),
      Integer("MailPort", &TOptions::MailPort, 0, 0, 65535, "The server's port; 0: the usual one"),
      Choice<TMailSecurity>(
          "MailSecurity", &TOptions::MailSecurity,
          {{"starttls", TMailSecurity::msStartTLS}, {"tls", TMailSecurity::msTLS}, {"none", TMailSecurity::msNone}},
          "Encryption on the way to the mail server"),
      Text("MailUser", &TOptions::MailUser, "", "", nullptr, "Name to log in to the mail server with"),
      Text("MailFrom", &TOptions::MailFrom, "", "", nullptr, "Address that mails come from"),
  };
}

// The history, and the end of a run.
std::vector<TOptionInfo> RunOptions() {
  using TOptions = TGlobalOptions;
  return {
      Boolean("RecordHistory", &TOptions::RecordHistory, false, "Add every finished scan to the history"),
      Text("HistoryFile", &TOptions::HistoryFile, "", "", nullptr, "Database of the history; none: the user's own"),
      Boolean("CloseAfterExport", &TOptions::CloseAfterExport, false, "End the program once the exports are written"),
  };
}

// All options, in the order in which help and options files list them.
std::vector<TOptionInfo> DeclareOptions() {
  std::vector<TOptionInfo> options;
  for (const auto& declare : {ScanOptions, SearchOptions, ReportOptions, PictureOptions, MailOptions, RunOptions}) {
    std::vector<TOptionInfo> declared = declare();
    std::move(declared.begin(), declared.end(), std::back_inserter(options));
  }
  AddMediaOptions(options, "Text", TMediaType::mtText);
  AddMediaOptions(options, "CSV", TMediaType::mtCSV);
  options.push_back(MediaLevels("XML", TMediaType::mtXML));
  return options;
}

const std::vector<TOptionInfo>& Options() {
  static const std::vector<TOptionInfo> options = DeclareOptions();
  return options;
}

}  // namespace

TGlobalOptions::TGlobalOptions() : FileTypeGroups(StandardFileTypes()) {
  // What is no option of its own as well.
  for (const TMediaType media : {TMediaType::mtText, TMediaType::mtCSV, TMediaType::mtXML})
    Media(media) = DefaultMediaSettings(media);
  for (const TOptionInfo& option : Options()) option.fSet(*this, option.fDefault);
}

void UseAsCommonOptions(const TGlobalOptions& pOptions) {
  SetCommonFileTypeGroups(pOptions.FileTypeGroups);
  CommonColorPalette().SetUserColors(pOptions.UserColors);
}

std::string RefusedValueText(const TOptionInfo& pOption, std::string_view pValue) {
  return pOption.fName + ": \"" + std::string(pValue) + "\" is not allowed; expected " +
         (pOption.fRange.empty() ? "text" : pOption.fRange);
}

std::span<const TOptionInfo> AllOptions() {
  return Options();
}

const TOptionInfo* FindOption(std::string_view pName) {
  const auto& options = Options();
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const TOptionInfo& pOption) { return SameTextAscii(pOption.fName, pName); });
  return found == options.end() ? nullptr : &*found;
}

}  // namespace Vantrel

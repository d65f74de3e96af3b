#include "automation/commandline/SwitchTable.h"

#include <algorithm>

#include "automation/commandline/SwitchEffects.h"
#include "platform/text/Text.h"

namespace Vantrel::CommandLine {

namespace {

using enum TSwitchRank;
using enum Vantrel::TValueKind;
using TState = TCommandLineState;

constexpr bool kOnce = false;
constexpr bool kRepeated = true;

constexpr std::string_view kNoWindow = "This version has no window.";
constexpr std::string_view kNoInstaller = "This version is not installed by itself.";
constexpr std::string_view kNoSearch = "This version searches no internet.";
constexpr std::string_view kNoRemote = "This version scans no storage in the cloud.";
constexpr std::string_view kNoSpreadsheet = "This version writes no spreadsheets.";
constexpr std::string_view kNoIndex =
    "This version writes no SQLite reports; --record-history keeps the totals of scans.";
constexpr std::string_view kNoSnapshots = "This version makes no snapshots.";
constexpr std::string_view kListDetails =
    "Reports show the list below the tree; CSV and tab-separated exports get a file of their own beside theirs.";

constexpr std::string_view kPatternDetails =
    "Wildcards joined with \";\", in quotes: \"*.tmp;*.bak\". Or a part of a name, a path of a folder with all in it, "
    "or "
    "/REGULAR EXPRESSION/. With --filter only files have to match.";

constexpr std::string_view kChartDetails =
    "SVG is for browsers. PNG needs the window program, vantrel-gui. Without a file, reports show the chart in "
    "characters, CSV and tab-separated "
    "exports get its numbers as a list, and a mail takes the picture along. The option PictureSize says how large "
    "pictures are, ChartItems how many items they show.";
constexpr std::string_view kFormDetails =
    "SVG is for browsers. PNG needs the window program, vantrel-gui. Without a file, reports show the chart in "
    "characters, CSV and tab-separated "
    "exports get its numbers as a list, and a mail takes the picture along. The option ChartType chooses between bar, "
    "column, pie and ring.";

using TApply = decltype(TSwitch::fApply);

// Names without "/" where paths begin with it: many a folder has such a name.
constexpr TCommandLineItem Dashed(std::u16string_view pName, TValueKind pKind, bool pRepeatable) {
  return {pName, pKind, pRepeatable, TTimeMoment::tmStartUp, true};
}

// The rows of switches that differ only in few points.

constexpr TSwitch Chart(std::u16string_view pName, std::string_view pHelp, TApply pApply, std::string_view pDetails) {
  return {{pName, vkOptionalFile, kRepeated}, srUsual, "[FILE]", pHelp, pApply, {}, pDetails};
}

constexpr TSwitch List(std::u16string_view pName, std::string_view pHelp, TApply pApply) {
  return {{pName, vkOptionalBoolean, kRepeated}, srUsual, "", pHelp, pApply, {}, kListDetails};
}

constexpr TSwitch Short(std::u16string_view pName, TValueKind pKind, bool pRepeatable, TApply pApply,
                        std::string_view pExpected = {}) {
  return {Dashed(pName, pKind, pRepeatable), srAlias, "", "", pApply, pExpected};
}

constexpr TSwitch NotBuilt(std::u16string_view pName, std::string_view pReason) {
  return {{pName, vkAnything, kRepeated}, srNotBuilt, "", pReason};
}

constexpr TSwitch kSwitches[] = {
    // What is scanned.
    {{u"SCAN", vkPaths, kRepeated},
     srUsual,
     "PATH[;PATH]...",
     "scan these paths",
     AddPaths,
     "A path",
     "May be left out: what is no switch is a path to scan."},
    {{u"SCANDEFAULT", vkNone, kRepeated}, srUsual, "", "scan the current folder", AddCurrentFolder},
    {{u"OPEN", vkPath, kRepeated},
     srUsual,
     "FILE[;FILE]...",
     "load scans from files",
     OpenFile,
     "A file",
     "Files that --xml, --json, --jsonlines and --ncdu write, what ncdu -o writes, cache files of QDirStat, and what "
     "du -ak writes. The first bytes of a file say what it is. All kinds but XML may be packed by gzip."},
    {{u"COMPARE", vkPath, kOnce},
     srUsual,
     "FILE",
     "show changes since a saved scan, or since the newest in a folder",
     SetText<&TState::fCompareFile>,
     "A file",
     "The file is of any kind that --open loads. Of a folder, the newest XML file with a whole scan of the same path "
     "from before today is taken. Only what changed is shown, unless --unchanged is given. Exports then know the "
     "columns "
     "sizechange, sizechangepercent, allocatedchange, filechange and state. CSV and JSON have them."},
    {Dashed(u"UNCHANGED", vkOptionalBoolean, kRepeated),
     srUsual,
     "",
     "after --compare, show what did not change as well",
     SetOption<&TGlobalOptions::ShowUnchanged>,
     {},
     "Reports say how many rows they leave out. XML files and those for ncdu are always complete."},
    {{u"SEARCH", vkPattern, kOnce},
     srUsual,
     "QUERY",
     "list the files that a query finds",
     SearchFor,
     "A query",
     "In the paths, or in the scans that --open loads. Conditions such as size:>100MB, modified:<2024, ext:iso,zip, "
     "content:word and parts of names, joined by blanks, AND and OR. The largest files come first. --csv, --json, "
     "--text and "
     "--pathlist write what was found. With --gui the window opens its search pane; --search:start runs it at once."},
    {{u"SEARCH:START", vkPattern, kOnce}, srAlias, "QUERY", "", SearchAtOnce, "A query"},
    {{u"FIND", vkText, kOnce},
     srUsual,
     "NAME",
     "list what a search with a name finds",
     SearchReady,
     "A name",
     "A search that --keepsearch kept, or a ready-made one. largest: files of 100 MB and more. oldest: last changed "
     "more than five years ago. newest: changed within a day. "
     "temporary: what programs leave behind. emptyfolders: with nothing in them. broken: links that lead nowhere. "
     "longpaths: of 260 characters and more."},
    {{u"DUPLICATES", vkOptionalMode, kOnce},
     srUsual,
     "[KIND]",
     "list files with equal contents",
     FindDuplicates,
     {},
     "In groups, the most wasteful first. KIND is files, folders or unique. folders: whole folders that are equal. "
     "unique: files that are in no group. "
     "--search and patterns say which files are looked at. Names of one file, that is hard links, are read once and "
     "waste nothing. --csv, --json, --text and --pathlist write what was found. With --gui the window searches for "
     "them when it has scanned the paths."},
    {{u"DUPLICATEBY", vkText, kOnce},
     srUsual,
     "PROPERTIES",
     "what duplicates share: name,size,date,contents",
     CompareBy,
     "A property",
     "Joined with \",\". contents, if left out. date is that of the last change. Without contents no file is read."},
    {{u"DUPLICATECHECKSUM", vkText, kOnce},
     srUsual,
     "CHECKSUM",
     "how contents are compared: fast, md5, sha256",
     UseChecksum,
     "A checksum",
     "fast is XXH3 with 128 bits. Only sha256 also tells files apart that were made to deceive a checksum."},
    {{u"EMPTYFILES", vkNone, kOnce}, srUsual, "", "empty files are duplicates, too", TakeEmptyFiles},
    {{u"VERIFY", vkNone, kOnce}, srUsual, "", "compare the bytes of duplicates as well", VerifyDuplicates},
    {{u"KEEPSEARCH", vkText, kOnce},
     srUsual,
     "NAME",
     "keep the query of --search under a name",
     KeepSearch,
     "A name",
     "--find NAME runs it later. It is kept in the user's own options file. Without a path, nothing is searched now."},
    {{u"FORGETSEARCH", vkText, kRepeated}, srUsual, "NAME", "forget a search that was kept", ForgetSearch, "A name"},
    {{u"LISTSEARCHES", vkNone, kRepeated},
     srUsual,
     "",
     "list the names and queries that --find knows",
     SetFlag<&TState::fListsSearches>},
    {{u"FILTER", vkPattern, kRepeated},
     srUsual,
     "PATTERN",
     "take in only what matches",
     AddInclude,
     "A pattern",
     kPatternDetails},
    {{u"EXCLUDE", vkPattern, kRepeated},
     srUsual,
     "PATTERN",
     "leave out what matches",
     AddExclude,
     "A pattern",
     kPatternDetails},
    {{u"IMPORTPATTERNS", vkPath, kRepeated},
     srUsual,
     "FILE",
     "patterns from a file, one a line",
     ImportPatterns,
     "A file"},

    // What is written.
    {{u"CSV", vkFile, kRepeated},
     srUsual,
     "FILE",
     "write the tree as CSV",
     ExportCSV,
     {},
     "The extension chooses: .tsv and .tab for fields between tabs, .json and .jsonl for JSON, .txt for the report. "
     "\"-\" is the standard "
     "output."},
    {{u"TEXT", vkFile, kRepeated},
     srUsual,
     "FILE",
     "write the report (.csv, .tsv: for programs)",
     ExportText,
     {},
     "The extension chooses: .csv for comma-separated values, .tsv and .tab for fields between tabs, .json and .jsonl "
     "for JSON, everything else for the report. \"-\" is the standard output."},
    {Dashed(u"OUTPUT", vkFile, kRepeated),
     srUsual,
     "FILE",
     "write a file, as its extension says",
     ExportByName,
     {},
     ".csv, .tsv, .json, .jsonl, .xml and .xml.zip, .svg and .png for a treemap, and everything else for the report."},
    Short(u"O", vkFile, kRepeated, ExportByName),
    {{u"PATHLIST", vkFile, kRepeated}, srUsual, "FILE", "write a list of paths", ExportPathList},
    {{u"NULL", vkNone, kRepeated},
     srUsual,
     "",
     "end the paths of --pathlist with NUL, names as they are",
     SetFlag<&TState::fPathsEndWithNul>,
     {},
     "As find -print0 writes them and xargs -0 reads them."},
    Short(u"0", vkNone, kRepeated, SetFlag<&TState::fPathsEndWithNul>),
    {{u"XML", vkFile, kRepeated},
     srUsual,
     "FILE",
     "write the scan as XML (.xml, .xml.zip)",
     ExportXML,
     {},
     "--open and --compare read such files. Several scans get a file each, with the scan's name in it."},
    {{u"SAVE", vkFile, kRepeated}, srAlias, "FILE", "", ExportXML},
    {{u"JSON", vkFile, kRepeated},
     srUsual,
     "FILE",
     "write the tree as JSON",
     ExportJSON,
     {},
     "An object with the rows of the tree, for programs; docs/json.md describes it. --filesintree adds single files. "
     "The settings of CSV apply: levels, columns, order. Several scans get a file each. --open and --compare read "
     "such files. \"-\" is the standard output."},
    {{u"JSONLINES", vkFile, kRepeated}, srUsual, "FILE", "the same with one object a line (.jsonl)", ExportJSONLines},
    {{u"NCDU", vkFile, kRepeated},
     srUsual,
     "FILE",
     "write the scan for ncdu -f",
     ExportNcdu,
     {},
     "The whole tree with its files, whatever the layout of other exports. --open reads what ncdu -o writes."},
    {{u"DATE", vkNone, kRepeated},
     srUsual,
     "",
     "put the date into the names of written files",
     SetFlag<&TState::fDateInFileNames>,
     {},
     "data.xml.zip becomes data_2026-01-31.xml.zip. --compare takes the folder of such files."},
    {{u"EXPORTDRIVELIST", vkOptionalFile, kOnce},
     srUsual,
     "[FILE]",
     "list the drives, as text or CSV",
     ExportDriveList},
    {{u"EXPORTDRIVESLIST", vkOptionalFile, kOnce}, srAlias, "[FILE]", "", ExportDriveList},

    // Pictures.
    {{u"TREEMAP", vkFile, kRepeated},
     srUsual,
     "FILE",
     "draw a treemap (.svg, .png)",
     DrawTreemap,
     {},
     "SVG has captions and tooltips. PNG has captions if the window program, vantrel-gui, is there. The options "
     "PictureSize, TreemapOf and TreemapColors say how large it is, what it shows, and what the colours mean."},
    Chart(u"CHART", "draw a chart of the folders (.svg, .png)", DrawFolders, kFormDetails),
    Chart(u"PIECHART", "the same as a pie", DrawFoldersPie, kChartDetails),
    Chart(u"BARCHART", "the same as bars", DrawFoldersBars, kChartDetails),
    Chart(u"EXTENSIONSCHART", "draw sizes by extension", DrawExtensions, kFormDetails),
    Chart(u"EXTENSIONSPIECHART", "the same as a pie", DrawExtensionsPie, kChartDetails),
    Chart(u"FILETYPESCHART", "draw sizes by kind of file", DrawFileTypes, kFormDetails),
    Chart(u"USERSCHART", "draw sizes by owner", DrawUsers, kFormDetails),
    Chart(u"USERSPIECHART", "the same as a pie", DrawUsersPie, kChartDetails),
    Chart(u"FILEAGESCHART", "draw sizes by age", DrawFileAges, kFormDetails),
    {{u"HISTORYCHART", vkOptionalFile, kRepeated},
     srUsual,
     "[FILE]",
     "draw the size over time (.svg, .png)",
     DrawHistory,
     {},
     "Of the paths that --history names, else of the scanned paths, from the scans that --record-history recorded. "
     "Without a file, the history of each scanned path is shown as --history shows it."},
    {{u"DARK", vkOptionalBoolean, kRepeated},
     srUsual,
     "",
     "draw pictures on a dark ground",
     SetOption<&TGlobalOptions::DarkPictures>},

    // What it looks like.
    {{u"EXPAND", vkLevel, kOnce},
     srUsual,
     "[LEVEL]",
     "levels of folders to show; all of them",
     Expand,
     {},
     "0 is the top alone, -1 is all levels. Without this switch the report on the console shows one level, files all. "
     "XML "
     "files hold all levels unless XMLLevels limits them."},
    Short(u"DEPTH", vkText, kOnce, LimitDepth, "A level"),
    Short(u"D", vkText, kOnce, LimitDepth, "A level"),
    {Dashed(u"TOP", vkText, kOnce), srUsual, "NUMBER", "most rows of a folder or list; 0 for all", LimitRows,
     "A number",
     "The report on the console shows 20, unless --expand says how deep it goes. One row sums up the others."},
    Short(u"N", vkText, kOnce, LimitRows, "A number"),
    {Dashed(u"MIN", vkText, kOnce), srUsual, "SIZE", "leave out what is smaller: 100M, 1%", LeaveOutSmall, "A size",
     "A part in per cent is of the whole scan. Totals still count what is left out."},
    {{u"SORTBY", vkText, kOnce},
     srUsual,
     "COLUMN[,DIRECTION]",
     "order by size, name, files, lastchange...",
     SortBy,
     "A column",
     "The direction is ascending or descending."},
    Short(u"SORT", vkText, kOnce, SortBy, "A column"),
    Short(u"S", vkText, kOnce, SortBy, "A column"),
    {Dashed(u"REVERSE", vkNone, kRepeated), srUsual, "", "order the other way round", Reverse},
    Short(u"R", vkNone, kRepeated, Reverse),
    {Dashed(u"APPARENT-SIZE", vkOptionalBoolean, kRepeated),
     srUsual,
     "",
     "sizes of the contents lead, not what they take on the disk",
     LeadWithSize,
     {},
     "What leads is the first size, the order, and what percentages refer to. The option UseAllocatedForShares says "
     "the "
     "same."},
    Short(u"A", vkNone, kRepeated, LeadWithSize),
    {Dashed(u"ONE-FILE-SYSTEM", vkOptionalBoolean, kRepeated), srUsual, "",
     "leave out other file systems mounted inside", SetOption<&TGlobalOptions::StayOnFileSystem>},
    Short(u"X", vkNone, kRepeated, SetOption<&TGlobalOptions::StayOnFileSystem>),
    {{u"USECOLUMNS", vkText, kOnce}, srUsual, "COLUMN[,COLUMN]...", "columns of exports", UseColumns, "A column"},
    {{u"FILESINTREE", vkOptionalBoolean, kRepeated}, srUsual, "", "show single files as well", ShowFiles},
    {{u"EXPORTFILES", vkOptionalBoolean, kRepeated}, srAlias, "", "", ShowFiles},
    {{u"EXPORTEDELEMENTS", vkInteger, kOnce},
     srUsual,
     "NUMBER",
     "sum of 1 folders, 2 [Files], 4 single files",
     SetElements,
     "A number"},
    {{u"HIDESMALLFOLDERS", vkOptionalSize, kOnce},
     srUsual,
     "[SIZE]",
     "leave out what is smaller, such as 10MB",
     HideSmallFolders,
     {},
     "Whole numbers with a unit, B, KB, MB, GB or TB; a bare number means megabytes; without a size, 10 MB."},
    List(u"TOPFILESLIST", "add the largest files", SetOption<&TGlobalOptions::ListTopFiles>),
    {Dashed(u"TOPFOLDERSLIST", vkOptionalBoolean, kRepeated),
     srUsual,
     "",
     "add the folders with the largest files directly in them",
     SetOption<&TGlobalOptions::ListTopFolders>,
     {},
     kListDetails},
    List(u"EXTENSIONSLIST", "add sizes by extension", SetOption<&TGlobalOptions::ListExtensions>),
    List(u"FILETYPESLIST", "add sizes by file-type group", SetOption<&TGlobalOptions::ListFileTypes>),
    List(u"USERSLIST", "add sizes by owner", SetOption<&TGlobalOptions::ListUsers>),
    List(u"AGEOFFILES", "add sizes by age", SetOption<&TGlobalOptions::ListFileAges>),
    {{u"TITLE", vkText, kOnce}, srUsual, "TEXT", "first line of a report", SetTitle, "A title"},
    {{u"EXPORTTITLE", vkText, kOnce}, srAlias, "TEXT", "", SetTitle, "A title"},
    {{u"LISTSEPARATOR", vkText, kOnce},
     srUsual,
     "TEXT",
     "between the fields of exports; TAB for a tab",
     SetSeparator,
     "A separator"},
    {{u"NOHEADERS", vkNone, kRepeated}, srUsual, "", "no captions, no title", OmitHeaders},
    {{u"NOHEADER", vkNone, kRepeated}, srAlias, "", "", OmitHeaders},
    {{u"NOUNITS", vkNone, kRepeated}, srUsual, "", "sizes without units", OmitUnits},
    {Dashed(u"COLOR", vkText, kOnce), srUsual, "auto|always|never", "when reports have colours and bars", SetColors,
     "A word",
     "auto: on a terminal that shows colours, unless the environment variable NO_COLOR is set. always: also in a pipe. "
     "Files never have them. The option Colors says the same."},
    {Dashed(u"COLOUR", vkText, kOnce), srAlias, "auto|always|never", "", SetColors, "A word"},
    {Dashed(u"SI", vkOptionalBoolean, kRepeated),
     srUsual,
     "",
     "units of 1,000: kB, MB, GB",
     SetOption<&TGlobalOptions::DecimalUnits>,
     {},
     "Instead of 1,024. The option DecimalUnits says the same. Sizes that a switch or a query takes are not changed."},

    // Mail.
    {{u"EMAIL", vkText, kRepeated},
     srUsual,
     "ADDRESS[;ADDRESS]...",
     "mail the report and all exports",
     MailTo,
     "An address",
     "The options MailServer, MailPort, MailSecurity, MailUser and MailFrom say how; without a server, sendmail is "
     "used. An "
     "export switch may then be given without a file: what it writes is only mailed."},
    {{u"SUBJECT", vkText, kOnce}, srUsual, "TEXT", "subject of the mail", SetText<&TState::fMailSubject>, "A subject"},
    {{u"ATTACH", vkNone, kRepeated},
     srUsual,
     "",
     "attach the report instead of showing it in the mail",
     SetFlag<&TState::fAttachReport>},
    {{u"USERNAME", vkText, kOnce}, srUsual, "NAME", "log in to the mail server", SetText<&TState::fUserName>, "A name"},
    {{u"PASSWORD", vkSecret, kOnce},
     srUsual,
     "TEXT",
     "password for it",
     SetText<&TState::fPassword>,
     "A password",
     "Other users of this machine can see a running program's command line: the environment variable "
     "VANTREL_PASSWORD is the better place."},

    // The history of scans.
    {{u"RECORD-HISTORY", vkOptionalBoolean, kRepeated},
     srUsual,
     "",
     "remember the totals of every finished scan",
     SetOption<&TGlobalOptions::RecordHistory>,
     {},
     "The option RecordHistory does the same, and --savesettings keeps it for every run."},
    {{u"HISTORY", vkPath, kRepeated},
     srUsual,
     "PATH",
     "show the earlier scans of a path",
     ShowHistory,
     "A path",
     "As a table with the growth between them, and a chart. With --filter and --exclude, the scans under that filter. "
     "The "
     "option HistoryFile names another database than the user's own."},
    {{u"HISTORY-CSV", vkFile, kOnce}, srUsual, "FILE", "the history as CSV instead", SetText<&TState::fHistoryCSV>},
    {{u"HISTORY-JSON", vkFile, kOnce},
     srUsual,
     "FILE",
     "the history as JSON instead (.jsonl: as lines)",
     SetText<&TState::fHistoryJSON>},
    {{u"HISTORY-DELETE", vkInteger, kRepeated},
     srUsual,
     "ID",
     "take a scan out of the history",
     DeleteFromHistory,
     "An ID",
     "The last column of --history."},
    {{u"HISTORY-IMPORT", vkPath, kRepeated},
     srUsual,
     "FILE",
     "add the scans of another history",
     ImportHistory,
     "A file",
     "Scans that are there already are not added again."},
    {{u"HISTORY-EXPORT", vkFile, kOnce},
     srUsual,
     "FILE",
     "copy the history to a file",
     SetText<&TState::fHistoryExport>},

    // Settings.
    {{u"OPTIONS", vkPath, kRepeated},
     srUsual,
     "FILE",
     "load options from a file",
     Nothing,
     "A file",
     "Files are loaded before all else: what the command line sets goes first."},
    {{u"NOOPTIONS", vkNone, kRepeated}, srUsual, "", "do not load the user's own options", Nothing},
    {{u"SAVESETTINGS", vkNone, kRepeated},
     srUsual,
     "",
     "keep these options for every run",
     SetFlag<&TState::fSaveSettings>},
    {{u"FORGETSETTINGS", vkNone, kRepeated},
     srUsual,
     "",
     "forget what --savesettings kept",
     SetFlag<&TState::fForgetSettings>,
     {},
     "The file of the user's own options is removed. This run does not load it, and keeps nothing itself."},
    {{u"READONLY", vkOptionalBoolean, kRepeated}, srUsual, "", "change no settings", SetFlag<&TState::fReadOnly>},
    {{u"RESTRICTED", vkOptionalBoolean, kRepeated}, srAlias, "", "", SetFlag<&TState::fReadOnly>},

    // The run.
    {Dashed(u"QUIET", vkNone, kRepeated), srUsual, "", "show no progress", SetFlag<&TState::fIsQuiet>},
    Short(u"Q", vkNone, kRepeated, SetFlag<&TState::fIsQuiet>),
    {{u"GUI", vkNone, kRepeated},
     srUsual,
     "",
     "open the window (vantrel-gui)",
     SetFlag<&TState::fShowWindow>,
     {},
     "vantrel-gui opens it without this switch, unless the run writes a file or a report. So does vantrel on Windows, "
     "if vantrel-gui.exe is in the same folder."},
    {{u"NOGUI", vkNone, kRepeated},
     srUsual,
     "",
     "run without a window",
     SetFlag<&TState::fUnattended>,
     {},
     "For scheduled tasks: no user is there. Then nothing is scanned without a path."},
    {{u"CLOSEAFTEREXPORT", vkOptionalBoolean, kRepeated},
     srUsual,
     "",
     "end once exports are written, also with a window",
     SetOption<&TGlobalOptions::CloseAfterExport>},
    {{u"NOSPLASH", vkNone, kRepeated}, srUsual, "", "no start-up picture (always the case)", Nothing},
    {{u"NOADMIN", vkNone, kRepeated}, srUsual, "", "ask for no more rights (always the case)", Nothing},
    {{u"DISABLERIGHTSELEVATION", vkNone, kRepeated}, srAlias, "", "", Nothing},
    {{u"NONE", vkNone, kRepeated}, srUsual, "", "nothing; a place to put something later", Nothing},
    {{u"DEBUG", vkNone, kRepeated},
     srUsual,
     "",
     "log what the program decides to the standard error",
     SetFlag<&TState::fDebug>},
    {{u"DEBUGLOG", vkPath, kOnce}, srUsual, "FILE", "log to a file", SetText<&TState::fDebugLogFile>, "A file"},
    {{u"DEBUGMODE", vkPath, kOnce}, srAlias, "FILE", "", SetText<&TState::fDebugLogFile>, "A file"},
    {{u"HELP", vkTopic, kOnce},
     srUsual,
     "[switches|options|NAME]",
     "this text; all switches, all options; or one",
     AskHelp,
     {},
     "Also on \"man\", a manual page, and on \"bash\", \"zsh\" and \"fish\", completions for these shells."},
    {{u"?", vkTopic, kOnce}, srAlias, "[NAME]", "", AskHelp},
    {{u"H", vkTopic, kOnce}, srAlias, "[NAME]", "", AskHelp},
    {{u"VERSION", vkNone, kRepeated}, srUsual, "", "the program's version", SetFlag<&TState::fVersion>},

    // Known, but not built.
    NotBuilt(u"EXCEL", kNoSpreadsheet),
    NotBuilt(u"SHEETNAME", kNoSpreadsheet),
    NotBuilt(u"EXPANDABLEREPORT", kNoSpreadsheet),
    NotBuilt(u"PDF", "This version writes no PDF files."),
    NotBuilt(u"HTML", "This version writes no HTML files."),
    NotBuilt(u"PRINT", "This version does not print."),
    NotBuilt(u"SQLITE", kNoIndex),
    NotBuilt(u"INDEXFILE", kNoIndex),
    NotBuilt(u"SEARCH:INTERNET", kNoSearch),
    NotBuilt(u"LOOP", kNoSnapshots),
    NotBuilt(u"CREATESNAPSHOT", kNoSnapshots),
    NotBuilt(u"EMPTYRECYCLEBIN", "This version deletes nothing."),
    NotBuilt(u"USERFILTER", "This version takes owners as patterns: --filter \"(Owner)NAME\"."),
    NotBuilt(u"SHORTDATEFORMAT", "This version writes dates as YYYY-MM-DD only."),
    NotBuilt(u"LANGUAGE", "This version speaks English only."),
    NotBuilt(u"SHOWWIZARD", kNoWindow),
    NotBuilt(u"UILEVEL", kNoWindow),
    NotBuilt(u"CONTEXTMENUENTRIES", kNoWindow),
    NotBuilt(u"THEMEDCONTEXTMENUS", kNoWindow),
    NotBuilt(u"SHOWAUTHGUI", kNoRemote),
    NotBuilt(u"AADAPPLICATIONID", kNoRemote),
    NotBuilt(u"AADREDIRECTURI", kNoRemote),
    NotBuilt(u"DISABLESHAREPOINTSITECOLLECTIONS", kNoRemote),
    NotBuilt(u"INSTALL", kNoInstaller),
    NotBuilt(u"UNINSTALL", kNoInstaller),
    NotBuilt(u"INSTALLPORTABLE", kNoInstaller),
    NotBuilt(u"UNINSTALLSURVEY", kNoInstaller),
    NotBuilt(u"REGISTERPACKAGE", kNoInstaller),
    NotBuilt(u"UNREGISTERPACKAGE", kNoInstaller),
    NotBuilt(u"SETADMINFLAG", kNoInstaller),
};

}  // namespace

std::span<const TSwitch> AllSwitches() {
  return kSwitches;
}

const TSwitch* SwitchOf(const Vantrel::TCommandLineItem* pItem) {
  if (pItem == nullptr) return nullptr;
  const auto found = std::find_if(std::begin(kSwitches), std::end(kSwitches), [&](const TSwitch& pSwitch) {
    return Vantrel::SameTextAscii(pSwitch.fItem.fName, pItem->fName);
  });
  return found == std::end(kSwitches) ? nullptr : found;
}

const TSwitch& MainSwitchOf(const TSwitch& pSwitch) {
  const TSwitch* main = &pSwitch;
  while (main->fRank == srAlias) --main;
  return *main;
}

}  // namespace Vantrel::CommandLine

#pragma once

#include <string_view>

#include "automation/CommandLineState.h"

namespace Vantrel::CommandLine {

// What the switches do, in the order of the table in SwitchTable.cpp. Each takes one value, an empty one where the switch
// has none. EInvalidArgumentValue, with a text that makes sense behind the switch, for a value that it cannot take.
using TSwitchEffect = void(TCommandLineState& pState, std::u16string_view pValue);

TSwitchEffect AddPaths;
TSwitchEffect AddCurrentFolder;
TSwitchEffect OpenFile;
TSwitchEffect CompareWith;
TSwitchEffect AddInclude;
TSwitchEffect AddExclude;
TSwitchEffect ImportPatterns;

TSwitchEffect ExportCSV;
TSwitchEffect ExportText;
TSwitchEffect ExportPathList;
TSwitchEffect ExportXML;
TSwitchEffect InsertDate;
TSwitchEffect ExportDriveList;

TSwitchEffect Expand;
TSwitchEffect SortBy;
TSwitchEffect UseColumns;
TSwitchEffect ShowFiles;
TSwitchEffect SetElements;
TSwitchEffect HideSmallFolders;
TSwitchEffect ListTopFiles;
TSwitchEffect ListExtensions;
TSwitchEffect ListUsers;
TSwitchEffect ListFileAges;
TSwitchEffect SetTitle;
TSwitchEffect SetSeparator;
TSwitchEffect OmitHeaders;
TSwitchEffect OmitUnits;

TSwitchEffect MailTo;
TSwitchEffect SetSubject;
TSwitchEffect AttachReport;
TSwitchEffect SetUserName;
TSwitchEffect SetPassword;

TSwitchEffect RecordHistory;
TSwitchEffect ShowHistory;
TSwitchEffect WriteHistoryCSV;
TSwitchEffect DeleteFromHistory;
TSwitchEffect ImportHistory;
TSwitchEffect ExportHistory;

TSwitchEffect SaveSettings;
TSwitchEffect ForgetSettings;
TSwitchEffect BeReadOnly;
TSwitchEffect BeUnattended;
TSwitchEffect CloseAfterExport;
TSwitchEffect LogToConsole;
TSwitchEffect LogToFile;
TSwitchEffect AskHelp;
TSwitchEffect AskVersion;
TSwitchEffect Nothing;

}  // namespace Vantrel::CommandLine

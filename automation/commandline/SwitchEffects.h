#pragma once

// What the switches do.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/CommandLineState.h"

namespace Vantrel::CommandLine {

// The effects of the switches, in the order of the table in SwitchTable.cpp. Each takes one value, which is empty if
// the switch has none. EInvalidArgumentValue for a value that it cannot take; the text is meant to follow the switch's
// name.
using TSwitchEffect = void(TCommandLineState& pState, std::u16string_view pValue);

// Whether the value is true; a switch without a value is true.
bool IsOn(std::u16string_view pValue);

// The paths of a list that is joined with ";". A path that holds a ";" itself must be in double quotes, or be the whole
// list and exist.
std::vector<std::u16string> SplitPaths(std::u16string_view pPaths);

// Effects of switches with a yes/no value, of switches without a value, and of switches whose value is kept unchanged.
template <bool TCommandLineState::*pFlag>
void SetFlag(TCommandLineState& pState, std::u16string_view pValue) {
  pState.*pFlag = IsOn(pValue);
}
template <bool Vantrel::TGlobalOptions::*pOption>
void SetOption(TCommandLineState& pState, std::u16string_view pValue) {
  pState.fOptions->*pOption = IsOn(pValue);
}
template <std::u16string TCommandLineState::*pText>
void SetText(TCommandLineState& pState, std::u16string_view pValue) {
  pState.*pText = pValue;
}

TSwitchEffect AddPaths;
TSwitchEffect AddCurrentFolder;
TSwitchEffect OpenFile;
TSwitchEffect KeepSearch;
TSwitchEffect ForgetSearch;
TSwitchEffect SearchAtOnce;
TSwitchEffect SearchFor;
TSwitchEffect SearchReady;
TSwitchEffect FindDuplicates;
TSwitchEffect CompareBy;
TSwitchEffect UseChecksum;
TSwitchEffect TakeEmptyFiles;
TSwitchEffect VerifyDuplicates;
TSwitchEffect AddInclude;
TSwitchEffect AddExclude;
TSwitchEffect ImportPatterns;

TSwitchEffect ExportCSV;
TSwitchEffect ExportText;
TSwitchEffect ExportPathList;
TSwitchEffect ExportXML;
TSwitchEffect ExportJSON;
TSwitchEffect ExportJSONLines;
TSwitchEffect ExportNcdu;
TSwitchEffect ExportDriveList;
TSwitchEffect ExportByName;

TSwitchEffect DrawTreemap;
TSwitchEffect DrawFolders;
TSwitchEffect DrawFoldersPie;
TSwitchEffect DrawFoldersBars;
TSwitchEffect DrawExtensions;
TSwitchEffect DrawExtensionsPie;
TSwitchEffect DrawFileTypes;
TSwitchEffect DrawUsers;
TSwitchEffect DrawUsersPie;
TSwitchEffect DrawFileAges;
TSwitchEffect DrawHistory;

TSwitchEffect Expand;
TSwitchEffect LimitDepth;  // as Expand, but what is no level is refused, so that no path is taken for one
TSwitchEffect SortBy;
TSwitchEffect UseColumns;
TSwitchEffect ShowFiles;
TSwitchEffect SetElements;
TSwitchEffect HideSmallFolders;
TSwitchEffect LeaveOutSmall;
TSwitchEffect LimitRows;
TSwitchEffect Reverse;
TSwitchEffect LeadWithSize;
TSwitchEffect SetTitle;
TSwitchEffect SetSeparator;
TSwitchEffect OmitHeaders;
TSwitchEffect OmitUnits;
TSwitchEffect SetColors;

TSwitchEffect MailTo;

TSwitchEffect ShowHistory;
TSwitchEffect DeleteFromHistory;
TSwitchEffect ImportHistory;

TSwitchEffect AskHelp;
TSwitchEffect Nothing;

// Turns the order of siblings round in every kind of output with rows.
void ReverseOrders(Vantrel::TGlobalOptions& pOptions);

}  // namespace Vantrel::CommandLine

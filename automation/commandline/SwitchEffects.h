#pragma once

// What the switches do.

#include <string>
#include <string_view>
#include <vector>

#include "automation/commandline/CommandLineState.h"

namespace Vantrel::CommandLine {

// What the switches do, in the order of the table in SwitchTable.cpp. Each takes one value, an empty one where the
// switch has none. EInvalidArgumentValue, with a text that makes sense behind the switch, for a value that it cannot
// take.
using TSwitchEffect = void(TCommandLineState& pState, std::u16string_view pValue);

// Whether the value says "true", which a switch without one does.
bool IsOn(std::u16string_view pValue);

// The paths of a list that are joined with ";". One that holds a ";" itself stands in double quotes, or is the whole
// list and exists.
std::vector<std::u16string> SplitPaths(std::u16string_view pPaths);

// Of switches that say yes or no to one thing, or only yes, and of those whose value is kept as it is.
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
TSwitchEffect AddInclude;
TSwitchEffect AddExclude;
TSwitchEffect ImportPatterns;

TSwitchEffect ExportCSV;
TSwitchEffect ExportText;
TSwitchEffect ExportPathList;
TSwitchEffect ExportXML;
TSwitchEffect ExportDriveList;

TSwitchEffect Expand;
TSwitchEffect SortBy;
TSwitchEffect UseColumns;
TSwitchEffect ShowFiles;
TSwitchEffect SetElements;
TSwitchEffect HideSmallFolders;
TSwitchEffect SetTitle;
TSwitchEffect SetSeparator;
TSwitchEffect OmitHeaders;
TSwitchEffect OmitUnits;

TSwitchEffect MailTo;

TSwitchEffect ShowHistory;
TSwitchEffect DeleteFromHistory;
TSwitchEffect ImportHistory;

TSwitchEffect AskHelp;
TSwitchEffect Nothing;

}  // namespace Vantrel::CommandLine

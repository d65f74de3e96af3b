#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "automation/CommandLineParser.h"
#include "search/PatternInterfaces.h"

namespace Vantrel::CommandLine {

// What the command line asked for, besides the options.
struct TCommandLineState {
  std::vector<std::u16string> fPaths;  // as typed, in order
  bool fUnattended = false;
  bool fHelp = false;
  std::u16string fHelpTopic;
  bool fVersion = false;
  Kiv::TRef<Kiv::PatternMatching::IPatterns> fPatterns;  // what scans take in; nullptr for everything
  std::vector<std::u16string> fOpenFiles;                // scan files to load, lists as typed
  std::u16string fCompareFile;                           // the older scan; empty: none
  std::u16string fXMLFile;                               // where the scan goes as XML; empty: nowhere
};

// One switch of the program.
struct TSwitch {
  Kiv::TCommandLineItem fItem;
  std::string_view fValueText;  // how help shows the value; a switch with neither value text nor help is an alias
  std::string_view fHelp;
  // Takes one value, an empty one when the switch has none; called for each value of a switch with several. A value
  // that it cannot take: EInvalidArgumentValue, with a text that makes sense behind the switch.
  void (*fApply)(TCommandLineState& pState, std::u16string_view pValue);
  // What is missing when there is no value, for the message; empty for a switch that does without.
  std::string_view fExpected = {};
};

// All switches, in the order in which help lists them.
std::span<const TSwitch> AllSwitches();
// The switch registered by this item; nullptr when it is none of the table.
const TSwitch* SwitchOf(const Kiv::TCommandLineItem* pItem);

}  // namespace Vantrel::CommandLine

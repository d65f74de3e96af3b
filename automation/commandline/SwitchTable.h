#pragma once

// Every switch, one row each.

#include <span>
#include <string_view>

#include "automation/commandline/CommandLineParser.h"
#include "automation/commandline/CommandLineState.h"

namespace Vantrel::CommandLine {

// Where help shows a switch.
enum class TSwitchRank : uint8_t {
  srMain,      // on the first screen
  srMore,      // among all switches
  srAlias,     // another spelling of the row above it
  srNotBuilt,  // this version knows it only to say so
};

// One switch of the program: all that there is to know of it. Parsing, help, the manual page and the completions of
// shells read this table.
struct TSwitch {
  Vantrel::TCommandLineItem fItem;
  TSwitchRank fRank;
  std::string_view fValueText;  // how help shows the value
  // What it does, in a few words; of one that is not built: what is missing, a whole sentence.
  std::string_view fHelp;
  // Takes one value, an empty one when the switch has none; called for each value of a switch with several. A value
  // that it cannot take: EInvalidArgumentValue, with a text that makes sense behind the switch. nullptr: not built.
  void (*fApply)(TCommandLineState& pState, std::u16string_view pValue) = nullptr;
  // What is missing when there is no value, for the message; empty for a switch that does without.
  std::string_view fExpected = {};
  // More sentences for its own help.
  std::string_view fDetails = {};
};

// All switches, in the order in which help lists them.
std::span<const TSwitch> AllSwitches();
// The switch registered by this item; nullptr when it is none of the table.
const TSwitch* SwitchOf(const Vantrel::TCommandLineItem* pItem);
// The switch that an alias stands for, else the switch itself.
const TSwitch& MainSwitchOf(const TSwitch& pSwitch);

}  // namespace Vantrel::CommandLine

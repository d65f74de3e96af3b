#pragma once

// Every switch, one row each.

#include <span>
#include <string_view>

#include "automation/commandline/CommandLineParser.h"
#include "automation/commandline/CommandLineState.h"

namespace Vantrel::CommandLine {

// What kind of row a switch is.
enum class TSwitchRank : uint8_t {
  srUsual,
  srAlias,     // another spelling of the row above it
  srNotBuilt,  // not built: the switch gives a message that says so
};

// One switch of the program with all that is known of it. The parser, help, the manual page and the shells' completions
// read this table.
struct TSwitch {
  Vantrel::TCommandLineItem fItem;
  TSwitchRank fRank;
  std::string_view fValueText;  // how help shows the value
  // The effect in a few words. For a switch that is not built: what is missing, as a whole sentence.
  std::string_view fHelp;
  // Applies one value, an empty one when the switch has none. Called for each value of a switch with several.
  // EInvalidArgumentValue for a value that it cannot take; the text is meant to follow the switch's name. nullptr: not
  // built.
  void (*fApply)(TCommandLineState& pState, std::u16string_view pValue) = nullptr;
  // What is missing when there is no value, for the message. Empty for a switch that needs no value.
  std::string_view fExpected = {};
  // More sentences for its own help.
  std::string_view fDetails = {};
};

// All switches, in the order in which help lists them.
std::span<const TSwitch> AllSwitches();
// The switch registered by this item; nullptr when the table does not have it.
const TSwitch* SwitchOf(const Vantrel::TCommandLineItem* pItem);
// The main switch of an alias, otherwise the switch itself.
const TSwitch& MainSwitchOf(const TSwitch& pSwitch);

}  // namespace Vantrel::CommandLine

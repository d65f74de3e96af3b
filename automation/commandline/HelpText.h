#pragma once

// The texts of `--help`, made from the tables.

#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"

namespace Vantrel::CommandLine {

// The topics that are not the name of a switch or an option.
struct THelpTopic {
  std::string_view fName;
  std::string_view fHelp;
  std::vector<std::string> (*fText)();
};
const std::vector<THelpTopic>& HelpTopics();

// Fits a screen of 24 lines and 80 columns.
std::vector<std::string> HelpText();
// Every switch that is built, and the names of the others.
std::vector<std::string> SwitchesHelpText();
// Every option with its default and range.
std::vector<std::string> OptionsHelpText();
// The default of an option as help shows it. In quotes if it has neither letters nor digits; empty if there is none.
std::string ShownDefault(const Vantrel::TOptionInfo& pOption);
// A line to copy for tasks that need more than one switch.
std::vector<std::string> ExamplesHelpText();
// The text for a command line without anything to do.
std::vector<std::string> UsageText();
// The help on a topic, a switch or an option, with or without an indicator, in any letter case. An empty topic gives
// the first screen. False when there is no such topic.
bool TryFindHelp(std::u16string_view pTopic, std::vector<std::string>& pLines);

// A task and the line that does it, for the help and the manual page.
struct TExample {
  std::string_view fTask;
  std::string_view fLine;
};
const std::vector<TExample>& Examples();

// The exit codes, a line each.
struct TExitCodeInfo {
  int fCode;
  std::string_view fMeaning;
};
const std::vector<TExitCodeInfo>& ExitCodes();

}  // namespace Vantrel::CommandLine

#include "automation/HelpText.h"

#include <fmt/format.h>

#include "automation/SwitchTable.h"
#include "model/GlobalOptions.h"
#include "platform/Text.h"

namespace Vantrel::CommandLine {

namespace {

constexpr std::string_view kUsage = "Usage: vantrel [SWITCH]... PATH...";
constexpr std::string_view kRowFormat = "  {:<26}{}";

std::string SwitchRow(const TSwitch& pSwitch) {
  return fmt::format(kRowFormat, fmt::format("--{} {}", Kiv::ToUtf8(pSwitch.fItem.fName), pSwitch.fValueText),
                     pSwitch.fHelp);
}

}  // namespace

std::vector<std::string> UsageText() {
  return {std::string(kUsage), "Try \"vantrel --help\"."};
}

std::vector<std::string> HelpText() {
  std::vector<std::string> lines = {std::string(kUsage), "Scans each path and reports where its space went.", "",
                                    "Switches, in any letter case, as --NAME, -NAME or /NAME:"};
  for (const TSwitch& item : AllSwitches())
    if (!item.fHelp.empty()) lines.push_back(SwitchRow(item));
  lines.push_back(fmt::format(kRowFormat, "--OPTION VALUE", "set an option; \"--help options\" lists them"));
  lines.push_back(fmt::format(kRowFormat, "--", "only paths follow"));
  for (std::string_view line : {"", "A value may also be written as --NAME=VALUE. Ctrl+C stops a scan; what has been",
                                "scanned by then is reported.", "",
                                "Exit code: 0 all read, 1 some folders could not be read, 2 wrong command line,",
                                "3 a path could not be scanned, 4 stopped, 5 the report could not be written."})
    lines.emplace_back(line);
  return lines;
}

std::vector<std::string> OptionsHelpText() {
  std::vector<std::string> lines = {"Options: --NAME VALUE, --NAME=VALUE or /NAME VALUE. true|false alone means true."};
  for (const Kiv::TOptionInfo& option : Kiv::AllOptions()) {
    lines.push_back(fmt::format("  --{:<28}{}", option.fName, option.fHelp));
    const std::string range = option.fRange.empty() ? "any text" : option.fRange;
    lines.push_back("      " + (option.fDefault.empty() ? range : range + ", default " + option.fDefault));
  }
  return lines;
}

}  // namespace Vantrel::CommandLine

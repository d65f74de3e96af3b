#include "automation/SwitchTable.h"

#include <algorithm>

#include "platform/Text.h"

namespace Vantrel::CommandLine {

namespace {

using Kiv::TValueKind;

// Paths may be joined with ";".
void AddPaths(TCommandLineState& pState, std::u16string_view pValue) {
  while (!pValue.empty()) {
    const size_t end = std::min(pValue.find(u';'), pValue.size());
    if (end > 0) pState.fPaths.emplace_back(pValue.substr(0, end));
    pValue.remove_prefix(std::min(end + 1, pValue.size()));
  }
}

void AskHelp(TCommandLineState& pState, std::u16string_view pTopic) {
  pState.fHelp = true;
  pState.fHelpTopic = pTopic;
}

void AskVersion(TCommandLineState& pState, std::u16string_view) {
  pState.fVersion = true;
}

void BeUnattended(TCommandLineState& pState, std::u16string_view) {
  pState.fUnattended = true;
}

constexpr TSwitch kSwitches[] = {
    {{u"SCAN", TValueKind::vkPaths, true}, "PATH[;PATH]...", "scan these paths", AddPaths},
    {{u"NOGUI", TValueKind::vkNone, true}, "", "report to the console and end (always the case)", BeUnattended},
    {{u"HELP", TValueKind::vkOptionalText, false}, "[options]", "this text, or all options", AskHelp},
    {{u"?", TValueKind::vkOptionalText, false}, "", "", AskHelp},
    {{u"h", TValueKind::vkOptionalText, false}, "", "", AskHelp},
    {{u"VERSION", TValueKind::vkNone, true}, "", "the program's version", AskVersion},
};

}  // namespace

std::span<const TSwitch> AllSwitches() {
  return kSwitches;
}

const TSwitch* SwitchOf(const Kiv::TCommandLineItem* pItem) {
  if (pItem == nullptr) return nullptr;
  const auto found = std::find_if(std::begin(kSwitches), std::end(kSwitches), [&](const TSwitch& pSwitch) {
    return Kiv::SameTextAscii(pSwitch.fItem.fName, pItem->fName);
  });
  return found == std::end(kSwitches) ? nullptr : found;
}

}  // namespace Vantrel::CommandLine

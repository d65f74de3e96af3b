#include "automation/SwitchTable.h"

#include <algorithm>

#include "platform/Paths.h"
#include "platform/Text.h"
#include "search/PatternFile.h"
#include "search/PatternList.h"

namespace Vantrel::CommandLine {

namespace {

using Kiv::TValueKind;
using Kiv::PatternMatching::CreateCheckedPattern;
using Kiv::PatternMatching::CreatePatternsFromFile;
using Kiv::PatternMatching::IPatterns;
using Kiv::PatternMatching::TPatternType;

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

IPatterns& PatternsOf(TCommandLineState& pState) {
  if (!pState.fPatterns) {
    pState.fPatterns = Kiv::MakeRef<Kiv::PatternMatching::TPatternList>(Kiv::NativePathDelimiter());
    pState.fPatterns->SetAutoSort(true);
  }
  return *pState.fPatterns;
}

void AddInclude(TCommandLineState& pState, std::u16string_view pPattern) {
  PatternsOf(pState).Add(CreateCheckedPattern(pPattern, TPatternType::ptyInclude));
}

void AddExclude(TCommandLineState& pState, std::u16string_view pPattern) {
  PatternsOf(pState).Add(CreateCheckedPattern(pPattern, TPatternType::ptyExclude));
}

void ImportPatterns(TCommandLineState& pState, std::u16string_view pFile) {
  PatternsOf(pState).AddRange(*CreatePatternsFromFile(std::u16string(pFile), TPatternType::ptyInclude));
}

void OpenFile(TCommandLineState& pState, std::u16string_view pFiles) {
  pState.fOpenFiles.emplace_back(pFiles);
}

void ExportXML(TCommandLineState& pState, std::u16string_view pFile) {
  pState.fXMLFile = pFile;
}

void CompareWith(TCommandLineState& pState, std::u16string_view pFile) {
  pState.fCompareFile = pFile;
}

constexpr TSwitch kSwitches[] = {
    {{u"SCAN", TValueKind::vkPaths, true}, "PATH[;PATH]...", "scan these paths", AddPaths},
    {{u"FILTER", TValueKind::vkPattern, true}, "PATTERN", "take in only what matches", AddInclude, "A pattern"},
    {{u"EXCLUDE", TValueKind::vkPattern, true}, "PATTERN", "leave out what matches", AddExclude, "A pattern"},
    {{u"IMPORTPATTERNS", TValueKind::vkText, true}, "FILE", "patterns, one a line", ImportPatterns, "A file"},
    {{u"OPEN", TValueKind::vkText, true}, "FILE[;FILE]...", "load scans from XML files", OpenFile, "A file"},
    {{u"XML", TValueKind::vkText, false}, "FILE", "write the scan as XML (.xml, .xml.zip)", ExportXML, "A file"},
    {{u"COMPARE", TValueKind::vkText, false}, "FILE", "show changes since an XML file", CompareWith, "A file"},
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

#pragma once

#include <span>
#include <string>
#include <vector>

#include "automation/CommandLineParser.h"
#include "automation/SwitchTable.h"

namespace Vantrel::CommandLine {

// Reads the program's switches into what a run is to do. One thread.
class TCommandLineHandler {
 public:
  // Registers the program's switches with the parser. Both arguments must outlive the handler.
  TCommandLineHandler(Kiv::TKivCommandLineParser& pParser, Kiv::TGlobalOptions& pOptions);

  void Reset();
  // Reads the tokens, without the program's name. What is wrong is collected, so that all of it is told at once.
  void HandleCommandLineSwitches(std::span<const std::u16string> pTokens);
  // Checks what only the whole command line tells. ECommandLineParserCriticalException, with all messages, one per
  // line, when anything is wrong with it.
  void FinalizeCommandLineOptions();

  const TCommandLineState& State() const { return fState; }
  bool HasErrors() const { return !fErrors.empty(); }
  const std::vector<std::string>& Errors() const { return fErrors; }

 private:
  using TTokens = std::span<const std::u16string>;
  size_t HandleSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex);
  void ApplyValue(const TSwitch& pSwitch, const std::string& pShown, const std::u16string& pValue);
  size_t HandleOption(TTokens pTokens, size_t pIndex);
  std::string SuggestionFor(std::u16string_view pToken) const;

  Kiv::TKivCommandLineParser& fParser;
  Kiv::TGlobalOptions& fOptions;
  TCommandLineState fState;
  std::vector<const TSwitch*> fSeen;
  std::vector<std::string> fErrors;
};

}  // namespace Vantrel::CommandLine

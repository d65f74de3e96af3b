#pragma once

// The tokens of a run into paths and settings, with all that is wrong with them.

#include <span>
#include <string>
#include <vector>

#include "automation/commandline/CommandLineParser.h"
#include "automation/commandline/SwitchTable.h"

namespace Vantrel::CommandLine {

// How many scans the run brings, made and loaded.
size_t NumberOfScans(const TCommandLineState& pState);

// What a run can be asked to do; the program does it. Each returns an exit code.
class ICommandLineTasks {
 public:
  virtual ~ICommandLineTasks() = default;
  virtual int ShowHelp(const std::vector<std::string>& pLines) = 0;
  virtual int ShowVersion() = 0;
  virtual int SaveSettings() = 0;
  virtual int ForgetSettings() = 0;                              // the user's own options file goes
  virtual int ExportDriveList(const std::u16string& pFile) = 0;  // empty: to the console
  // Scans, or loads scans, and runs what follows them.
  virtual int OpenAndScan() = 0;
  virtual int PrepareHistory() = 0;  // before a scan: what would fail in ManageHistory anyhow fails now
  virtual int ManageHistory() = 0;
};

// Reads the program's switches into what a run is to do. One thread.
class TCommandLineHandler {
 public:
  // Registers the program's switches with the parser. Both arguments must outlive the handler. The file of the user's
  // own options is loaded first of all; empty when there is none.
  TCommandLineHandler(Vantrel::TKivCommandLineParser& pParser, Vantrel::TGlobalOptions& pOptions,
                      std::u16string pUserOptionsFile = {});

  void Reset();
  // Loads the options files, then reads the tokens, which come without the program's name. What is wrong is collected,
  // so that all of it is told at once.
  void HandleCommandLineSwitches(std::span<const std::u16string> pTokens);
  // Checks what only the whole command line tells, and makes the names of files what they will be.
  // ECommandLineParserCriticalException, with all messages, one per line, when anything is wrong with it.
  void FinalizeCommandLineOptions();
  // Runs what was asked for, in its order, up to the first that fails. Returns the exit code.
  int ProcessCommandlineTasks(ICommandLineTasks& pTasks);

  const TCommandLineState& State() const { return fState; }
  bool HasErrors() const { return !fErrors.empty(); }
  const std::vector<std::string>& Errors() const { return fErrors; }

 private:
  using TTokens = std::span<const std::u16string>;
  void LoadOptionsFiles(TTokens pTokens);
  void LoadOptionsFile(const std::u16string& pFile, bool pIsUsersOwn);
  size_t HandleSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex);
  std::vector<std::u16string> TakeValues(const TSwitch& pSwitch, TTokens pTokens, size_t& pNext) const;
  void ApplyValues(const TSwitch& pSwitch, const std::string& pShown, std::span<const std::u16string> pValues);
  void ApplyValue(const TSwitch& pSwitch, const std::string& pShown, const std::u16string& pValue);
  // Whether the token can be the name of a file to write; CheckFileName says so when it cannot. pToken is nullptr when
  // there is none.
  bool IsFileName(const std::u16string& pToken) const;
  bool CheckFileName(const std::string& pShown, const std::u16string* pToken);
  size_t HandleFileSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex);
  size_t HandleOption(TTokens pTokens, size_t pIndex);
  bool IsMistypedSwitch(const std::u16string& pToken) const;
  std::string SuggestionFor(std::u16string_view pToken) const;
  void FinalizeExports();
  void CheckHistory();
  void CheckScans();

  Vantrel::TKivCommandLineParser& fParser;
  Vantrel::TGlobalOptions& fOptions;
  const std::u16string fUserOptionsFile;
  TCommandLineState fState;
  std::vector<const TSwitch*> fSeen;  // aliases count as what they stand for
  std::vector<std::string> fErrors;
  std::vector<std::string> fHelpText;  // of the topic asked for
  std::string fUserOptionsError;       // the user's own options cannot be loaded
  bool fIsMailed = false;
};

}  // namespace Vantrel::CommandLine

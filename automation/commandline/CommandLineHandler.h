#pragma once

// Turns the tokens of a run into paths and settings, and collects all errors in them.

#include <span>
#include <string>
#include <vector>

#include "automation/commandline/CommandLineParser.h"
#include "automation/commandline/SwitchTable.h"

namespace Vantrel::CommandLine {

// The number of scans in the run, made and loaded.
size_t NumberOfScans(const TCommandLineState& pState);

// The tasks that a command line can request; the program carries them out. Each returns an exit code.
class ICommandLineTasks {
 public:
  virtual ~ICommandLineTasks() = default;
  virtual int ShowHelp(const std::vector<std::string>& pLines) = 0;
  virtual int ShowVersion() = 0;
  virtual int SaveSettings() = 0;
  virtual int ForgetSettings() = 0;  // removes the user's own options file
  virtual int ChangeSearches() = 0;  // those that the user keeps
  virtual int ListSearches() = 0;
  virtual int ExportDriveList(const std::u16string& pFile) = 0;  // empty: to the console
  // Scans, or loads scans, and runs the actions that follow.
  virtual int OpenAndScan() = 0;
  // Searches, and writes what was found.
  virtual int Search() = 0;
  // Opens the window, which does this, and waits until it is closed.
  virtual int OpenWindow() = 0;
  virtual int PrepareHistory() = 0;  // before a scan: finds errors that would make ManageHistory fail
  virtual int ManageHistory() = 0;
};

// Reads the program's switches into what a run is to do. One thread.
class TCommandLineHandler {
 public:
  // Registers the program's switches with the parser. Both arguments must outlive the handler. The user's own options
  // file is loaded first; its path is empty when there is none. pAbilities are those of the program that runs.
  TCommandLineHandler(Vantrel::TKivCommandLineParser& pParser, Vantrel::TGlobalOptions& pOptions,
                      std::u16string pUserOptionsFile = {}, TProgramAbilities pAbilities = {});

  void Reset();
  // Loads the options files, then reads the tokens, which do not include the program's name. Errors are collected, so
  // that all of them are reported together.
  void HandleCommandLineSwitches(std::span<const std::u16string> pTokens);
  // Checks the command line as a whole and completes the names of files. ECommandLineParserCriticalException with all
  // messages, one per line, when there is any error.
  void FinalizeCommandLineOptions();
  // Runs the requested tasks in their order until one fails. Returns the exit code.
  int ProcessCommandlineTasks(ICommandLineTasks& pTasks);

  const TCommandLineState& State() const { return fState; }
  bool HasErrors() const { return !fErrors.empty(); }
  const std::vector<std::string>& Errors() const { return fErrors; }

 private:
  using TTokens = std::span<const std::u16string>;
  void LoadOptionsFiles(TTokens pTokens);
  void LoadOptionsFile(const std::u16string& pFile, bool pIsUsersOwn);
  size_t HandleSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex);
  // The switches of one token, "-x" and "-d" of "-xd", and the tokens after it. Returns how many tokens they took, with
  // the one that the letters stood in.
  size_t HandleLetters(std::vector<std::u16string> pLetters, TTokens pFollowing);
  std::vector<std::u16string> TakeValues(const TSwitch& pSwitch, TTokens pTokens, size_t& pNext) const;
  void ApplyValues(const TSwitch& pSwitch, const std::string& pShown, std::span<const std::u16string> pValues);
  void ApplyValue(const TSwitch& pSwitch, const std::string& pShown, const std::u16string& pValue);
  // Whether the token can be the name of a file to write; CheckFileName reports it when it cannot. pToken is nullptr
  // when there is none.
  bool IsFileName(const std::u16string& pToken) const;
  bool CheckFileName(const std::string& pShown, const std::u16string* pToken);
  size_t HandleFileSwitch(const TSwitch& pSwitch, TTokens pTokens, size_t pIndex);
  size_t HandleOption(TTokens pTokens, size_t pIndex);
  bool IsMistypedSwitch(const std::u16string& pToken) const;
  void FinalizeExports();
  void CheckPictures();
  void CheckHistory();
  // The settings cannot hold the name of a file that is no text.
  void CheckSavedName(const std::string& pFile, std::string_view pWhat);
  void CheckScans();
  void CheckWindow();
  // Whether there is anything to do. A search without a path is no task yet.
  bool HasTask() const;

  Vantrel::TKivCommandLineParser& fParser;
  Vantrel::TGlobalOptions& fOptions;
  const std::u16string fUserOptionsFile;
  const TProgramAbilities fAbilities;
  TCommandLineState fState;
  std::vector<const TSwitch*> fSeen;  // an alias counts as its main switch
  std::vector<std::string> fErrors;
  std::vector<std::string> fHelpText;  // help on the requested topic
  std::string fUserOptionsError;       // why the user's own options cannot be loaded
  bool fIsMailed = false;
};

}  // namespace Vantrel::CommandLine

#pragma once

// A whole run: reads the command line, does what it asks for, and gives the exit code.

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/RunLog.h"
#include "app/RunSettings.h"
#include "automation/commandline/CommandLineHandler.h"

namespace Vantrel {

// The message when there is no memory for any other text.
inline constexpr std::string_view kNoMemoryText =
    "There is not enough memory to go on. What was not finished by now is missing.\r\n";

// The program: reads a command line, and scans (`app/ScanTask.h`) or does what needs no scan. Main thread only.
class TApplication : private CommandLine::ICommandLineTasks {
 public:
  explicit TApplication(TRunSettings pSettings);

  // Runs a command line, without the program's name, and returns the exit code. Throws nothing.
  int Run(std::span<const std::u16string> pTokens);

 private:
  int ShowHelp(const std::vector<std::string>& pLines) override { return WriteLines(pLines); }
  int ShowVersion() override;
  int SaveSettings() override;
  int ForgetSettings() override;
  int ChangeSearches() override;
  int ListSearches() override;
  int ExportDriveList(const std::u16string& pFile) override;
  int OpenAndScan() override;
  int Search() override;
  int OpenWindow() override;
  int PrepareHistory() override;
  int ManageHistory() override;

  int RunCommandLine(std::span<const std::u16string> pTokens);
  int WriteLines(const std::vector<std::string>& pLines);

  TRunSettings fSettings;
  const std::shared_ptr<TGlobalOptions> fOptions;
  CommandLine::TCommandLineState fState;  // what the command line asked for
  TRunLog fLog;
};

}  // namespace Vantrel

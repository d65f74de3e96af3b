#pragma once

// A whole run: reads the command line, scans path after path, reports, and gives the exit code.

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/RunLog.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineHandler.h"
#include "model/roots/RootInterfaces.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::XML {
struct TLoadedRoot;
}

namespace Vantrel {

// The settings of a run. Tests pass their own streams and roots; CreateRunSettings gives the real ones.
struct TRunSettings {
  std::string fPlatformName;  // "Linux"
  // Set: the last tree is not freed, and the caller ends the process at once with the code that Run returned. Freeing
  // millions of nodes takes a noticeable part of a run and is of no use then. Leak checks need the orderly way.
  bool fLeaveQuickly = false;
  bool fShowProgress = false;
  std::u16string fUserOptionsFile;  // empty: there is none
  int fReportWidth = 0;             // columns, 0 for any number
  Vantrel::PostScanActions::ILineOutput* fOutput = nullptr;
  std::function<void(std::string_view)> fWriteError;
  std::function<Vantrel::TRef<Vantrel::IScanRoots>(std::shared_ptr<const Vantrel::TGlobalOptions>)> fCreateRoots;
};

// The streams of the process and scans of the file system.
TRunSettings CreateRunSettings(std::string pPlatformName);

// The message when there is no memory for any other text.
inline constexpr std::string_view kNoMemoryText =
    "There is not enough memory to go on. What was not finished by now is missing.\r\n";

// The program: reads a command line, scans its paths one after the other and reports on each. Main thread only.
class TApplication : private Vantrel::PostScanActions::IPostScanHost, private CommandLine::ICommandLineTasks {
 public:
  explicit TApplication(TRunSettings pSettings);

  // Runs a command line, without the program's name, and returns the exit code. Throws nothing.
  int Run(std::span<const std::u16string> pTokens);

  // Stops the running scan. The part scanned is reported, and no further path is scanned. May be called from a signal
  // handler.
  static void RequestCancel();

 private:
  bool IsTerminating() const override { return fTerminating; }
  bool IsUnattended() const override { return true; }  // there is no window
  bool MustStayOpen() const override { return fPathsLeft > 0; }
  bool ClosesAfterExport() const override { return fOptions->CloseAfterExport; }
  int ModalLevel() const override { return 0; }
  void Terminate() override { fTerminating = true; }
  std::string ProgramName() const override;

  int ShowHelp(const std::vector<std::string>& pLines) override { return WriteLines(pLines); }
  int ShowVersion() override;
  int SaveSettings() override;
  int ForgetSettings() override;
  int ExportDriveList(const std::u16string& pFile) override;
  int OpenAndScan() override;
  int PrepareHistory() override;
  int ManageHistory() override;

  int RunCommandLine(std::span<const std::u16string> pTokens);
  int WriteLines(const std::vector<std::string>& pLines);
  bool QueueActions(Vantrel::IScanRoots& pRoots);
  void QueueMail();
  int WriteFailures();
  int OpenFile(Vantrel::IScanRoots& pRoots, const std::u16string& pFile);
  int ReportLoaded(Vantrel::IScanRoots& pRoots, const Vantrel::XML::TLoadedRoot& pLoaded);
  int ScanPaths(Vantrel::IScanRoots& pRoots, const std::vector<std::u16string>& pPaths);
  int ScanPath(Vantrel::IScanRoots& pRoots, const std::u16string& pPath);
  void NoteUnmatched(const std::vector<std::u16string>& pPatterns);
  void WriteUnmatched();
  void WriteWarnings(const Vantrel::IScanFilter& pFilter);
  int ReportRoot(Vantrel::IScanRoots& pRoots, Vantrel::IHierarchicalRoot& pRoot, const std::u16string& pPath);
  int PerformActions(Vantrel::IScanRoots& pRoots, Vantrel::IHierarchicalRoot& pRoot);
  void WaitForScan(Vantrel::IHierarchicalRoot& pRoot);
  std::vector<std::u16string> WithoutRepeatedPaths(const Vantrel::IScanRoots& pRoots,
                                                   const std::vector<std::u16string>& pPaths);

  const TRunSettings fSettings;
  const std::shared_ptr<Vantrel::TGlobalOptions> fOptions;
  Vantrel::Exporting::TMediaOptions fMedia;
  Vantrel::PostScanActions::TPostProcessActionHandler fActions;
  CommandLine::TCommandLineState fState;  // what the command line asked for
  size_t fPathsLeft = 0;
  bool fTerminating = false;
  std::optional<std::vector<std::u16string>> fUnmatched;  // patterns that matched nothing; none before the first scan
  TRunLog fLog;
};

}  // namespace Vantrel

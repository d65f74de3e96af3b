#pragma once

// The part of a run that opens scan files and scans paths, one after the other, and reports on each.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/RunLog.h"
#include "app/RunSettings.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "model/roots/RootInterfaces.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel {

// Opens the files and scans the paths of a command line, each followed by the actions that it asks for. Main thread
// only.
class TScanTask : private PostScanActions::IPostScanHost {
 public:
  // All arguments must outlive the run. pState's options are pOptions.
  TScanTask(const TRunSettings& pSettings, const CommandLine::TCommandLineState& pState,
            std::shared_ptr<TGlobalOptions> pOptions, TRunLog& pLog);

  // Returns the exit code.
  int Run();

 private:
  bool IsTerminating() const override { return fTerminating; }
  bool IsUnattended() const override { return true; }  // there is no window
  bool MustStayOpen() const override { return fPathsLeft > 0; }
  bool ClosesAfterExport() const override { return fOptions->CloseAfterExport; }
  int ModalLevel() const override { return 0; }
  void Terminate() override { fTerminating = true; }
  std::string ProgramName() const override;

  int OpenFile(IScanRoots& pRoots, const std::u16string& pFile);
  int ReportLoaded(IScanRoots& pRoots, IHierarchicalRoot& pRoot);
  int ScanPaths(IScanRoots& pRoots, const std::vector<std::u16string>& pPaths);
  int ScanPath(IScanRoots& pRoots, const std::u16string& pPath);
  void WaitForScan(IHierarchicalRoot& pRoot);
  int ReportRoot(IScanRoots& pRoots, IHierarchicalRoot& pRoot, const std::u16string& pPath);
  int PerformActions(IScanRoots& pRoots, IHierarchicalRoot& pRoot);
  int WriteFailures();
  void WriteWarnings(const IScanFilter& pFilter);
  void NoteUnmatched(const std::vector<std::u16string>& pPatterns);
  void WriteUnmatched();
  std::vector<std::u16string> WithoutRepeatedPaths(const IScanRoots& pRoots, const std::vector<std::u16string>& pPaths);

  const TRunSettings& fSettings;
  const CommandLine::TCommandLineState& fState;  // what the command line asked for
  const std::shared_ptr<TGlobalOptions> fOptions;
  TRunLog& fLog;
  Exporting::TMediaOptions fMedia;
  PostScanActions::TPostProcessActionHandler fActions;
  size_t fPathsLeft = 0;
  bool fTerminating = false;
  std::optional<std::vector<std::u16string>> fUnmatched;  // patterns that matched nothing; none before the first scan
};

}  // namespace Vantrel

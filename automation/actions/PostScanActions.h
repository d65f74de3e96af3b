#pragma once

// The queue of actions that follow a scan, and the default report.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "export/walk/HierarchicalExport.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel::PostScanActions {

using Exporting::ILineOutput;
using Exporting::TMediaOptions;
using Exporting::TMediaSettings;
using Exporting::TMediaType;

// An action that the command line requests for each scanned root.
class TBasePostScanAction {
 public:
  static constexpr uint32_t kMayClose = 1;  // with the closing option the program may end once this action has run
  static constexpr uint32_t kPrepares = 2;  // runs before the others and does not replace a report
  static constexpr uint32_t kSaves = 4;     // writes the scan alone: runs even before that
  static constexpr int32_t kAnyLevel = -1;

  virtual ~TBasePostScanAction() = default;
  // Before any scan: detects errors that would make the action fail later.
  virtual void Prepare() {}
  // For each root, before any action of the queue writes: reads files that may be replaced.
  virtual void ReadInput(IHierarchicalRoot&) {}
  // Failures are exceptions. The other actions still run.
  virtual void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) = 0;
  // After the last root: completes files that hold several roots and moves them into place.
  virtual void Finish() {}
  virtual std::u16string GetInformation() const = 0;  // one line for the log
  // Folder levels that the action needs of the tree; kAnyLevel if it has no requirement.
  virtual int32_t GetRecursionlevel() const { return kAnyLevel; }
  virtual uint32_t GetFlags() const { return 0; }
  // The exit code of a run in which the action failed.
  virtual int GetFailureCode() const;
  virtual bool UsesMedia(TMediaType) const { return false; }
  // Whether it writes a report where the user sees it at once.
  virtual bool ShowsReport() const { return false; }
  // Paths of the files that a mail takes along; complete once Finish has returned.
  virtual std::vector<std::u16string> GetAttachments() const { return {}; }
  // Those of them that stay when the run has ended.
  virtual std::vector<std::u16string> GetWrittenFiles() const { return {}; }
};

// An action that failed.
struct TActionFailure {
  std::string fMessage;  // empty: no message, since the reader of the output has left
  int fExitCode;
};

// What the actions need to know about the program.
class IPostScanHost {
 public:
  virtual ~IPostScanHost() = default;
  virtual bool IsTerminating() const = 0;
  virtual bool IsUnattended() const = 0;       // no window
  virtual bool MustStayOpen() const = 0;       // work is left that only a running program can do
  virtual bool ClosesAfterExport() const = 0;  // the closing option
  virtual int ModalLevel() const = 0;          // modal dialogs that are open
  virtual void Terminate() = 0;
  virtual std::string ProgramName() const = 0;
  // What a view shows expanded of the root; nullptr without a view.
  virtual std::shared_ptr<const TExpandedFolders> ExpandedFolders(const IHierarchicalRoot&) const { return nullptr; }
};

// The queue of actions; runs it for each root whose scan has finished. Main thread only.
class TPostProcessActionHandler {
 public:
  // All arguments must outlive the handler. The default report goes to pOutput.
  TPostProcessActionHandler(IPostScanHost& pHost, TMediaOptions& pMedia, ILineOutput& pOutput);

  void Add(std::unique_ptr<TBasePostScanAction> pAction) { fActions.push_back({std::move(pAction)}); }
  bool IsEmpty() const { return fActions.empty(); }
  // Sorts the queue and asks each action whether it can work. Actions that prepare others come first. If there is one,
  // actions that save the scan come before it. False when an action cannot work: then nothing should be scanned.
  bool ResolveRequirements();
  // The export settings for all actions with one kind of output, with enough levels for each of them.
  TMediaSettings MergedRecursionLevel(TMediaType pMedia) const;
  std::shared_ptr<const TExpandedFolders> ExpandedFolders(const IHierarchicalRoot& pRoot) const {
    return fHost.ExpandedFolders(pRoot);
  }
  // Runs the queue, or writes the default report if no action writes and there is no window. Then ends the program when
  // no work is left. False when an action failed. An action that has failed is not run again.
  bool PerformPostProcessActions(IHierarchicalRoot* pRoot, const IScanRoots& pScans);
  // Completes, in their order, all actions that have not failed. Called after the last root. False when one failed.
  bool FinishActions();
  // What has failed since the last call.
  std::vector<TActionFailure> TakeFailures() { return std::exchange(fFailures, {}); }
  // The files of all actions for a mail. EInvalidOperation that names a missing one.
  std::vector<std::u16string> CheckAttachments() const;
  // The files that the run leaves behind, in the order of the queue. Complete once FinishActions has returned.
  std::vector<std::u16string> GetWrittenFiles() const;
  bool ShouldCloseApplication() const;
  // Whether the user sees a report of each root. If not, the caller reports what could not be read.
  bool ShowsReport() const;
  // Whether one more root would be written anywhere: false once all actions that write have failed.
  bool CanWriteMore() const;

 private:
  // An action of the queue.
  struct TQueued {
    std::unique_ptr<TBasePostScanAction> fAction;
    bool fFailed = false;
  };

  bool WritesNothing() const;
  // False when the action failed, which is noted.
  template <class TCall>
  bool Call(TQueued& pQueued, const TCall& pCall);
  template <class TCall>
  bool CallEach(const TCall& pCall);
  void Fail(TQueued& pQueued, std::string_view pMessage, int pExitCode);
  bool WriteDefaultReport(IHierarchicalRoot& pRoot);
  bool RunActions(IHierarchicalRoot& pRoot);
  void EndProgram();

  IPostScanHost& fHost;
  TMediaOptions& fMedia;
  ILineOutput& fOutput;
  std::vector<TQueued> fActions;
  std::vector<TActionFailure> fFailures;
  bool fReportFailed = false;
};

}  // namespace Vantrel::PostScanActions

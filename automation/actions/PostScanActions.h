#pragma once

// The queue of what follows a scan, and the default report.

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

// Something that the command line wants done with a root once it is scanned.
class TBasePostScanAction {
 public:
  static constexpr uint32_t kMayClose = 1;  // with the closing option the program may end once this action has run
  static constexpr uint32_t kPrepares = 2;  // comes before the others, and takes no report's place
  static constexpr uint32_t kSaves = 4;     // writes the scan alone: comes before even that
  static constexpr int32_t kAnyLevel = -1;

  virtual ~TBasePostScanAction() = default;
  // Before anything is scanned: what would fail anyhow fails now.
  virtual void Prepare() {}
  // For each root, before any action of the queue writes: reads what may be written over.
  virtual void ReadInput(IHierarchicalRoot&) {}
  // Failures are exceptions. The others of the queue go on.
  virtual void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) = 0;
  // After the last root. What spans several of them is completed here, and takes its place.
  virtual void Finish() {}
  virtual std::u16string GetInformation() const = 0;  // one line for the log
  // Folder levels that the action needs of the tree; kAnyLevel when it has no say in it.
  virtual int32_t GetRecursionlevel() const { return kAnyLevel; }
  virtual uint32_t GetFlags() const { return 0; }
  // The exit code of a run in which the action failed.
  virtual int GetFailureCode() const;
  virtual bool UsesMedia(TMediaType) const { return false; }
  // Whether it writes a report where the user sees it at once.
  virtual bool ShowsReport() const { return false; }
  // Paths of the files that a mail takes along; complete once Finish has returned.
  virtual std::vector<std::u16string> GetAttachments() const { return {}; }
};

// An action that failed.
struct TActionFailure {
  std::string fMessage;  // empty when nobody is to be told: the reader of the output has left
  int fExitCode;
};

// What the actions must know of the program that they run in.
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
};

// The queue of actions; runs it for each root whose scan has finished. Used on the main thread only.
class TPostProcessActionHandler {
 public:
  // All arguments must outlive the handler. The output takes the default report.
  TPostProcessActionHandler(IPostScanHost& pHost, TMediaOptions& pMedia, ILineOutput& pOutput);

  void Add(std::unique_ptr<TBasePostScanAction> pAction) { fActions.push_back({std::move(pAction)}); }
  bool IsEmpty() const { return fActions.empty(); }
  // Puts the queue in order, and lets each action find out whether it can work at all. What prepares others comes
  // first; where there is such an action, what saves the scan comes before it. False when one cannot: then nothing
  // should be scanned.
  bool ResolveRequirements();
  // The settings with which the tree is exported for all actions of one kind of output together: deep enough for each.
  TMediaSettings MergedRecursionLevel(TMediaType pMedia) const;
  // Runs the queue, or writes the default report to the output when nothing in the queue writes and there is no window;
  // then ends the program when nothing is left to do. False when something of it failed. An action that has failed is
  // not run again.
  bool PerformPostProcessActions(IHierarchicalRoot* pRoot, const IScanRoots& pScans);
  // Completes all actions that have not failed, in their order, after the last root. False when one failed.
  bool FinishActions();
  // What has failed since the last call.
  std::vector<TActionFailure> TakeFailures() { return std::exchange(fFailures, {}); }
  // The files that a mail takes along: those of all actions. EInvalidOperation that names one that is not there.
  std::vector<std::u16string> CheckAttachments() const;
  bool ShouldCloseApplication() const;
  // Whether the user sees a report of each root. Otherwise the caller tells what could not be read.
  bool ShowsReport() const;
  // Whether one more root would be written anywhere: not once all that writes has failed.
  bool CanWriteMore() const;

  // Columns of the default report's lines, 0 for any number.
  void SetReportWidth(int pColumns) { fReportWidth = pColumns; }

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
  int fReportWidth = 0;
  bool fReportFailed = false;
};

}  // namespace Vantrel::PostScanActions

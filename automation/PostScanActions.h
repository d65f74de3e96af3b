#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "export/HierarchicalExport.h"
#include "export/MediaOptions.h"
#include "model/RootInterfaces.h"

namespace Kiv::PostScanActions {

using Hierarchical::Exporting::ILineOutput;
using Hierarchical::Exporting::TMediaOptions;
using Hierarchical::Exporting::TMediaSettings;
using Hierarchical::Exporting::TMediaType;

// Something that the command line wants done with a root once it is scanned.
class TBasePostScanAction {
 public:
  static constexpr uint32_t kMayClose = 1;  // with the closing option the program may end once this action has run
  static constexpr int32_t kAnyLevel = -1;

  virtual ~TBasePostScanAction() = default;
  // Failures are exceptions; they end the queue.
  virtual void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) = 0;
  virtual std::u16string GetInformation() const = 0;  // one line for the log
  // Folder levels that the action needs of the tree; kAnyLevel when it has no say in it.
  virtual int32_t GetRecursionlevel() const { return kAnyLevel; }
  virtual uint32_t GetFlags() const { return 0; }
  virtual bool UsesMedia(TMediaType) const { return false; }
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

  void Add(std::unique_ptr<TBasePostScanAction> pAction) { fActions.push_back(std::move(pAction)); }
  bool IsEmpty() const { return fActions.empty(); }
  // The settings with which the tree is exported for all actions of one kind of output together: deep enough for each.
  TMediaSettings MergedRecursionLevel(TMediaType pMedia) const;
  // Runs the queue, or writes the default report to the output when the queue is empty and there is no window; then
  // ends the program when nothing is left to do. False when the output could not take the report.
  bool PerformPostProcessActions(IHierarchicalRoot* pRoot, const IScanRoots& pScans);
  bool ShouldCloseApplication() const;

  // Columns of the default report's lines, 0 for any number.
  void SetReportWidth(int pColumns) { fReportWidth = pColumns; }

 private:
  bool WriteDefaultReport(IHierarchicalRoot& pRoot);
  void RunActions(IHierarchicalRoot& pRoot);
  void EndProgram();

  IPostScanHost& fHost;
  TMediaOptions& fMedia;
  ILineOutput& fOutput;
  std::vector<std::unique_ptr<TBasePostScanAction>> fActions;
  int fReportWidth = 0;
};

}  // namespace Kiv::PostScanActions

#pragma once

// What the window works with: the options, the open roots, and the work on them that runs beside the window.

#include <QObject>
#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "automation/commandline/CommandLineState.h"
#include "model/tree/ExpandedFolders.h"
#include "window/main/WindowStart.h"

namespace Vantrel::Window {

class TScanFollowUp;

// Work that takes time, such as reading a scan file. The bytes and the wish to stop are shared with its thread.
struct TJob {
  QString fTitle;
  std::atomic<bool> fCancelled{false};
  std::atomic<uint64_t> fBytes{0};
};

// Window thread only. Nothing here waits: what takes time goes to other threads, and signals tell its end.
class TSession : public QObject {
  Q_OBJECT
 public:
  explicit TSession(TWindowStart pStart, QObject* pParent = nullptr);
  // Stops all scans and jobs. Does not wait long for what hangs.
  ~TSession() override;

  const TWindowStart& Start() const { return fStart; }
  TGlobalOptions& Options() { return *fStart.fOptions; }
  IScanRoots& Roots() { return *fRoots; }
  const std::vector<std::shared_ptr<TJob>>& Jobs() const { return fJobs; }
  // The database of the history.
  std::u16string HistoryFile() const;

  // What the tree shows expanded of a root, for exports. Set by the window, and called on its thread.
  using TFindExpanded = std::function<std::shared_ptr<const TExpandedFolders>(const IHierarchicalRoot&)>;
  void SetFindExpanded(TFindExpanded pFind) { fFindExpanded = std::move(pFind); }
  // What the command line asked for. Called once the window listens.
  void Begin();
  // Scans a path as typed. An open root is scanned again.
  void Scan(const std::u16string& pPath);
  void ScanAgain(const TRef<IHierarchicalRoot>& pRoot);
  void Close(const TRef<IHierarchicalRoot>& pRoot);
  void OpenScanFile(const std::u16string& pFile);
  void Export(const TRef<IHierarchicalRoot>& pRoot, CommandLine::TExportFormat pFormat, const std::u16string& pFile);
  void ExportPicture(const TRef<IHierarchicalRoot>& pRoot, const CommandLine::TPictureRequest& pRequest);
  void Compare(const TRef<IHierarchicalRoot>& pRoot, const std::u16string& pFile);
  void EndComparison(const TRef<IHierarchicalRoot>& pRoot);
  // Takes the folder out of the tree, and out of further scans of its root.
  void LeaveOut(const TRef<IHierarchicalRoot>& pRoot, const TRef<IFolderData>& pFolder);
  // Takes over edited options, and keeps what differs from the present ones in the user's file. What the command line
  // set stays out of that file. Scans that run keep the options they began with.
  void SetOptions(const TGlobalOptions& pEdited);
  // A root's scan has ended, as the tree's queue of changes told.
  void ScanEnded(const TRef<IHierarchicalRoot>& pRoot);
  bool IsReadOnly() const { return fStart.fReadOnly; }

 Q_SIGNALS:
  void Opened(const Vantrel::TRef<Vantrel::IHierarchicalRoot>& pRoot);
  void Closing(const Vantrel::TRef<Vantrel::IHierarchicalRoot>& pRoot);
  void Compared(const Vantrel::TRef<Vantrel::IHierarchicalRoot>& pRoot);
  // A file was written, or something else ended well: for the status bar.
  void Told(const QString& pMessage);
  void Failed(const QString& pTitle, const QString& pMessage);
  void JobsChanged();
  void HistoryChanged();
  // The command line wants the program to end after its exports.
  void CloseWanted();

 private:
  TRef<IHierarchicalRoot> StartScan(const std::u16string& pPath, bool pIsFromStart);
  void StartScanOf(const TRef<IHierarchicalRoot>& pRoot);
  void KeepOptions(const std::vector<const TOptionInfo*>& pChanged);
  void RecordHistory(const TRef<IHierarchicalRoot>& pRoot);
  template <class TWork, class TDone>
  void RunJob(const QString& pTitle, TWork pWork, TDone pDone);

  TWindowStart fStart;
  TRef<IScanRoots> fRoots;
  TFindExpanded fFindExpanded;
  std::unique_ptr<TScanFollowUp> fFollowUp;  // none when nothing follows
  std::vector<std::shared_ptr<TJob>> fJobs;
  std::set<const IHierarchicalRoot*> fStarting;  // their scans are being started on another thread
};

}  // namespace Vantrel::Window

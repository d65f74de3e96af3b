#pragma once

// What the command line asks for after its scans, run beside the window.

#include <QObject>
#include <deque>
#include <memory>
#include <set>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "window/main/Session.h"

namespace Vantrel::Window {

struct TWindowStart;

// Runs the queue of actions for each root of the command line, one root after the other, on another thread. Window
// thread only.
class TScanFollowUp : public QObject {
  Q_OBJECT
 public:
  TScanFollowUp(const TWindowStart& pStart, IScanRoots& pRoots);
  ~TScanFollowUp() override;

  // What the tree shows expanded of a root when its actions begin.
  void SetFindExpanded(TSession::TFindExpanded pFind) { fFindExpanded = std::move(pFind); }
  // Before the scans. False when an action cannot work: then nothing is scanned.
  bool Prepare();
  // The root's scan belongs to the command line.
  void Expect(const IHierarchicalRoot& pRoot);
  // True when the root was expected; the actions then run.
  bool ScanEnded(const TRef<IHierarchicalRoot>& pRoot);
  void Loaded(const TRef<IHierarchicalRoot>& pRoot);
  // One path or file gave no root.
  void RootFailed();

 Q_SIGNALS:
  void Failed(const QString& pTitle, const QString& pMessage);
  void CloseWanted();

 private:
  struct TRun;

  void RunNext();
  void FinishRun();
  void TellFailures();

  std::shared_ptr<TRun> fRun;  // shared with the thread that runs it
  std::set<const IHierarchicalRoot*> fExpected;
  TSession::TFindExpanded fFindExpanded;
  std::deque<TRef<IHierarchicalRoot>> fWaiting;
  size_t fLeft;  // roots whose actions have not run
  bool fIsRunning = false;
};

}  // namespace Vantrel::Window

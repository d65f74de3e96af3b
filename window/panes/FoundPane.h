#pragma once

// What the panes that search have in common: a line for the query, buttons, a list that fills while the search runs.

#include <QTimer>
#include <memory>
#include <vector>

#include "window/panes/FoundWork.h"
#include "window/panes/Pane.h"

class QLabel;
class QMenu;
class QToolButton;

namespace Vantrel::Window {

class TQueryEdit;
class TTableView;
struct TWindowStart;
enum class TSymbol : uint8_t;

// The search runs on other threads. Its list is filled while it runs, and stays until the next search.
class TFoundPane : public TPane {
  Q_OBJECT
 public:
  ~TFoundPane() override;

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override {}

  void SetQuery(const std::u16string& pQuery);
  // Searches. A search that runs is given up.
  virtual void Start() = 0;
  // What was found stays.
  void Stop();
  // The root is about to be closed. What was found in it alone is forgotten.
  void ForgetRoot(const IHierarchicalRoot& pRoot);
  bool IsSearching() const { return fIsSearching; }
  // Writes all that was found so far, in the format of the file's ending. Failures are shown.
  void ExportTo(const QString& pFile);

  TQueryEdit& Query() { return *fQuery; }
  TTableView& Table() { return *fTable; }
  QString Message() const;
  QString Status() const;

 protected:
  TFoundPane(const TWindowStart& pStart, const char* pName, const QString& pExportName, QWidget* pParent);

  // What each kind of search does in its own way.
  virtual void TakeNews(TFoundNews& pNews) = 0;
  virtual void ForgetFound() = 0;
  virtual QString PathAt(const QModelIndex& pIndex) const = 0;
  virtual void Activate(const QModelIndex& pIndex);
  virtual void AddToMenu(QMenu&) {}
  virtual void SetSearching(bool pIsSearching);

  // The parts, from the top to the bottom.
  void LayOut(const std::vector<QWidget*>& pControls);
  QToolButton* NewButton(TSymbol pSymbol, const QString& pHint);
  // Runs the work in place of an earlier one. pRoots are those in whose trees the rows lie.
  void Begin(std::shared_ptr<TFoundWork> pWork, std::vector<TRef<IHierarchicalRoot>> pRoots);
  // Looks at the search without waiting for the next turn.
  void LookSoon();
  void ShowError(const QString& pText);

  const TWindowStart& fStart;
  TPlace fPlace;
  TQueryEdit* fQuery;
  QToolButton* fStartButton;
  QToolButton* fStopButton;
  QToolButton* fExportButton;
  QLabel* fMessage;
  TTableView* fTable;
  QLabel* fStatus;

 private:
  void Look();
  void GiveUp();
  void ShowMenu(const QPoint& pAt);
  void AskForExport();

  const QString fExportName;
  std::shared_ptr<TFoundWork> fWork;
  std::vector<TRef<IHierarchicalRoot>> fSearchedRoots;
  TFoundOrder fOrder;
  QTimer fNextLook;
  bool fHasStarted = false;
  bool fIsSearching = false;
  bool fIsLooking = false;
};

}  // namespace Vantrel::Window

#pragma once

// The pane that searches for files, in the scanned tree or on the disk.

#include <QTimer>
#include <memory>

#include "window/panes/Pane.h"
#include "window/panes/SearchWork.h"

class QComboBox;
class QLabel;
class QMenu;
class QToolButton;

namespace Vantrel::Window {

class TListModel;
class TQueryEdit;
class TTableView;
struct TWindowStart;

// The search runs on other threads. Its list is filled while it runs, and stays until the next search.
class TSearchPane : public TPane {
  Q_OBJECT
 public:
  explicit TSearchPane(const TWindowStart& pStart, QWidget* pParent = nullptr);
  ~TSearchPane() override;

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override {}
  TPrintable Printable() const override;
  void SetUnit(TSizeUnit pUnit);

  void SetQuery(const std::u16string& pQuery);
  // Keeps the query of the line with a name in the user's options file, as --keepsearch does; or forgets one.
  void Keep(const QString& pName);
  void Forget(const QString& pName);
  QMenu& Searches() { return *fSearches; }
  // Searches for the query that stands in the line. A search that runs is given up.
  void Start();
  void Stop();
  // The root is about to be closed.
  void ForgetRoot(const IHierarchicalRoot& pRoot);
  bool IsSearching() const { return fIsSearching; }
  // Writes all that was found so far, in the format of the file's ending. Failures are shown.
  void ExportTo(const QString& pFile);

  TQueryEdit& Query() { return *fQuery; }
  QComboBox& Target() { return *fTarget; }
  TListModel& Model() { return *fModel; }
  TTableView& Table() { return *fTable; }
  QString Message() const;
  QString Status() const;

 private:
  QWidget* MakeControls();
  QToolButton* NewSearchesButton();
  void FillSearches();
  void AskForName();
  bool ChangeKept(const CommandLine::TCommandLineState& pChange);
  void Look();
  void TakeNews(TSearchNews pNews);
  void ShowError(const QString& pText);
  void SetSearching(bool pIsSearching);
  void Activate(const QModelIndex& pIndex);
  void ShowMenu(const QPoint& pAt);
  void AskForExport();

  const TWindowStart& fStart;
  TPlace fPlace;
  TQueryEdit* fQuery;
  QComboBox* fTarget;
  QToolButton* fStartButton = nullptr;
  QToolButton* fStopButton = nullptr;
  QToolButton* fExportButton = nullptr;
  QMenu* fSearches = nullptr;  // kept and ready-made ones
  QLabel* fMessage;
  TTableView* fTable;
  TListModel* fModel;
  QLabel* fStatus;
  std::shared_ptr<TSearchWork> fWork;
  TSearchOrder fOrder;
  QTimer fNextLook;
  bool fIsSearching = false;
  bool fIsLooking = false;
};

}  // namespace Vantrel::Window

#pragma once

// The program's one window.

#include <QHash>
#include <QMainWindow>
#include <QSet>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "model/tree/HierarchicalInterfaces.h"
#include "window/panes/Pane.h"

class QActionGroup;
class QLabel;
class QMenu;
class QProgressBar;
class QSplitter;
class QStackedWidget;
class QTabWidget;
class QToolButton;

namespace Vantrel::Window {

struct TWindowStart;
enum class TFigure : uint8_t;
class TContentsPane;
class TDuplicatesPane;
class TEntriesModel;
class TEntriesView;
class TFoundPane;
class TListPane;
class TPathBar;
class TSearchPane;
class TSession;
class TStartPage;
class TTreeModel;
class TWindowSettings;

// The tree on the left, panes for the chosen folder on the right, and a start page before anything is scanned. The
// sources: `MainWindow.cpp` has the parts and what is chosen, `MainMenus.cpp` the menus, `MainActions.cpp` what they
// do, `MainStatus.cpp` the status bar.
class TMainWindow : public QMainWindow {
  Q_OBJECT
 public:
  explicit TMainWindow(const TWindowStart& pStart);
  ~TMainWindow() override;

  // What the user chose last, in the tree or in the contents.
  struct TChosen {
    TRef<IHierarchicalRoot> fRoot;
    TRef<IFolderData> fFolder;  // the folder itself, or the one that holds the file
    std::u16string fPath;
    bool fIsFile = false;
    bool fIsGone = false;
  };

  TSession& Session() { return *fSession; }
  TTreeModel& Tree() { return *fTree; }
  TEntriesView& TreeView() { return *fTreeView; }
  TContentsPane& Contents() { return *fContents; }
  QTabWidget& Panes() { return *fPanes; }
  TStartPage& StartPage() { return *fStartPage; }
  TSearchPane& Search() { return *fSearch; }
  TDuplicatesPane& Duplicates() { return *fDuplicates; }
  const TChosen& Chosen() const { return fChosen; }
  void ShowStartPage();
  // Writes the chosen root in one of the formats of ExportKinds.
  void ExportAs(int pKind, const QString& pFile);
  void GoTo(const QString& pPath);

 protected:
  void closeEvent(QCloseEvent* pEvent) override;
  void dragEnterEvent(QDragEnterEvent* pEvent) override;
  void dropEvent(QDropEvent* pEvent) override;

 private:
  // parts
  QWidget* MakeWorkspace();
  void MakePanes();
  void AddPane(TPane* pPane, const QString& pTitle);
  template <class TFill>
  TListPane& AddListPane(const char* pName, const QString& pTitle, const QString& pEmptyText, TFill pFill);
  void MakeMenus();
  void MakeFileMenu();
  void MakeScanMenu();
  void MakeViewMenu();
  void AddChoices(QMenu& pMenu, const char* pName, const QStringList& pTexts, const std::function<void(int)>& pChoose);
  void MakeItemMenu();
  void MakeHelpMenu();
  void MakeToolBar();
  void MakeStatusBar();
  QAction* NewAction(const char* pName, const QString& pText, const QKeySequence& pKeys, void (TMainWindow::*pDo)());
  void ConnectSession();
  void ConnectViews();
  void RestoreLayout();
  void KeepLayout();

  // what is chosen
  void Choose(const TEntriesModel& pModel, const QModelIndex& pIndex);
  void ShowChosenFolder();
  void ShowItemMenu(const TEntriesView& pView, const QModelIndex& pIndex, const QPoint& pAt);
  TRef<IHierarchicalRoot> ChosenRoot() const;
  void UpdateActions();
  void Tick();
  void ShowStatus();
  void ShowJobs();
  void ShowPause(bool pIsPaused);
  void SetFigure(TFigure pFigure);
  void SetUnit(int pUnit);

  // actions
  void ScanTyped(const QString& pPath);
  void ScanFolder();
  void ScanAgain();
  void Refresh();
  void PauseAll();
  void StopAll();
  void CloseRoot();
  void OpenFile();
  void SaveFile();
  void ExportFile();
  void PrintShown();
  void CompareFile();
  void EndComparison();
  void ShowOptions();
  void EditPath();
  void FindFiles();
  void FindDuplicates();
  void ShowFoundPane(TFoundPane& pPane);
  void OpenItem();
  void ShowItem();
  void OpenTerminalHere();
  void CopyPath();
  void ScanItem();
  void LeaveOut();
  void ShowProperties();
  void ShowAbout();
  void ShowComparison(const TRef<IHierarchicalRoot>& pRoot);
  void ShowOpened(const TRef<IHierarchicalRoot>& pRoot);
  void NoteRecent(const QString& pPath);
  void Fail(const QString& pTitle, const QString& pMessage);
  void Tell(const QString& pText);
  void NoteRootChange(const QModelIndex& pRow, int pChanges);
  void NoteEnd(const IHierarchicalRoot& pRoot);
  void RefreshPanes();
  void RefreshPane(const QString& pName);
  void BeginSearch();

  std::unique_ptr<TWindowSettings> fSettings;
  TSession* fSession;
  TTreeModel* fTree;
  QHash<QByteArray, QAction*> fActions;  // by object name
  QStackedWidget* fPages = nullptr;
  TStartPage* fStartPage = nullptr;
  QSplitter* fSplitter = nullptr;
  TPathBar* fPathBar = nullptr;
  TEntriesView* fTreeView = nullptr;
  QTabWidget* fPanes = nullptr;
  TContentsPane* fContents = nullptr;
  TSearchPane* fSearch = nullptr;
  TDuplicatesPane* fDuplicates = nullptr;
  std::vector<TPane*> fAllPanes;
  QLabel* fProgressText = nullptr;
  QProgressBar* fProgressBar = nullptr;
  QLabel* fJobText = nullptr;
  QToolButton* fJobStop = nullptr;
  QTimer fTimer;
  std::optional<QPoint> fMenuAt;  // where a menu opens once its row is found
  QSet<TPane*> fStale;            // to be filled again when shown
  int fTicks = 0;
  bool fWasScanning = false;
  bool fWasPaused = false;
  TFoundPane* fDueSearch = nullptr;  // the command line asked for its search
  qint64 fMessageUntil = 0;
  TChosen fChosen;
  TPlace fPlace;
};

}  // namespace Vantrel::Window

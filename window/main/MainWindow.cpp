#include "window/main/MainWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "export/history/HistoryDatabase.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "presentation/lists/DetailsList.h"
#include "presentation/lists/ErrorList.h"
#include "presentation/lists/HistoryList.h"
#include "presentation/lists/StatisticsLists.h"
#include "presentation/lists/TopFilesList.h"
#include "window/main/PathBar.h"
#include "window/main/Session.h"
#include "window/main/StartPage.h"
#include "window/main/WindowSettings.h"
#include "window/models/ContentsModel.h"
#include "window/models/Icons.h"
#include "window/models/ShownText.h"
#include "window/models/TreeModel.h"
#include "window/panes/ChartPane.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/ListPane.h"
#include "window/panes/SearchPane.h"
#include "window/panes/TableView.h"
#include "window/panes/TreemapPane.h"

namespace Vantrel::Window {

namespace {

constexpr int kTickMilliseconds = 200;

QString SettingsFolder(const TWindowStart& pStart) {
  return ToQString(FolderOfPath(pStart.fUserOptionsFile, NativePathDelimiter()));
}

// The scans of the root in a database that may not be there.
Presentation::TList HistoryOf(const IHierarchicalRoot& pRoot, const std::u16string& pDatabase) {
  const std::u16string path = pRoot.GetPath();
  if (pDatabase.empty() || !PathExists(pDatabase)) return Presentation::HistoryList(path, {});
  return Presentation::HistoryList(path, History::THistoryDatabaseReaderWriter().ReadRootHistoryData(
                                             pDatabase, path, History::HistoryPattern(pRoot)));
}

// Of a table in a pane, among the settings.
QString LayoutName(const TTableView& pTable) {
  return QStringLiteral("columns/") + pTable.parentWidget()->objectName();
}

}  // namespace

TMainWindow::TMainWindow(const TWindowStart& pStart)
    : fSettings(std::make_unique<TWindowSettings>(SettingsFolder(pStart), pStart.fReadOnly)),
      fSession(new TSession(pStart, this)),
      fTree(new TTreeModel(this)) {
  setWindowTitle(FromUtf8Text(pStart.fProgramName));
  setAcceptDrops(true);
  setContextMenuPolicy(Qt::NoContextMenu);
  fPages = new QStackedWidget;
  fStartPage = new TStartPage;
  fPages->addWidget(fStartPage);
  fPages->addWidget(MakeWorkspace());
  setCentralWidget(fPages);
  MakeMenus();
  MakeToolBar();
  MakeStatusBar();
  ConnectSession();
  ConnectViews();
  RestoreLayout();
  BeginSearch();
  UpdateActions();
  connect(&fTimer, &QTimer::timeout, this, &TMainWindow::Tick);
  fTimer.start(kTickMilliseconds);
  QMetaObject::invokeMethod(
      this, [this] { fSession->Begin(); }, Qt::QueuedConnection);
}

TMainWindow::~TMainWindow() {
  fTimer.stop();
  fSearch->Stop();
  fDuplicates->Stop();
  // The models let go of the roots before the session disposes of them.
  for (const TRef<IHierarchicalRoot>& root : fTree->Roots()) fTree->RemoveRoot(*root);
}

// --- parts -----------------------------------------------------------------------------------------------------------

QWidget* TMainWindow::MakeWorkspace() {
  fTreeView = new TEntriesView(*fTree, {TColumn::mdPercentOfParent, TColumn::mdFiles});
  fTreeView->setObjectName(QStringLiteral("tree"));
  fTreeView->setAccessibleName(tr("Scanned folders"));
  fPanes = new QTabWidget;
  fPanes->setDocumentMode(true);
  fPanes->setUsesScrollButtons(true);
  fPanes->setElideMode(Qt::ElideNone);
  MakePanes();
  fSplitter = new QSplitter(Qt::Horizontal);
  fSplitter->addWidget(fTreeView);
  fSplitter->addWidget(fPanes);
  fSplitter->setChildrenCollapsible(false);
  fSplitter->setStretchFactor(0, 4);
  fSplitter->setStretchFactor(1, 5);
  fPathBar = new TPathBar;
  auto* workspace = new QWidget;
  auto* layout = new QVBoxLayout(workspace);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(fPathBar);
  layout->addWidget(fSplitter, 1);
  return workspace;
}

void TMainWindow::AddPane(TPane* pPane, const QString& pTitle) {
  fPanes->addTab(pPane, pTitle);
  fAllPanes.push_back(pPane);
  connect(pPane, &TPane::PathChosen, this, &TMainWindow::GoTo);
}

template <class TFill>
TListPane& TMainWindow::AddListPane(const char* pName, const QString& pTitle, const QString& pEmptyText, TFill pFill) {
  auto* pane = new TListPane(QString::fromLatin1(pName), pEmptyText, std::move(pFill));
  pane->HideAtFirst({TColumn::mdLastAccess, TColumn::mdCreation, TColumn::mdAttributes});
  AddPane(pane, pTitle);
  return *pane;
}

void TMainWindow::MakePanes() {
  using namespace Presentation;
  fContents = new TContentsPane;
  AddPane(fContents, tr("Contents"));
  auto* treemap = new TTreemapPane(fSession->Start().fOptions);
  treemap->setObjectName(QStringLiteral("treemap"));
  AddPane(treemap, tr("Treemap"));
  connect(treemap, &TTreemapPane::MenuWanted, this, [this](const QString& pPath, const QPoint& pAt) {
    fMenuAt = pAt;
    GoTo(pPath);
  });
  auto* chart = new TChartPane(fSession->Start().fOptions);
  chart->setObjectName(QStringLiteral("chart"));
  AddPane(chart, tr("Chart"));
  AddListPane("extensions", tr("Extensions"), tr("No extensions were collected here."),
              [](const TPlace& pPlace) { return ExtensionsList(*pPlace.fRoot, pPlace.fFolder); });
  AddListPane("types", tr("File types"), tr("No extensions were collected here."), [](const TPlace& pPlace) {
    return FileTypesList(*pPlace.fRoot, pPlace.fFolder);
  }).SortAtFirst(TColumn::mdSize);
  AddListPane("owners", tr("Owners"), tr("No owners were collected. The option CollectOwners collects them."),
              [](const TPlace& pPlace) { return UsersList(*pPlace.fRoot, pPlace.fFolder); });
  AddListPane("ages", tr("Ages"), tr("No file ages were collected. The option FileAgesDateType collects them."),
              [](const TPlace& pPlace) { return FileAgesList(*pPlace.fRoot, pPlace.fFolder); });
  AddListPane("largest", tr("Largest files"), tr("There are no files here."),
              [](const TPlace& pPlace) { return TopFilesList(*pPlace.fRoot, *pPlace.fFolder); });
  AddListPane("history", tr("History"),
              tr("No earlier scan of this path is recorded. The option RecordHistory records every scan."),
              TListPane::TFill())
      .PrepareEachFill([this]() -> TListPane::TFill {
        return [file = fSession->HistoryFile()](const TPlace& pPlace) { return HistoryOf(*pPlace.fRoot, file); };
      });
  AddListPane("errors", tr("Errors"), tr("Everything here could be read."),
              [](const TPlace& pPlace) { return ErrorList(*pPlace.fRoot, *pPlace.fFolder); });
  AddListPane("details", tr("Details"), tr("Nothing is chosen."), [](const TPlace& pPlace) {
    return DetailsList(*pPlace.fRoot, *pPlace.fFolder, WindowFormat(TSizeUnit::suAutomatic));
  });
  fSearch = new TSearchPane(fSession->Start());
  AddPane(fSearch, tr("Search"));
  fDuplicates = new TDuplicatesPane(fSession->Start(), [this] { return fTree->Roots(); });
  AddPane(fDuplicates, tr("Duplicates"));
}

void TMainWindow::ConnectSession() {
  fSession->SetFindExpanded([this](const IHierarchicalRoot& pRoot) {
    const QModelIndex row = fTree->IndexOfRoot(pRoot);
    return row.isValid() ? fTreeView->ExpandedFolders(row) : nullptr;
  });
  connect(fSession, &TSession::Opened, this, &TMainWindow::ShowOpened);
  connect(fSession, &TSession::Closing, this, [this](const TRef<IHierarchicalRoot>& pRoot) {
    fTree->RemoveRoot(*pRoot);
    fSearch->ForgetRoot(*pRoot);
    fDuplicates->ForgetRoot(*pRoot);
    if (fChosen.fRoot == pRoot) Choose(*fTree, fTree->index(0, 0));
    if (fTree->rowCount() == 0) ShowStartPage();
  });
  connect(fSession, &TSession::Compared, this, &TMainWindow::ShowComparison);
  connect(fSession, &TSession::Failed, this, &TMainWindow::Fail);
  connect(fSession, &TSession::Told, this, [this](const QString& pText) { Tell(pText); });
  connect(fSession, &TSession::JobsChanged, this, &TMainWindow::ShowJobs);
  connect(fSession, &TSession::HistoryChanged, this, [this] { RefreshPane("history"); });
  connect(fSession, &TSession::CloseWanted, this, [this] {
    if (!QApplication::activeModalWidget()) close();  // the user is to see what a dialog says
  });
}

void TMainWindow::ConnectViews() {
  for (TEntriesView* view : {fTreeView, &fContents->View()}) {
    connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this, view](const QModelIndex& pIndex) { Choose(view->Entries(), pIndex); });
    connect(view, &TEntriesView::MenuWanted, this,
            [this, view](const QModelIndex& pIndex, const QPoint& pAt) { ShowItemMenu(*view, pIndex, pAt); });
  }
  connect(fTreeView, &TEntriesView::UpWanted, this,
          [this] { fTreeView->setCurrentIndex(fTreeView->currentIndex().parent()); });
  connect(fTree, &TTreeModel::Found, this, [this](const QModelIndex& pIndex) {
    fTreeView->setCurrentIndex(pIndex);
    fTreeView->scrollTo(pIndex, QAbstractItemView::PositionAtCenter);
    if (const std::optional<QPoint> at = std::exchange(fMenuAt, std::nullopt)) ShowItemMenu(*fTreeView, pIndex, *at);
  });
  connect(fTree, &TTreeModel::NotFound, this,
          [this](const QString& pPath) { Tell(tr("Not in the tree: %1").arg(Window::Shown(FromQString(pPath)))); });
  connect(fTree, &TTreeModel::RootChanged, this, &TMainWindow::NoteRootChange);
  connect(fPanes, &QTabWidget::currentChanged, this, &TMainWindow::ShowChosenFolder);
  connect(fPathBar, &TPathBar::PathChosen, this, &TMainWindow::GoTo);
  connect(fPathBar, &TPathBar::PathTyped, this, &TMainWindow::ScanTyped);
  connect(fStartPage, &TStartPage::PathChosen, this, &TMainWindow::ScanTyped);
  connect(fStartPage, &TStartPage::FileWanted, this, &TMainWindow::OpenFile);
}

// --- what is chosen --------------------------------------------------------------------------------------------------

void TMainWindow::Choose(const TEntriesModel& pModel, const QModelIndex& pIndex) {
  const QModelIndex row = pIndex.siblingAtColumn(ecName);
  const TEntryKind kind = pModel.KindAt(row);
  if (row.isValid() && kind == TEntryKind::ekMore) return;
  fChosen = {};
  if (row.isValid()) {
    fChosen = {pModel.RootAt(row), pModel.FolderAt(row), pModel.PathAt(row), kind == TEntryKind::ekFile,
               kind == TEntryKind::ekGone};
  }
  UpdateActions();
  ShowStatus();
  if (&pModel != fTree && row.isValid()) return;  // in the contents: the folder stays
  fPlace = {fChosen.fRoot, fChosen.fIsGone ? nullptr : fChosen.fFolder};
  ShowChosenFolder();
}

TRef<IHierarchicalRoot> TMainWindow::ChosenRoot() const {
  if (fChosen.fRoot) return fChosen.fRoot;
  const std::vector<TRef<IHierarchicalRoot>> roots = fTree->Roots();
  return roots.empty() ? nullptr : roots.front();
}

void TMainWindow::GoTo(const QString& pPath) {
  fTree->GoTo(FromQString(pPath));
}

void TMainWindow::ShowOpened(const TRef<IHierarchicalRoot>& pRoot) {
  const QModelIndex row = fTree->AddRoot(pRoot);
  fPages->setCurrentIndex(1);
  fTreeView->setCurrentIndex(row);
  fTreeView->expand(row);
  fTreeView->setFocus();
  NoteRecent(ToQString(pRoot->GetPath()));
  Tick();
}

// Called again, goes back to what was scanned.
void TMainWindow::ShowStartPage() {
  const bool goesBack = fPages->currentIndex() == 0 && fTree->rowCount() > 0;
  fPages->setCurrentIndex(goesBack ? 1 : 0);
  UpdateActions();
  if (goesBack) return fTreeView->setFocus();
  fStartPage->PathField().setFocus();
}

void TMainWindow::NoteRootChange(const QModelIndex& pRow, int pChanges) {
  const TRef<IHierarchicalRoot> root = fTree->RootAt(pRow);
  if ((pChanges & rcTreeReplaced) != 0) {
    fTreeView->expand(pRow);
    const bool wasChosen = fChosen.fRoot == root;
    if (wasChosen || !fTreeView->currentIndex().isValid()) fTreeView->setCurrentIndex(pRow);
    if (wasChosen) Choose(*fTree, pRow);
  }
  if ((pChanges & rcScanEnded) != 0) {
    RefreshPanes();
    fSession->ScanEnded(root);
    NoteEnd(*root);
  }
  if ((pChanges & rcComparisonChanged) != 0) RefreshPanes();
  UpdateActions();
}

// --- dropping and closing --------------------------------------------------------------------------------------------

void TMainWindow::dragEnterEvent(QDragEnterEvent* pEvent) {
  if (pEvent->mimeData()->hasUrls()) pEvent->acceptProposedAction();
}

void TMainWindow::dropEvent(QDropEvent* pEvent) {
  for (const QUrl& url : pEvent->mimeData()->urls()) {
    const QString path = url.toLocalFile();
    if (path.isEmpty()) continue;
    const QStringList endings{QStringLiteral(".xml"), QStringLiteral(".xml.zip"), QStringLiteral(".json"),
                              QStringLiteral(".jsonl")};
    const bool isScanFile = std::any_of(endings.begin(), endings.end(), [&](const QString& pEnding) {
      return path.endsWith(pEnding, Qt::CaseInsensitive);
    });
    if (isScanFile && !FolderExists(FromQString(path)))
      fSession->OpenScanFile(FromQString(path));
    else
      ScanTyped(path);
  }
}

void TMainWindow::closeEvent(QCloseEvent* pEvent) {
  KeepLayout();
  QMainWindow::closeEvent(pEvent);
}

void TMainWindow::RestoreLayout() {
  constexpr QSize kFirstSize(1280, 800);
  resize(kFirstSize);
  restoreGeometry(fSettings->Get(QStringLiteral("geometry")).toByteArray());
  restoreState(fSettings->Get(QStringLiteral("bars")).toByteArray());
  fSplitter->setSizes({5 * width() / 12, 7 * width() / 12});
  fSplitter->restoreState(fSettings->Get(QStringLiteral("splitter")).toByteArray());
  fTreeView->SetLayout(fSettings->Get(QStringLiteral("treeColumns")).toByteArray());
  fContents->View().SetLayout(fSettings->Get(QStringLiteral("contentsColumns")).toByteArray());
  for (TTableView* table : fPanes->findChildren<TTableView*>())
    table->KeepLayout(fSettings->Get(LayoutName(*table)).toByteArray());
  const QString pane = fSettings->Get(QStringLiteral("pane")).toString();
  for (TPane* one : fAllPanes)
    if (one->objectName() == pane) fPanes->setCurrentWidget(one);
  SetFigure(static_cast<TFigure>(fSettings->Get(QStringLiteral("figure"), 0).toInt()));
  SetUnit(static_cast<int>(fSession->Options().SizeUnit));
  fStartPage->SetRecent(fSettings->Get(QStringLiteral("recent")).toStringList());
}

void TMainWindow::KeepLayout() {
  fSettings->Set(QStringLiteral("geometry"), saveGeometry());
  fSettings->Set(QStringLiteral("bars"), saveState());
  fSettings->Set(QStringLiteral("splitter"), fSplitter->saveState());
  fSettings->Set(QStringLiteral("treeColumns"), fTreeView->Layout());
  fSettings->Set(QStringLiteral("contentsColumns"), fContents->View().Layout());
  for (const TTableView* table : fPanes->findChildren<TTableView*>())
    if (const QByteArray layout = table->Layout(); !layout.isEmpty()) fSettings->Set(LayoutName(*table), layout);
  if (fPanes->currentWidget()) fSettings->Set(QStringLiteral("pane"), fPanes->currentWidget()->objectName());
  fSettings->Set(QStringLiteral("figure"), static_cast<int>(fTree->Figure()));
}

}  // namespace Vantrel::Window

#include "window/panes/SearchPane.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "automation/commandline/KeptSearches.h"
#include "search/files/ReadySearches.h"
#include "search/query/QueryError.h"
#include "window/main/WindowStart.h"
#include "window/models/Background.h"
#include "window/models/Icons.h"
#include "window/models/ListModel.h"
#include "window/models/ShownText.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

namespace {

// While a search runs, its list may take one part in so many of a thread's time.
constexpr int kLookShare = 10;
constexpr int kPauseBetweenLooks = 150;  // milliseconds between two looks

// What came of the attempt to start a search.
struct TStarted {
  QString fError;
  bool fHasPlace = false;  // of the error in the query
  size_t fBegin = 0;
  size_t fLength = 0;
};

TStarted TryToStart(TSearchWork& pWork) {
  try {
    pWork.Start();
    return {};
  } catch (const Search::EQueryError& error) {
    const QString hint = FromUtf8Text(error.Hint());
    const QString text = FromUtf8Text(error.what());
    return {hint.isEmpty() ? text : text + u'\n' + hint, true, error.Begin(), error.Length()};
  } catch (const std::exception& error) {
    return {FromUtf8Text(error.what()), false, 0, 0};
  }
}

CommandLine::TExportFormat FormatOf(const QString& pFile) {
  if (pFile.endsWith(QStringLiteral(".paths.txt"), Qt::CaseInsensitive)) return CommandLine::TExportFormat::efPathList;
  return PostScanActions::FormatOfFile(FromQString(pFile), CommandLine::TExportFormat::efReport);
}

}  // namespace

TSearchPane::TSearchPane(const TWindowStart& pStart, QWidget* pParent)
    : TPane(pParent),
      fStart(pStart),
      fQuery(new TQueryEdit),
      fTarget(new QComboBox),
      fMessage(new QLabel),
      fTable(new TTableView),
      fModel(new TListModel(this)),
      fStatus(new QLabel) {
  setObjectName(QStringLiteral("search"));
  for (QLabel* label : {fMessage, fStatus}) {
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(10, 3, 10, 5);
  }
  fMessage->setWordWrap(true);
  fMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);
  fMessage->hide();
  fStatus->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  fTable->setModel(fModel);
  fTable->setAccessibleName(tr("What was found"));
  fTable->SetEmptyText(
      tr("Type a part of a name, or conditions such as\nsize:>100MB   modified:<2024   ext:iso,zip   content:word"));
  fTable->header()->setSortIndicator(-1, Qt::DescendingOrder);
  fTable->setContextMenuPolicy(Qt::CustomContextMenu);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(MakeControls());
  layout->addWidget(fMessage);
  layout->addWidget(fTable, 1);
  layout->addWidget(fStatus);
  setFocusProxy(fQuery);
  fNextLook.setSingleShot(true);
  connect(&fNextLook, &QTimer::timeout, this, &TSearchPane::Look);
  connect(fQuery, &QLineEdit::returnPressed, this, &TSearchPane::Start);
  connect(fQuery, &QLineEdit::textChanged, fMessage, &QWidget::hide);
  connect(fTable, &QTreeView::activated, this, &TSearchPane::Activate);
  connect(fTable, &QTreeView::customContextMenuRequested, this, &TSearchPane::ShowMenu);
  connect(fTable->header(), &QHeaderView::sortIndicatorChanged, this, [this](int pColumn, Qt::SortOrder pOrder) {
    if (pColumn < 0 || pColumn >= fModel->columnCount()) return;
    fOrder = {fModel->List().fColumns[pColumn].fColumn, pOrder == Qt::DescendingOrder};
    if (fWork && !fNextLook.isActive()) fNextLook.start(0);
  });
  SetSearching(false);
}

TSearchPane::~TSearchPane() {
  Stop();
}

QWidget* TSearchPane::MakeControls() {
  fQuery->setPlaceholderText(tr("Find files and folders"));
  fQuery->setAccessibleName(tr("Query"));
  fTarget->addItems({tr("In the tree"), tr("On disk, in this folder")});
  fTarget->setToolTip(tr("Where to search"));
  fTarget->setAccessibleName(fTarget->toolTip());
  const auto button = [](TSymbol pSymbol, const QString& pHint) {
    auto* made = new QToolButton;
    made->setAutoRaise(true);
    made->setIcon(Icon(pSymbol));
    made->setToolTip(pHint);
    made->setAccessibleName(pHint);
    made->setFocusPolicy(Qt::TabFocus);
    return made;
  };
  fStartButton = button(TSymbol::sySearch, tr("Search"));
  fStopButton = button(TSymbol::syStop, tr("Stop the search"));
  fExportButton = button(TSymbol::syExport, tr("Export what was found"));
  connect(fStartButton, &QToolButton::clicked, this, &TSearchPane::Start);
  connect(fStopButton, &QToolButton::clicked, this, &TSearchPane::Stop);
  connect(fExportButton, &QToolButton::clicked, this, &TSearchPane::AskForExport);
  auto* controls = new QWidget;
  auto* row = new QHBoxLayout(controls);
  row->setContentsMargins(10, 6, 6, 6);
  row->setSpacing(4);
  row->addWidget(fQuery, 1);
  for (QWidget* widget : std::initializer_list<QWidget*>{fTarget, fStartButton, fStopButton, NewSearchesButton()})
    row->addWidget(widget);
  row->addWidget(fExportButton);
  return controls;
}

QToolButton* TSearchPane::NewSearchesButton() {
  auto* button = new QToolButton;
  button->setText(tr("Searches"));
  button->setToolTip(tr("Kept and ready-made searches"));
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  button->setPopupMode(QToolButton::InstantPopup);
  fSearches = new QMenu(button);
  fSearches->setToolTipsVisible(true);
  connect(fSearches, &QMenu::aboutToShow, this, &TSearchPane::FillSearches);
  button->setMenu(fSearches);
  return button;
}

void TSearchPane::FillSearches() {
  qDeleteAll(fSearches->findChildren<QMenu*>(Qt::FindDirectChildrenOnly));
  fSearches->clear();
  auto* forget = new QMenu(tr("Forget"), fSearches);
  for (const auto& [name, query] : fStart.fOptions->KeptSearches) {
    QAction* action = fSearches->addAction(Shown(name).replace(u'&', QStringLiteral("&&")));
    action->setToolTip(Shown(query));
    connect(action, &QAction::triggered, this, [this, query = query] {
      SetQuery(query);
      Start();
    });
    connect(forget->addAction(action->text()), &QAction::triggered, this,
            [this, name = ToQString(name)] { Forget(name); });
  }
  fSearches->addSeparator();
  for (const Search::TReadySearch& search : Search::ReadySearches()) {
    QString meaning = QCoreApplication::translate("ReadySearches", search.fMeaning.data());
    meaning[0] = meaning[0].toUpper();
    QAction* action = fSearches->addAction(meaning);
    action->setToolTip(Shown(search.fQuery));
    connect(action, &QAction::triggered, this, [this, &search] {
      SetQuery(std::u16string(search.fQuery));
      Start();
    });
  }
  fSearches->addSeparator();
  const bool canKeep = !fStart.fReadOnly && !fStart.fUserOptionsFile.empty();
  QAction* keep = fSearches->addAction(tr("Keep this search…"), this, &TSearchPane::AskForName);
  keep->setEnabled(canKeep && !fQuery->text().trimmed().isEmpty());
  fSearches->addMenu(forget)->setEnabled(canKeep && !forget->isEmpty());
}

void TSearchPane::AskForName() {
  const QString name = QInputDialog::getText(this, tr("Keep this search"), tr("Its name:"));
  if (!name.trimmed().isEmpty()) Keep(name.trimmed());
}

void TSearchPane::Keep(const QString& pName) {
  CommandLine::TCommandLineState change;
  change.fKeptName = FromQString(pName);
  change.fQuery = FromQString(fQuery->text());
  if (Search::FindReadySearch(change.fKeptName))
    return ShowError(tr("A ready-made search is named %1.").arg(Shown(change.fKeptName)));
  if (ChangeKept(change)) fStatus->setText(tr("Kept as %1").arg(Shown(change.fKeptName)));
}

void TSearchPane::Forget(const QString& pName) {
  CommandLine::TCommandLineState change;
  change.fForgottenSearches = {FromQString(pName)};
  ChangeKept(change);
}

// In the file, where another window may have kept others, and in the options of this run.
bool TSearchPane::ChangeKept(const CommandLine::TCommandLineState& pChange) {
  try {
    if (!fStart.fReadOnly && !fStart.fUserOptionsFile.empty())
      CommandLine::ChangeKeptSearches(pChange, fStart.fUserOptionsFile, fStart.fProgramName, fStart.fVersion);
    CommandLine::ChangeKeptSearches(pChange, *fStart.fOptions);
    return true;
  } catch (const std::exception& error) {
    ShowError(FromUtf8Text(error.what()));
    return false;
  }
}

void TSearchPane::ShowPlace(const TPlace& pPlace) {
  if (!fPlace.fRoot && pPlace.fRoot) ShowError({});  // what it said is no longer so
  fPlace = pPlace;
  SetSearching(fIsSearching);
}

TPrintable TSearchPane::Printable() const {
  return {tr("Found by %1").arg(fQuery->text()), {}, TPrintedTable::Of(*fTable)};
}

void TSearchPane::SetUnit(TSizeUnit pUnit) {
  fModel->SetUnit(pUnit);
}

void TSearchPane::SetQuery(const std::u16string& pQuery) {
  fQuery->setText(ToQString(pQuery));
}

QString TSearchPane::Message() const {
  return fMessage->isHidden() ? QString() : fMessage->text();
}

QString TSearchPane::Status() const {
  return fStatus->text();
}

void TSearchPane::ShowError(const QString& pText) {
  fMessage->setText(pText);
  fMessage->setVisible(!pText.isEmpty());
}

void TSearchPane::SetSearching(bool pIsSearching) {
  fIsSearching = pIsSearching;
  fStopButton->setEnabled(pIsSearching);
  fStartButton->setEnabled(fPlace.fRoot != nullptr);
  fExportButton->setEnabled(fModel->rowCount() > 0);
}

// --- the search ------------------------------------------------------------------------------------------------------

void TSearchPane::Start() {
  if (!fPlace.fRoot) return ShowError(tr("Nothing is scanned yet. Scan a folder first."));
  const bool onDisk = fTarget->currentIndex() == 1;
  if (onDisk && (!fPlace.fFolder || (fPlace.fRoot->GetState() & rsIsXMLImport) != 0))
    return ShowError(tr("A loaded scan has no disk to search. Choose a folder that was scanned here."));
  Stop();
  fQuery->ForgetError();
  ShowError({});
  fModel->SetList({});
  fStatus->clear();
  fWork = TSearchWork::Create({FromQString(fQuery->text()), fPlace, onDisk,
                               std::make_shared<TGlobalOptions>(*fStart.fOptions), fStart.fCreateRoots});
  SetSearching(true);
  RunInBackground(
      LongWork(), this, [work = fWork] { return TryToStart(*work); },
      [this, work = fWork](const TOutcome<TStarted>& pStarted) {
        if (work != fWork) return;  // given up meanwhile
        if (pStarted.fValue.fError.isEmpty()) return Look();
        fWork = nullptr;
        SetSearching(false);
        ShowError(pStarted.fValue.fError);
        if (pStarted.fValue.fHasPlace) fQuery->MarkError(pStarted.fValue.fBegin, pStarted.fValue.fLength);
      });
}

void TSearchPane::Stop() {
  if (fWork && fIsSearching) fWork->Cancel();
}

void TSearchPane::ForgetRoot(const IHierarchicalRoot& pRoot) {
  if (fPlace.fRoot.get() == &pRoot) fPlace = {};
  if (!fWork || fWork->Wish().fPlace.fRoot.get() != &pRoot) return SetSearching(fIsSearching);
  fWork = nullptr;  // rows would lead to nothing
  fModel->SetList({});
  fStatus->clear();
  SetSearching(false);
}

// Takes what was found meanwhile, until the search has ended.
void TSearchPane::Look() {
  if (!fWork || fIsLooking) return;
  fIsLooking = true;
  auto clock = std::make_shared<QElapsedTimer>();
  clock->start();
  RunInBackground(
      LongWork(), this, [work = fWork, order = fOrder] { return work->Look(order); },
      [this, work = fWork, order = fOrder, clock](TOutcome<TSearchNews> pNews) {
        fIsLooking = false;
        if (work != fWork) return Look();
        if (!pNews.fError.isEmpty()) ShowError(pNews.fError);
        const bool hasEnded = pNews.fValue.fHasEnded || !pNews.fError.isEmpty();
        const qint64 taken = clock->elapsed();
        TakeNews(std::move(pNews.fValue));
        SetSearching(!hasEnded);
        if (!hasEnded)
          fNextLook.start(static_cast<int>(std::max<qint64>(kPauseBetweenLooks, taken * kLookShare)));
        else if (!(order == fOrder))
          Look();
      });
}

// Keeps the chosen row, and the place in a long list.
void TSearchPane::TakeNews(TSearchNews pNews) {
  fStatus->setText(pNews.fStatus);
  fStatus->setToolTip(pNews.fProblems.isEmpty() ? pNews.fStatus : pNews.fProblems);
  if (!pNews.fList) return;
  const int current = fTable->currentIndex().row();
  const std::u16string key = current >= 0 ? fModel->List().fRows[current].fKey : std::u16string();
  const int scrolled = fTable->verticalScrollBar()->value();
  fModel->SetList(std::move(*pNews.fList));
  if (const int row = current >= 0 ? fModel->RowOfKey(key) : -1; row >= 0)
    fTable->setCurrentIndex(fModel->index(row, 0));
  fTable->verticalScrollBar()->setValue(scrolled);
  fTable->FitColumns({4, 5, 6, 7});  // the user may choose these in the header's menu
}

// --- rows ------------------------------------------------------------------------------------------------------------

void TSearchPane::Activate(const QModelIndex& pIndex) {
  Q_EMIT PathChosen(ToQString(fModel->List().fRows[pIndex.row()].fKey));
}

void TSearchPane::ShowMenu(const QPoint& pAt) {
  QMenu menu;
  if (const QModelIndex at = fTable->indexAt(pAt); at.isValid()) {
    const QString path = ToQString(fModel->List().fRows[at.row()].fKey);
    connect(menu.addAction(tr("Show in the tree")), &QAction::triggered, this,
            [this, path] { Q_EMIT PathChosen(path); });
    connect(menu.addAction(tr("Copy the path")), &QAction::triggered, this,
            [path] { QApplication::clipboard()->setText(path); });
  }
  connect(menu.addAction(tr("Copy as a table")), &QAction::triggered, fTable, &TTableView::CopyRows);
  connect(menu.addAction(Icon(TSymbol::syExport), tr("Export…")), &QAction::triggered, this,
          &TSearchPane::AskForExport);
  menu.exec(fTable->viewport()->mapToGlobal(pAt));
}

void TSearchPane::AskForExport() {
  const QString filters = tr("CSV (*.csv);;Columns between tabs (*.tsv);;Report (*.txt);;List of paths (*.paths.txt)");
  QFileDialog dialog(this, tr("Export what was found"), {}, filters);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  const auto suggest = [&](const QString& pFilter) {
    const QString suffix = pFilter.section(QStringLiteral("(*."), 1).chopped(1);
    dialog.setDefaultSuffix(suffix);
    dialog.selectFile(tr("found") + u'.' + suffix);
  };
  suggest(dialog.selectedNameFilter());
  connect(&dialog, &QFileDialog::filterSelected, this, suggest);
  if (dialog.exec() == QDialog::Accepted) ExportTo(dialog.selectedFiles().value(0));
}

void TSearchPane::ExportTo(const QString& pFile) {
  if (!fWork || pFile.isEmpty()) return;
  const PostScanActions::TExportRun run{fStart.fProgramName, fStart.fVersion, false, false, [] { return false; }};
  auto write = [work = fWork, request = CommandLine::TExportRequest{FormatOf(pFile), FromQString(pFile)},
                options = *fStart.fOptions, run] {
    work->Export(request, options, run);
    return true;
  };
  RunInBackground(LongWork(), this, write, [this](const TOutcome<bool>& pWritten) {
    if (!pWritten.fError.isEmpty()) QMessageBox::warning(this, tr("Export"), pWritten.fError);
  });
}

}  // namespace Vantrel::Window

#include "window/panes/FoundPane.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "search/query/QueryError.h"
#include "window/main/WindowStart.h"
#include "window/models/Icons.h"
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

TStarted TryToStart(TFoundWork& pWork) {
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

TFoundPane::TFoundPane(const TWindowStart& pStart, const char* pName, const QString& pExportName, QWidget* pParent)
    : TPane(pParent),
      fStart(pStart),
      fQuery(new TQueryEdit(this)),
      fMessage(new QLabel(this)),
      fTable(new TTableView(this)),
      fStatus(new QLabel(this)),
      fExportName(pExportName) {
  setObjectName(QString::fromLatin1(pName));
  fStartButton = NewButton(TSymbol::sySearch, tr("Search"));
  fStopButton = NewButton(TSymbol::syStop, tr("Stop the search"));
  fExportButton = NewButton(TSymbol::syExport, tr("Export what was found"));
  fQuery->setAccessibleName(tr("Query"));
  for (QLabel* label : {fMessage, fStatus}) {
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(10, 3, 10, 5);
  }
  fMessage->setWordWrap(true);
  fMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);
  fMessage->hide();
  fStatus->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  fTable->header()->setSortIndicator(-1, Qt::DescendingOrder);
  fTable->setContextMenuPolicy(Qt::CustomContextMenu);
  setFocusProxy(fQuery);
  fNextLook.setSingleShot(true);
  connect(&fNextLook, &QTimer::timeout, this, &TFoundPane::Look);
  connect(fQuery, &QLineEdit::returnPressed, this, [this] { Start(); });
  connect(fQuery, &QLineEdit::textChanged, fMessage, &QWidget::hide);
  connect(fStartButton, &QToolButton::clicked, this, [this] { Start(); });
  connect(fStopButton, &QToolButton::clicked, this, &TFoundPane::Stop);
  connect(fExportButton, &QToolButton::clicked, this, &TFoundPane::AskForExport);
  connect(fTable, &QTreeView::activated, this, [this](const QModelIndex& pIndex) { Activate(pIndex); });
  connect(fTable, &QTreeView::customContextMenuRequested, this, &TFoundPane::ShowMenu);
  connect(fTable->header(), &QHeaderView::sortIndicatorChanged, this, [this](int pColumn, Qt::SortOrder pOrder) {
    if (pColumn < 0 || pColumn >= fTable->model()->columnCount()) return;
    fOrder = {pColumn, pOrder == Qt::DescendingOrder};
    if (!fNextLook.isActive()) LookSoon();
  });
}

TFoundPane::~TFoundPane() {
  Stop();
}

void TFoundPane::LayOut(const std::vector<QWidget*>& pControls) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  for (QWidget* control : pControls) layout->addWidget(control);
  layout->addWidget(fMessage);
  layout->addWidget(fTable, 1);
  layout->addWidget(fStatus);
}

QToolButton* TFoundPane::NewButton(TSymbol pSymbol, const QString& pHint) {
  auto* made = new QToolButton(this);
  made->setAutoRaise(true);
  made->setIcon(Icon(pSymbol));
  made->setToolTip(pHint);
  made->setAccessibleName(pHint);
  made->setFocusPolicy(Qt::TabFocus);
  return made;
}

void TFoundPane::ShowPlace(const TPlace& pPlace) {
  if (!fPlace.fRoot && pPlace.fRoot) ShowError({});  // what it said is no longer so
  fPlace = pPlace;
  SetSearching(fIsSearching);
}

void TFoundPane::SetQuery(const std::u16string& pQuery) {
  fQuery->setText(ToQString(pQuery));
}

QString TFoundPane::Message() const {
  return fMessage->isHidden() ? QString() : fMessage->text();
}

QString TFoundPane::Status() const {
  return fStatus->text();
}

void TFoundPane::ShowError(const QString& pText) {
  fMessage->setText(pText);
  fMessage->setVisible(!pText.isEmpty());
}

void TFoundPane::SetSearching(bool pIsSearching) {
  fIsSearching = pIsSearching;
  fStopButton->setEnabled(pIsSearching);
  fStartButton->setEnabled(fPlace.fRoot != nullptr);
  fExportButton->setEnabled(fTable->model()->rowCount() > 0);
}

// --- the search ------------------------------------------------------------------------------------------------------

void TFoundPane::Begin(std::shared_ptr<TFoundWork> pWork, std::vector<TRef<IHierarchicalRoot>> pRoots) {
  Stop();
  fQuery->ForgetError();
  ShowError({});
  GiveUp();
  fWork = std::move(pWork);
  fSearchedRoots = std::move(pRoots);
  SetSearching(true);
  RunInBackground(
      LongWork(), this, [work = fWork] { return TryToStart(*work); },
      [this, work = fWork](const TOutcome<TStarted>& pStarted) {
        if (work != fWork) return;  // given up meanwhile
        fHasStarted = pStarted.fValue.fError.isEmpty();
        if (fHasStarted) return Look();
        GiveUp();
        ShowError(pStarted.fValue.fError);
        if (pStarted.fValue.fHasPlace) fQuery->MarkError(pStarted.fValue.fBegin, pStarted.fValue.fLength);
      });
}

void TFoundPane::Stop() {
  if (fWork && fIsSearching) fWork->Cancel();
}

void TFoundPane::GiveUp() {
  fWork = nullptr;
  fHasStarted = false;
  fSearchedRoots.clear();
  ForgetFound();
  fStatus->clear();
  fStatus->setToolTip({});
  SetSearching(false);
}

void TFoundPane::ForgetRoot(const IHierarchicalRoot& pRoot) {
  if (fPlace.fRoot.get() == &pRoot) fPlace = {};
  const auto erased = std::erase_if(fSearchedRoots, [&](const auto& pOne) { return pOne.get() == &pRoot; });
  if (erased > 0 && fSearchedRoots.empty()) return GiveUp();  // rows would lead to nothing
  SetSearching(fIsSearching);
}

void TFoundPane::LookSoon() {
  if (fHasStarted) fNextLook.start(0);
}

// Takes what was found meanwhile, until the search has ended.
void TFoundPane::Look() {
  if (!fHasStarted || fIsLooking) return;
  fIsLooking = true;
  auto clock = std::make_shared<QElapsedTimer>();
  clock->start();
  RunInBackground(
      LongWork(), this, [work = fWork, order = fOrder] { return work->Look(order); },
      [this, work = fWork, order = fOrder, clock](TOutcome<std::unique_ptr<TFoundNews>> pNews) {
        fIsLooking = false;
        if (work != fWork) return Look();
        if (!pNews.fError.isEmpty()) ShowError(pNews.fError);
        const bool hasEnded = !pNews.fValue || pNews.fValue->fHasEnded;
        const qint64 taken = clock->elapsed();
        if (pNews.fValue) {
          const TFoundNews& news = *pNews.fValue;
          fStatus->setText(news.fStatus);
          fStatus->setToolTip(news.fProblems.isEmpty() ? news.fStatus : news.fProblems);
          TakeNews(*pNews.fValue);
        }
        SetSearching(!hasEnded);
        if (!hasEnded)
          fNextLook.start(static_cast<int>(std::max<qint64>(kPauseBetweenLooks, taken * kLookShare)));
        else if (!(order == fOrder))
          Look();
      });
}

// --- rows ------------------------------------------------------------------------------------------------------------

void TFoundPane::Activate(const QModelIndex& pIndex) {
  if (const QString path = PathAt(pIndex); !path.isEmpty()) Q_EMIT PathChosen(path);
}

void TFoundPane::ShowMenu(const QPoint& pAt) {
  QMenu menu;
  const QModelIndex at = fTable->indexAt(pAt);
  if (const QString path = at.isValid() ? PathAt(at) : QString(); !path.isEmpty()) {
    connect(menu.addAction(tr("Show in the tree")), &QAction::triggered, this,
            [this, path] { Q_EMIT PathChosen(path); });
    connect(menu.addAction(tr("Copy the path")), &QAction::triggered, this,
            [path] { QApplication::clipboard()->setText(path); });
  }
  AddToMenu(menu);
  connect(menu.addAction(tr("Copy as a table")), &QAction::triggered, fTable, &TTableView::CopyRows);
  connect(menu.addAction(Icon(TSymbol::syExport), tr("Export…")), &QAction::triggered, this, &TFoundPane::AskForExport);
  menu.exec(fTable->viewport()->mapToGlobal(pAt));
}

void TFoundPane::AskForExport() {
  const QString filters = tr("CSV (*.csv);;Columns between tabs (*.tsv);;Report (*.txt);;List of paths (*.paths.txt)");
  QFileDialog dialog(this, tr("Export what was found"), {}, filters);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  const auto suggest = [&](const QString& pFilter) {
    const QString suffix = pFilter.section(QStringLiteral("(*."), 1).chopped(1);
    dialog.setDefaultSuffix(suffix);
    dialog.selectFile(fExportName + u'.' + suffix);
  };
  suggest(dialog.selectedNameFilter());
  connect(&dialog, &QFileDialog::filterSelected, this, suggest);
  if (dialog.exec() == QDialog::Accepted) ExportTo(dialog.selectedFiles().value(0));
}

void TFoundPane::ExportTo(const QString& pFile) {
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

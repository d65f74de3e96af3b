#include "window/panes/SearchPane.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>

#include "automation/commandline/KeptSearches.h"
#include "search/files/ReadySearches.h"
#include "window/main/WindowStart.h"
#include "window/models/ListModel.h"
#include "window/models/ShownText.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/SearchWork.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

TSearchPane::TSearchPane(const TWindowStart& pStart, QWidget* pParent)
    : TFoundPane(pStart, "search", tr("found"), pParent), fTarget(new QComboBox), fModel(new TListModel(this)) {
  fTable->setModel(fModel);
  fTable->setAccessibleName(tr("What was found"));
  fTable->SetEmptyText(
      tr("Type a part of a name, or conditions such as\nsize:>100MB   modified:<2024   ext:iso,zip   content:word"));
  LayOut({MakeControls()});
  SetSearching(false);
}

QWidget* TSearchPane::MakeControls() {
  fQuery->setPlaceholderText(tr("Find files and folders"));
  fTarget->addItems({tr("In the tree"), tr("On disk, in this folder")});
  fTarget->setToolTip(tr("Where to search"));
  fTarget->setAccessibleName(fTarget->toolTip());
  auto* controls = new QWidget;
  auto* row = new QHBoxLayout(controls);
  row->setContentsMargins(10, 6, 6, 6);
  row->setSpacing(4);
  row->addWidget(fQuery, 1);
  for (QWidget* widget :
       std::initializer_list<QWidget*>{fTarget, fStartButton, fStopButton, NewSearchesButton(), fExportButton})
    row->addWidget(widget);
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

TPrintable TSearchPane::Printable() const {
  return {tr("Found by %1").arg(fQuery->text()), {}, TPrintedTable::Of(*fTable)};
}

void TSearchPane::SetUnit(TSizeUnit pUnit) {
  fModel->SetUnit(pUnit);
}

void TSearchPane::Start() {
  if (!fPlace.fRoot) return ShowError(tr("Nothing is scanned yet. Scan a folder first."));
  const bool onDisk = fTarget->currentIndex() == 1;
  if (onDisk && (!fPlace.fFolder || (fPlace.fRoot->GetState() & rsIsXMLImport) != 0))
    return ShowError(tr("A loaded scan has no disk to search. Choose a folder that was scanned here."));
  const TSearchWish wish{FromQString(fQuery->text()), fPlace, onDisk,
                         std::make_shared<TGlobalOptions>(*fStart.fOptions), fStart.fCreateRoots};
  Begin(CreateWork<TSearchWork>(wish), {fPlace.fRoot});
}

void TSearchPane::ForgetFound() {
  fModel->SetList({{}, fModel->List().fColumns, {}});  // the columns keep their widths
}

// Keeps the chosen row, and the place in a long list.
void TSearchPane::TakeNews(TFoundNews& pNews) {
  auto& news = static_cast<TSearchNews&>(pNews);
  if (!news.fList) return;
  const QString path = fTable->currentIndex().isValid() ? PathAt(fTable->currentIndex()) : QString();
  const int scrolled = fTable->verticalScrollBar()->value();
  fModel->SetList(std::move(*news.fList));
  if (const int row = path.isEmpty() ? -1 : fModel->RowOfKey(FromQString(path)); row >= 0)
    fTable->setCurrentIndex(fModel->index(row, 0));
  fTable->verticalScrollBar()->setValue(scrolled);
  fTable->FitColumns({4, 5, 6, 7});  // the user may choose these in the header's menu
}

QString TSearchPane::PathAt(const QModelIndex& pIndex) const {
  return ToQString(fModel->List().fRows[pIndex.row()].fKey);
}

}  // namespace Vantrel::Window

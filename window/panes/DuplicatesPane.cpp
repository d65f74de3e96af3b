#include "window/panes/DuplicatesPane.h"

#include <QActionGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QProgressBar>
#include <QScrollBar>
#include <QSet>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "window/main/WindowStart.h"
#include "window/models/DuplicatesModel.h"
#include "window/models/Icons.h"
#include "window/models/ShownText.h"
#include "window/panes/DuplicatesWork.h"
#include "window/panes/PaneControls.h"
#include "window/panes/QueryEdit.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

using Search::TDuplicatesSearchMode;

// What the user sees of the rows: other rows come, and it stays.
class TDuplicatesPane::TShownState {
 public:
  explicit TShownState(const TDuplicatesPane& pPane)
      : fListed(pPane.fModel->rowCount()),
        fScrolled(pPane.fTable->verticalScrollBar()->value()),
        fCurrent(pPane.fModel->FileAt(pPane.fTable->currentIndex())),
        fIsGroup(pPane.fModel->IsGroup(pPane.fTable->currentIndex())) {
    for (int row = 0; row < fListed; ++row)
      if (const QModelIndex group = pPane.fModel->index(row, 0); pPane.fTable->isExpanded(group))
        fOpen.insert(pPane.fModel->FileAt(group));
  }

  int Listed() const { return fListed; }
  bool HasOpen() const { return !fOpen.isEmpty(); }
  // A group may have got another first file.
  void Restore(TDuplicatesPane& pPane) const {
    const TDuplicatesModel& model = *pPane.fModel;
    const bool looks = HasOpen() || fCurrent;
    for (int row = 0; looks && row < model.rowCount(); ++row) {
      const QModelIndex group = model.index(row, 0);
      for (int name = 0; name < model.rowCount(group); ++name) {
        const QModelIndex index = model.index(name, 0, group);
        const Search::TDuplicateFile* file = model.FileAt(index);
        if (fOpen.contains(file)) pPane.fTable->expand(group);
        if (file && file == fCurrent) pPane.fTable->setCurrentIndex(fIsGroup ? group : index);
      }
    }
    pPane.fTable->verticalScrollBar()->setValue(fScrolled);
  }

 private:
  const int fListed;
  const int fScrolled;
  const Search::TDuplicateFile* const fCurrent;
  const bool fIsGroup;
  QSet<const Search::TDuplicateFile*> fOpen;
};

TDuplicatesPane::TDuplicatesPane(const TWindowStart& pStart, TFindRoots pFindRoots, QWidget* pParent)
    : TFoundPane(pStart, "duplicates", tr("duplicates"), pParent),
      fFindRoots(std::move(pFindRoots)),
      fMode(new QComboBox),
      fTarget(new QComboBox),
      fCriteria(new QMenu(this)),
      fVerify(new QCheckBox(tr("Compare every byte"))),
      fPauseButton(NewButton(TSymbol::syPause, tr("Pause the search"))),
      fProgress(new QProgressBar),
      fModel(new TDuplicatesModel(this)) {
  fTable->setModel(fModel);
  fTable->setAccessibleName(tr("Duplicates"));
  fTable->setRootIsDecorated(true);
  fTable->setExpandsOnDoubleClick(false);  // activating does it
  fTable->header()->setSortIndicator(dcWasted, Qt::DescendingOrder);
  fProgress->setTextVisible(false);
  fProgress->setMaximumHeight(4);
  fProgress->setAccessibleName(tr("Progress of the search for duplicates"));
  QSizePolicy keepsRoom = fProgress->sizePolicy();
  keepsRoom.setRetainSizeWhenHidden(true);
  fProgress->setSizePolicy(keepsRoom);
  LayOut({MakeFirstRow(), MakeSecondRow(), fProgress});
  ForgetFound();
  UpdateControls();
  SetSearching(false);
}

// --- controls --------------------------------------------------------------------------------------------------------

QWidget* TDuplicatesPane::MakeFirstRow() {
  fStartButton->setText(tr("Find duplicates"));
  fStartButton->setToolTip(fStartButton->text());
  fStartButton->setAccessibleName(fStartButton->text());
  fStartButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  fPauseButton->setCheckable(true);
  connect(fPauseButton, &QToolButton::toggled, this, &TDuplicatesPane::SetPaused);
  auto* controls = new QWidget;
  auto* row = new QHBoxLayout(controls);
  row->setContentsMargins(10, 6, 6, 0);
  row->setSpacing(4);
  row->addWidget(fQuery, 1);
  for (QWidget* widget : {fStartButton, fPauseButton, fStopButton, fExportButton}) row->addWidget(widget);
  return controls;
}

QWidget* TDuplicatesPane::MakeSecondRow() {
  auto* controls = new QWidget;
  auto* row = new TFlowLayout;
  row->setContentsMargins(10, 4, 6, 6);
  row->setSpacing(6);
  controls->setLayout(row);
  fMode->addItems({tr("Equal files"), tr("Equal folders"), tr("Unique files")});
  fMode->setToolTip(tr("What to find"));
  fTarget->addItems({tr("In this folder"), tr("In all open scans")});
  fTarget->setToolTip(tr("Where to search"));
  for (QComboBox* choice : {fMode, fTarget}) {
    choice->setAccessibleName(choice->toolTip());
    choice->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    row->addWidget(choice);
  }
  MakeCriteria();
  row->addWidget(fCriteriaButton);
  fVerify->setToolTip(tr("Compares the bytes of a group's files before it is listed. The files are read once more."));
  row->addWidget(fVerify);
  connect(fMode, &QComboBox::currentIndexChanged, this, &TDuplicatesPane::UpdateControls);
  return controls;
}

void TDuplicatesPane::MakeCriteria() {
  fByName = AddCriterion(tr("The same name"), false);
  fBySize = AddCriterion(tr("The same size"), false);
  fByDate = AddCriterion(tr("The same date of change"), false);
  fByContents = AddCriterion(tr("The same contents"), true);
  fCriteria->addSeparator();
  auto* group = new QActionGroup(this);
  for (const QString& text : {tr("By the fast checksum"), tr("By MD5"), tr("By SHA-256")}) {
    fChecksums.push_back(AddCriterion(text, fChecksums.empty()));
    group->addAction(fChecksums.back());
  }
  fCriteria->addSeparator();
  fWithEmpty = AddCriterion(tr("Empty ones, too"), false);
  fCriteriaButton = new QToolButton(this);
  fCriteriaButton->setToolTip(tr("What makes two files equal"));
  fCriteriaButton->setAccessibleName(fCriteriaButton->toolTip());
  fCriteriaButton->setAutoRaise(true);
  fCriteriaButton->setFocusPolicy(Qt::TabFocus);
  fCriteriaButton->setPopupMode(QToolButton::InstantPopup);
  fCriteriaButton->setMenu(fCriteria);
}

QAction* TDuplicatesPane::AddCriterion(const QString& pText, bool pIsChecked) {
  QAction* action = fCriteria->addAction(pText);
  action->setCheckable(true);
  action->setChecked(pIsChecked);
  connect(action, &QAction::triggered, this, &TDuplicatesPane::UpdateControls);
  return action;
}

// What the engine cannot do cannot be chosen. Without any criterion, contents are compared.
void TDuplicatesPane::UpdateControls() {
  const bool areFolders = Request().fMode == TDuplicatesSearchMode::DuplicateFolders;
  if (areFolders || !(fByName->isChecked() || fBySize->isChecked() || fByDate->isChecked()))
    fByContents->setChecked(true);
  for (QAction* action : {fBySize, fByDate, fByContents}) action->setEnabled(!areFolders);
  const bool readsContents = fByContents->isChecked();
  for (QAction* action : fChecksums) action->setEnabled(readsContents);
  fVerify->setEnabled(readsContents);
  fQuery->setEnabled(!areFolders);
  fQuery->setPlaceholderText(areFolders ? tr("Folders are compared with all that is in them")
                                        : tr("All files; or only those that a query finds, such as size:>1MB"));
  QStringList words;
  const CommandLine::TDuplicatesRequest request = Request();
  if (request.fByName) words << tr("name");
  if (request.fBySize) words << tr("size");
  if (request.fByDate) words << tr("date");
  if (request.fByContents) words << tr("contents");
  fCriteriaButton->setText(tr("Equal by %1").arg(words.join(QStringLiteral(", "))));
}

CommandLine::TDuplicatesRequest TDuplicatesPane::Request() const {
  using enum Search::TDuplicatesCompareType;
  CommandLine::TDuplicatesRequest request;
  request.fIsWanted = true;
  request.fMode = static_cast<TDuplicatesSearchMode>(fMode->currentIndex());
  const bool areFolders = request.fMode == TDuplicatesSearchMode::DuplicateFolders;
  request.fByName = fByName->isChecked();
  request.fBySize = fBySize->isChecked() && !areFolders;
  request.fByDate = fByDate->isChecked() && !areFolders;
  request.fByContents = fByContents->isChecked();
  if (fChecksums[1]->isChecked()) request.fContents = ctMD5;
  if (fChecksums[2]->isChecked()) request.fContents = ctSHA256;
  request.fWithEmpty = fWithEmpty->isChecked();
  request.fVerify = fVerify->isChecked() && request.fByContents;
  return request;
}

void TDuplicatesPane::SetRequest(const CommandLine::TDuplicatesRequest& pRequest, std::u16string_view pQuery) {
  using enum Search::TDuplicatesCompareType;
  fMode->setCurrentIndex(static_cast<int>(pRequest.fMode));
  fTarget->setCurrentIndex(1);
  fByName->setChecked(pRequest.fByName);
  fBySize->setChecked(pRequest.fBySize);
  fByDate->setChecked(pRequest.fByDate);
  fByContents->setChecked(pRequest.fByContents);
  fChecksums[pRequest.fContents == ctMD5 ? 1 : pRequest.fContents == ctSHA256 ? 2 : 0]->setChecked(true);
  fWithEmpty->setChecked(pRequest.fWithEmpty);
  fVerify->setChecked(pRequest.fVerify);
  fQuery->setText(ToQString(pQuery));
  UpdateControls();
}

void TDuplicatesPane::SetUnit(TSizeUnit pUnit) {
  fModel->SetUnit(pUnit);
}

TPrintable TDuplicatesPane::Printable() const {
  return {fMode->currentText(), {}, TPrintedTable::Of(*fTable)};
}

// --- the search ------------------------------------------------------------------------------------------------------

// A loaded scan has no disk.
std::vector<TPlace> TDuplicatesPane::Places() const {
  const auto isLive = [](const IHierarchicalRoot& pRoot) { return (pRoot.GetState() & rsIsXMLImport) == 0; };
  std::vector<TPlace> places;
  if (fTarget->currentIndex() == 1) {
    for (const TRef<IHierarchicalRoot>& root : fFindRoots())
      if (const TRef<IFolderData> top = root->GetTopFolder(); top && isLive(*root)) places.push_back({root, top});
  } else if (fPlace.fRoot && fPlace.fFolder && isLive(*fPlace.fRoot)) {
    places.push_back(fPlace);
  }
  return places;
}

void TDuplicatesPane::Start() {
  if (!fPlace.fRoot) return ShowError(tr("Nothing is scanned yet. Scan a folder first."));
  const std::vector<TPlace> places = Places();
  if (places.empty())
    return ShowError(tr("A loaded scan has no disk to search. Choose a folder that was scanned here."));
  auto work = CreateWork<TDuplicatesWork>(TDuplicatesWish{Request(), FromQString(fQuery->text()), places,
                                                          std::make_shared<TGlobalOptions>(*fStart.fOptions),
                                                          fStart.fCreateRoots});
  std::vector<TRef<IHierarchicalRoot>> roots;
  for (const TPlace& place : places) roots.push_back(place.fRoot);
  Begin(work, roots);
  fRunning = work;
}

void TDuplicatesPane::SetPaused(bool pPaused) {
  fPauseButton->setChecked(pPaused);
  fPauseButton->setIcon(Icon(pPaused ? TSymbol::syScan : TSymbol::syPause));
  fPauseButton->setToolTip(pPaused ? tr("Go on with the search") : tr("Pause the search"));
  fPauseButton->setAccessibleName(fPauseButton->toolTip());
  if (const std::shared_ptr<TDuplicatesWork> work = fRunning.lock()) work->SetPaused(pPaused);
  LookSoon();
}

void TDuplicatesPane::SetSearching(bool pIsSearching) {
  TFoundPane::SetSearching(pIsSearching);
  fPauseButton->setEnabled(pIsSearching);
  fProgress->setVisible(pIsSearching);
  if (pIsSearching) return;
  fRunning.reset();
  fPauseButton->setChecked(false);
}

void TDuplicatesPane::ForgetFound() {
  fModel->SetRows(nullptr);
  fTable->header()->hide();
  fTable->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  fTable->SetEmptyText(
      tr("Finds files that are there more than once, and what the copies waste.\n"
         "\"Find duplicates\" searches the chosen folder with all beneath it.\n"
         "Nothing on the disk is changed."));
  fProgress->setRange(0, 0);
}

void TDuplicatesPane::TakeNews(TFoundNews& pNews) {
  auto& news = static_cast<TDuplicatesNews&>(pNews);
  constexpr int kSteps = 1000;
  fProgress->setRange(0, news.fDone < 0 ? 0 : kSteps);
  if (news.fDone >= 0) fProgress->setValue(static_cast<int>(std::clamp(news.fDone, 0.0, 1.0) * kSteps));
  fTable->SetEmptyText(news.fEmptyText);
  if (!news.fRows) return;
  const TShownState shown(*this);
  const bool areUnique = news.fRows->fAreUnique;
  fModel->SetRows(std::move(news.fRows), shown.Listed());
  if (fModel->rowCount() == 0) return;
  fTable->header()->show();
  fTable->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  fTable->setRootIsDecorated(!areUnique);
  for (const int column : {dcFiles, dcWasted}) fTable->setColumnHidden(column, areUnique);
  shown.Restore(*this);
  // A narrow pane has no room for the date; the header's menu shows it.
  constexpr int kNarrow = 700;
  fTable->FitColumns(width() < kNarrow ? std::vector<int>{dcLastChange} : std::vector<int>());
  // The first group shows what is beneath the others.
  if (news.fHasEnded && !shown.HasOpen()) fTable->expand(fModel->index(0, 0));
}

// --- rows ------------------------------------------------------------------------------------------------------------

QString TDuplicatesPane::PathAt(const QModelIndex& pIndex) const {
  return ToQString(fModel->PathAt(pIndex));
}

void TDuplicatesPane::Activate(const QModelIndex& pIndex) {
  const QModelIndex row = pIndex.siblingAtColumn(dcName);
  if (!fModel->IsGroup(row)) return TFoundPane::Activate(row);
  fTable->setExpanded(row, !fTable->isExpanded(row));
}

void TDuplicatesPane::AddToMenu(QMenu& pMenu) {
  if (fModel->rowCount() == 0 || fModel->Rows()->fAreUnique) return;
  connect(pMenu.addAction(tr("Open all groups")), &QAction::triggered, fTable, &QTreeView::expandAll);
  connect(pMenu.addAction(tr("Close all groups")), &QAction::triggered, fTable, &QTreeView::collapseAll);
}

}  // namespace Vantrel::Window

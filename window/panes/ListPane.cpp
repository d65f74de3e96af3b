#include "window/panes/ListPane.h"

#include <QAction>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "automation/actions/ExportFile.h"
#include "export/text/ListExport.h"
#include "model/options/GlobalOptions.h"
#include "window/models/Background.h"
#include "window/models/Icons.h"
#include "window/models/ListModel.h"
#include "window/models/ShownText.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

TListPane::TListPane(const QString& pName, const QString& pEmptyText, TFill pFill, QWidget* pParent)
    : TPane(pParent),
      fFill(std::move(pFill)),
      fTitle(new QLabel),
      fTable(new TTableView),
      fModel(new TListModel(this)) {
  setObjectName(pName);
  fTitle->setTextFormat(Qt::PlainText);
  fTitle->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  fTable->SetEmptyText(pEmptyText);
  fTable->setModel(fModel);
  fTable->header()->setSortIndicator(-1, Qt::DescendingOrder);
  fTable->setContextMenuPolicy(Qt::CustomContextMenu);
  fTable->setAccessibleName(pEmptyText);
  auto* exportButton = new QToolButton;
  exportButton->setAutoRaise(true);
  exportButton->setIcon(Icon(TSymbol::syExport));
  exportButton->setToolTip(tr("Export this list as CSV"));
  exportButton->setAccessibleName(exportButton->toolTip());
  auto* head = new QHBoxLayout;
  head->setContentsMargins(10, 4, 6, 4);
  head->addWidget(fTitle, 1);
  head->addWidget(exportButton);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addLayout(head);
  layout->addWidget(fTable, 1);
  setFocusProxy(fTable);
  connect(exportButton, &QToolButton::clicked, this, &TListPane::AskForExport);
  connect(fTable->header(), &QHeaderView::sortIndicatorChanged, this, &TListPane::SortBy);
  connect(fTable, &QTreeView::activated, this, &TListPane::Activate);
  connect(fTable, &QTreeView::customContextMenuRequested, this, &TListPane::ShowMenu);
}

bool TListPane::IsSame(const TPlace& pPlace) const {
  return fPlace.fRoot == pPlace.fRoot && fPlace.fFolder == pPlace.fFolder;
}

void TListPane::ShowPlace(const TPlace& pPlace) {
  if (IsSame(pPlace)) return;
  fPlace = pPlace;
  Fill();
}

void TListPane::Refresh() {
  Fill();
}

TPrintable TListPane::Printable() const {
  return {fTitle->text(), {}, TPrintedTable::Of(*fTable)};
}

void TListPane::SetUnit(TSizeUnit pUnit) {
  fModel->SetUnit(pUnit);
}

namespace {

// The place of a column in the list; -1 if it has none.
int PlaceOf(const Presentation::TList& pList, std::optional<TColumn> pColumn) {
  for (size_t i = 0; i < pList.fColumns.size(); ++i)
    if (pList.fColumns[i].fColumn == pColumn) return static_cast<int>(i);
  return -1;
}

}  // namespace

// --- the list --------------------------------------------------------------------------------------------------------

void TListPane::Fill() {
  fIsStale = fIsFilling;
  if (fIsFilling) return;
  if (!fPlace.fRoot || !fPlace.fFolder) {
    fTitle->clear();
    fModel->SetList({});
    return;
  }
  fIsFilling = true;
  auto fill = [fill = fPrepareFill ? fPrepareFill() : fFill, place = fPlace, chosen = fSortColumn, first = fSortAtFirst,
               descending = fDescending] {
    Presentation::TList list = fill(place);
    const int column = chosen >= 0 ? chosen : PlaceOf(list, first);
    if (column >= 0 && static_cast<size_t>(column) < list.fColumns.size())
      Presentation::SortRows(list, static_cast<size_t>(column), descending);
    return list;
  };
  RunInBackground(ShortWork(), this, fill, [this](TOutcome<Presentation::TList> pList) {
    fIsFilling = false;
    if (pList.fError.isEmpty()) {
      Receive(std::move(pList.fValue));
    } else {
      fTitle->setText(pList.fError);
      fModel->SetList({});
    }
    if (fIsStale) Fill();
  });
}

// Keeps what is selected, and the place in a long list.
void TListPane::Receive(Presentation::TList pList) {
  std::vector<std::u16string> selected;
  for (const QModelIndex& row : fTable->selectionModel()->selectedRows())
    selected.push_back(fModel->List().fRows[row.row()].fKey);
  const int current = fTable->currentIndex().row();
  const std::u16string currentKey = current >= 0 ? fModel->List().fRows[current].fKey : std::u16string();
  const int scrolled = fTable->verticalScrollBar()->value();
  fTitle->setText(Shown(pList.fTitle));
  fTitle->setToolTip(fTitle->text());
  if (fSortColumn < 0) {
    const QSignalBlocker quiet(fTable->header());
    fTable->header()->setSortIndicator(PlaceOf(pList, fSortAtFirst), Qt::DescendingOrder);
  }
  fModel->SetList(std::move(pList));
  if (const int row = current >= 0 ? fModel->RowOfKey(currentKey) : -1; row >= 0)
    fTable->selectionModel()->setCurrentIndex(fModel->index(row, 0), QItemSelectionModel::NoUpdate);
  for (const std::u16string& key : selected)
    if (const int row = fModel->RowOfKey(key); row >= 0)
      fTable->selectionModel()->select(fModel->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
  fTable->verticalScrollBar()->setValue(scrolled);
  FitColumns();
}

void TListPane::FitColumns() {
  std::vector<int> hidden;
  const std::vector<Presentation::TListColumn>& columns = fModel->List().fColumns;
  for (size_t i = 0; i < columns.size(); ++i)
    if (std::find(fHidden.begin(), fHidden.end(), columns[i].fColumn) != fHidden.end())
      hidden.push_back(static_cast<int>(i));
  fTable->FitColumns(hidden);
}

void TListPane::SortBy(int pColumn, Qt::SortOrder pOrder) {
  fSortColumn = pColumn;
  fDescending = pOrder == Qt::DescendingOrder;
  Fill();
}

void TListPane::Activate(const QModelIndex& pIndex) {
  const Presentation::TListRow& row = fModel->List().fRows[pIndex.row()];
  if (row.fNode) Q_EMIT PathChosen(ToQString(row.fKey));
}

// --- copying and exporting -------------------------------------------------------------------------------------------

void TListPane::ShowMenu(const QPoint& pAt) {
  QMenu menu;
  const QModelIndex at = fTable->indexAt(pAt);
  if (at.isValid() && fModel->List().fRows[at.row()].fNode)
    connect(menu.addAction(tr("Show in the tree")), &QAction::triggered, this, [this, at] { Activate(at); });
  QAction* copy = menu.addAction(tr("Copy as a table"));
  copy->setShortcut(QKeySequence::Copy);
  connect(copy, &QAction::triggered, fTable, &TTableView::CopyRows);
  connect(menu.addAction(Icon(TSymbol::syExport), tr("Export as CSV…")), &QAction::triggered, this,
          &TListPane::AskForExport);
  menu.exec(fTable->viewport()->mapToGlobal(pAt));
}

void TListPane::AskForExport() {
  const QString file = QFileDialog::getSaveFileName(this, tr("Export the list"), objectName() + QStringLiteral(".csv"),
                                                    tr("CSV files (*.csv);;All files (*)"));
  if (!file.isEmpty()) ExportTo(file);
}

void TListPane::ExportTo(const QString& pFile) {
  auto write = [list = fModel->List(), path = FromQString(pFile)] {
    PostScanActions::TExportFile file(path, [] { return false; });
    Exporting::TMediaSettings settings = Exporting::DefaultMediaSettings(Exporting::TMediaType::mtCSV);
    Exporting::WriteListAsDelimited(list, settings, file);
    file.Commit();
    return true;
  };
  RunInBackground(LongWork(), this, write, [this](TOutcome<bool> pWritten) {
    if (!pWritten.fError.isEmpty()) QMessageBox::warning(this, tr("Export"), pWritten.fError);
  });
}

}  // namespace Vantrel::Window

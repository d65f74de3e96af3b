#include "window/panes/EntriesView.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "window/models/EntriesModel.h"
#include "window/models/ShareDelegate.h"
#include "window/panes/TableView.h"

namespace Vantrel::Window {

namespace {

constexpr int kNameWidth = 300;

int UsualWidth(const QFontMetrics& pMetrics, int pColumn) {
  if (pColumn == ecName) return kNameWidth;
  if (pColumn == ecFigure) return pMetrics.horizontalAdvance(QStringLiteral("1,023.9 MB")) + 34;
  const TColumnKind kind = ColumnInfo(CataloguedColumn(pColumn)).fKind;
  return pMetrics.horizontalAdvance(kind == TColumnKind::ckDate ? QStringLiteral("2026-12-30 00:00:00")
                                                                : QStringLiteral("9,999,999 MB")) +
         18;
}

}  // namespace

TEntriesView::TEntriesView(TEntriesModel& pModel, std::vector<TColumn> pColumns, QWidget* pParent)
    : QTreeView(pParent), fModel(pModel), fColumns(std::move(pColumns)) {
  setModel(&pModel);
  setItemDelegate(new TShareDelegate(this));
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setSelectionMode(ExtendedSelection);
  setFrameShape(NoFrame);
  setExpandsOnDoubleClick(true);
  setContextMenuPolicy(Qt::CustomContextMenu);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(36);
  header()->setContextMenuPolicy(Qt::CustomContextMenu);
  header()->setFirstSectionMovable(false);
  ShowUsualColumns();
  header()->setSortIndicator(ecFigure, Qt::DescendingOrder);
  setSortingEnabled(true);
  connect(this, &QTreeView::expanded, &fModel, [this](const QModelIndex& pIndex) { fModel.SetOpen(pIndex, true); });
  connect(this, &QTreeView::collapsed, &fModel, [this](const QModelIndex& pIndex) { fModel.SetOpen(pIndex, false); });
  connect(this, &QTreeView::activated, this, &TEntriesView::Activate);
  connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& pAt) {
    Q_EMIT MenuWanted(indexAt(pAt).siblingAtColumn(ecName), viewport()->mapToGlobal(pAt));
  });
  connect(header(), &QWidget::customContextMenuRequested, this, &TEntriesView::ShowColumnMenu);
  connect(header(), &QHeaderView::sectionResized, this, [this](int pColumn) {
    if (pColumn == ecName && !fIsFitting) fNameFits = false;
  });
  connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &TEntriesView::ShowMoreInSight);
}

// --- columns ---------------------------------------------------------------------------------------------------------

void TEntriesView::ShowUsualColumns() {
  fIsFitting = true;
  for (int column = 0; column < EntryColumnCount(); ++column) {
    setColumnWidth(column, UsualWidth(fontMetrics(), column));
    setColumnHidden(column, column > ecFigure);
  }
  for (const TColumn column : fColumns) setColumnHidden(EntryColumnOf(column), false);
  fIsFitting = false;
  fNameFits = true;
  FitName();
}

void TEntriesView::FitName() {
  constexpr int kNarrowest = 190;
  if (!fNameFits) return;
  int others = 0;
  for (int column = ecName + 1; column < EntryColumnCount(); ++column)
    if (!isColumnHidden(column)) others += columnWidth(column);
  fIsFitting = true;
  setColumnWidth(ecName, std::max(kNarrowest, viewport()->width() - others));
  fIsFitting = false;
}

void TEntriesView::resizeEvent(QResizeEvent* pEvent) {
  QTreeView::resizeEvent(pEvent);
  FitName();
}

void TEntriesView::ShowColumn(TColumn pColumn, bool pShown) {
  setColumnHidden(EntryColumnOf(pColumn), !pShown);
  FitName();
}

bool TEntriesView::ShowsColumn(TColumn pColumn) const {
  return !isColumnHidden(EntryColumnOf(pColumn));
}

QByteArray TEntriesView::Layout() const {
  return header()->saveState();
}

void TEntriesView::SetLayout(const QByteArray& pLayout) {
  if (!pLayout.isEmpty() && header()->restoreState(pLayout)) fNameFits = false;
}

void TEntriesView::ShowColumnMenu(const QPoint& pAt) {
  QMenu menu;
  for (int column = ecFirstCatalogued; column < EntryColumnCount(); ++column) {
    QAction* action = menu.addAction(fModel.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    action->setCheckable(true);
    action->setChecked(!isColumnHidden(column));
    connect(action, &QAction::toggled, this, [this, column](bool pShown) { setColumnHidden(column, !pShown); });
  }
  menu.addSeparator();
  connect(menu.addAction(tr("Usual columns")), &QAction::triggered, this, &TEntriesView::ShowUsualColumns);
  menu.exec(header()->mapToGlobal(pAt));
}

// --- rows ------------------------------------------------------------------------------------------------------------

void TEntriesView::Activate(const QModelIndex& pIndex) {
  if (fModel.KindAt(pIndex) == TEntryKind::ekMore) fModel.ShowMore(pIndex);
}

std::shared_ptr<const TExpandedFolders> TEntriesView::ExpandedFolders(const QModelIndex& pTop) const {
  auto expanded = std::make_shared<TExpandedFolders>();
  std::vector<QModelIndex> rows{pTop};
  while (!rows.empty()) {
    const QModelIndex row = rows.back();
    rows.pop_back();
    const TRef<IFolderData> folder = isExpanded(row) ? fModel.NodeAt(row) : nullptr;
    if (!folder) continue;
    expanded->Add(folder);
    for (int i = 0; i < fModel.rowCount(row); ++i) rows.push_back(fModel.index(i, ecName, row));
  }
  return expanded;
}

// Scrolling to the row that stands for others shows some of them.
void TEntriesView::ShowMoreInSight() {
  if (verticalScrollBar()->value() < verticalScrollBar()->maximum()) return;
  const QModelIndex last = indexAt(QPoint(2, viewport()->height() - 4)).siblingAtColumn(ecName);
  if (last.isValid() && fModel.KindAt(last) == TEntryKind::ekMore) fModel.ShowMore(last);
}

void TEntriesView::keyPressEvent(QKeyEvent* pEvent) {
  if (pEvent->matches(QKeySequence::Copy)) {
    QApplication::clipboard()->setText(RowsAsText(*this));
    return;
  }
  switch (pEvent->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (pEvent->modifiers() != Qt::NoModifier && pEvent->modifiers() != Qt::KeypadModifier) break;
      if (itemsExpandable() && fModel.hasChildren(currentIndex().siblingAtColumn(ecName)))
        setExpanded(currentIndex().siblingAtColumn(ecName), !isExpanded(currentIndex().siblingAtColumn(ecName)));
      else if (currentIndex().isValid())
        Q_EMIT activated(currentIndex());
      return;
    case Qt::Key_Backspace:
      Q_EMIT UpWanted();
      return;
    case Qt::Key_Asterisk:  // would open everything beneath, of which there may be millions
      return;
    default:
      break;
  }
  QTreeView::keyPressEvent(pEvent);
}

void TEntriesView::paintEvent(QPaintEvent* pEvent) {
  QTreeView::paintEvent(pEvent);
  if (fEmptyText.isEmpty() || fModel.rowCount(rootIndex()) > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap, fEmptyText);
}

}  // namespace Vantrel::Window

#include "window/panes/TableView.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "window/models/ShareDelegate.h"
#include "window/painting/Printing.h"

namespace Vantrel::Window {

namespace {

// The rows from the top down to the index, one for each level. Its order is that of the view.
QList<int> PlaceOf(QModelIndex pIndex) {
  QList<int> place;
  for (; pIndex.isValid(); pIndex = pIndex.parent()) place.prepend(pIndex.row());
  return place;
}

}  // namespace

QString RowsAsText(const QTreeView& pView) {
  const QHeaderView& header = *pView.header();
  const QAbstractItemModel& model = *pView.model();
  QList<int> columns;
  for (int visual = 0; visual < header.count(); ++visual)
    if (const int column = header.logicalIndex(visual); !header.isSectionHidden(column)) columns << column;
  const auto line = [&](const auto& pCell) {
    QStringList cells;
    for (const int column : columns) cells << pCell(column).toString();
    return cells.join(u'\t') + u'\n';
  };
  QString text = line([&](int pColumn) { return model.headerData(pColumn, Qt::Horizontal); });
  QModelIndexList rows = pView.selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end(),
            [](const QModelIndex& pA, const QModelIndex& pB) { return PlaceOf(pA) < PlaceOf(pB); });
  if (rows.isEmpty()) rows = ShownRows(pView);
  for (const QModelIndex& row : rows) text += line([&](int pColumn) { return row.siblingAtColumn(pColumn).data(); });
  return text;
}

TTableView::TTableView(QWidget* pParent) : QTreeView(pParent) {
  setRootIsDecorated(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setSelectionMode(ExtendedSelection);
  setAllColumnsShowFocus(true);
  setSortingEnabled(true);
  setFrameShape(NoFrame);
  setItemDelegate(new TShareDelegate(this));
  header()->setStretchLastSection(true);
  header()->setMinimumSectionSize(36);
  header()->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header(), &QWidget::customContextMenuRequested, this, &TTableView::ShowColumnMenu);
}

void TTableView::CopyRows() const {
  QApplication::clipboard()->setText(RowsAsText(*this));
}

void TTableView::SetEmptyText(const QString& pText) {
  fEmptyText = pText;
  viewport()->update();
}

// A header's state says nothing of the number of its columns, which restoring must not change.
QByteArray TTableView::Layout() const {
  if (!fIsFitted) return fLayout;
  return static_cast<char>(header()->count()) + header()->saveState();
}

void TTableView::FitColumns(const std::vector<int>& pHidden) {
  fHiddenAtFirst = pHidden;
  if (fIsFitted || !isVisible() || model()->columnCount() == 0) return;
  const bool isKept = fLayout.size() > 1 && fLayout[0] == static_cast<char>(header()->count());
  if (!isKept && model()->rowCount() == 0) return;
  fIsFitted = true;
  if (isKept && header()->restoreState(fLayout.mid(1))) return;
  for (const int column : pHidden) setColumnHidden(column, true);
  header()->setStretchLastSection(false);  // else the last column keeps what it needs and a scroll bar appears
  const std::vector<int> widths = FittingWidths();
  for (int column = 0; column < model()->columnCount(); ++column) setColumnWidth(column, widths[column]);
  header()->setStretchLastSection(true);
}

std::vector<int> TTableView::FittingWidths() {
  constexpr int kWidest = 420;
  constexpr int kLongText = 200;  // dates and figures need less
  constexpr int kNarrowestText = 140;
  constexpr int kNarrowestLast = 60;
  // Rows that come later may have longer figures.
  const int figure = fontMetrics().horizontalAdvance(QStringLiteral("999.9 MB")) + 24;
  std::vector<int> widths;
  const int bar = verticalScrollBar()->isVisible() ? 0 : verticalScrollBar()->sizeHint().width();
  int excess = bar - viewport()->width();
  int flexible = 0;
  int last = 0;
  for (int column = 0; column < model()->columnCount(); ++column) {
    resizeColumnToContents(column);
    const bool isRight =
        (model()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt() & Qt::AlignRight) != 0;
    const bool hasUnit = isRight && model()->index(0, column).data().toString().contains(u' ');
    widths.push_back(std::clamp(columnWidth(column) + 10, hasUnit ? figure : 0, kWidest));
    if (isColumnHidden(column)) continue;
    last = column;
    excess += widths.back();
    if (widths.back() > kLongText) flexible += widths.back() - kNarrowestText;
  }
  if (excess <= 0) return widths;
  const double part = std::min(1.0, static_cast<double>(excess) / std::max(1, flexible));
  for (int column = 0; column < model()->columnCount(); ++column) {
    if (isColumnHidden(column) || widths[column] <= kLongText) continue;
    const int cut = static_cast<int>(std::ceil(part * (widths[column] - kNarrowestText)));
    widths[column] -= cut;
    excess -= cut;
  }
  // What is still too much is cut off the last one.
  if (excess > 0) widths[last] = std::max(std::min(widths[last], kNarrowestLast), widths[last] - excess);
  return widths;
}

void TTableView::showEvent(QShowEvent* pEvent) {
  QTreeView::showEvent(pEvent);
  FitColumns(std::vector<int>(fHiddenAtFirst));
}

void TTableView::ShowColumnMenu(const QPoint& pAt) {
  QMenu menu;
  for (int column = 1; column < model()->columnCount(); ++column) {
    QAction* action = menu.addAction(model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    action->setCheckable(true);
    action->setChecked(!isColumnHidden(column));
    connect(action, &QAction::toggled, this, [this, column](bool pShown) { setColumnHidden(column, !pShown); });
  }
  if (!menu.isEmpty()) menu.exec(header()->mapToGlobal(pAt));
}

void TTableView::paintEvent(QPaintEvent* pEvent) {
  QTreeView::paintEvent(pEvent);
  if (!model() || model()->rowCount(rootIndex()) > 0 || fEmptyText.isEmpty()) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap, fEmptyText);
}

void TTableView::keyPressEvent(QKeyEvent* pEvent) {
  if (pEvent->matches(QKeySequence::Copy)) return CopyRows();
  if ((pEvent->key() == Qt::Key_Return || pEvent->key() == Qt::Key_Enter) && currentIndex().isValid()) {
    Q_EMIT activated(currentIndex());
    return;
  }
  QTreeView::keyPressEvent(pEvent);
}

}  // namespace Vantrel::Window

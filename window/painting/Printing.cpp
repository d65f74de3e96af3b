#include "window/painting/Printing.h"

#include <QFontMetricsF>
#include <QHeaderView>
#include <QPainter>
#include <QPrinter>
#include <QTreeView>
#include <algorithm>

#include "window/painting/DrawingPainter.h"

namespace Vantrel::Window {

namespace {

constexpr double kPointsPerInch = 72;
constexpr double kTextPoints = 9;

// Paints the pages of one table. Lengths are in points.
class TTablePrinter {
 public:
  TTablePrinter(const TPrintable& pPrintable, QPainter& pPainter, QPrinter& pPrinter, QSizeF pPage)
      : fPrintable(pPrintable), fPainter(pPainter), fPrinter(pPrinter), fPage(pPage) {
    fFont = PictureFont();
    fFont.setPixelSize(static_cast<int>(kTextPoints));
    fRowHeight = QFontMetricsF(fFont).height() * 1.3;
    double widths = 0;
    for (const TPrintedTable::TColumn& column : pPrintable.fTable.fColumns) widths += column.fWidth;
    for (const TPrintedTable::TColumn& column : pPrintable.fTable.fColumns)
      fWidths << column.fWidth / std::max(1.0, widths) * pPage.width();
  }

  void Paint() {
    StartPage();
    for (const QStringList& row : fPrintable.fTable.fRows) {
      if (fTop + fRowHeight > fPage.height()) {
        fPrinter.newPage();
        StartPage();
      }
      PaintRow(row);
    }
  }

 private:
  void StartPage() {
    fTop = 0;
    QFont bold = fFont;
    bold.setBold(true);
    fPainter.setFont(bold);
    const QString title = QFontMetricsF(bold).elidedText(fPrintable.fTitle, Qt::ElideMiddle, fPage.width());
    fPainter.drawText(QRectF(0, 0, fPage.width(), fRowHeight), Qt::AlignLeft | Qt::AlignVCenter, title);
    fTop += 1.4 * fRowHeight;
    QStringList captions;
    for (const TPrintedTable::TColumn& column : fPrintable.fTable.fColumns) captions << column.fCaption;
    PaintRow(captions);
    fPainter.setPen(QPen(Qt::gray, 0.5));
    fPainter.drawLine(QPointF(0, fTop), QPointF(fPage.width(), fTop));
    fPainter.setPen(Qt::black);
    fPainter.setFont(fFont);
    fTop += 2;
  }

  void PaintRow(const QStringList& pCells) {
    constexpr double kGap = 3;
    const QFontMetricsF metrics(fPainter.font());
    double left = 0;
    for (qsizetype i = 0; i < pCells.size(); ++i) {
      const QRectF cell(left + kGap, fTop, std::max(1.0, fWidths[i] - 2 * kGap), fRowHeight);
      const auto side = fPrintable.fTable.fColumns[i].fIsRight ? Qt::AlignRight : Qt::AlignLeft;
      fPainter.drawText(cell, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine,
                        metrics.elidedText(pCells[i], Qt::ElideMiddle, cell.width()));
      left += fWidths[i];
    }
    fTop += fRowHeight;
  }

  const TPrintable& fPrintable;
  QPainter& fPainter;
  QPrinter& fPrinter;
  const QSizeF fPage;
  QFont fFont;
  double fRowHeight;
  QList<double> fWidths;
  double fTop = 0;
};

}  // namespace

QModelIndexList ShownRows(const QTreeView& pView) {
  const QAbstractItemModel& model = *pView.model();
  QModelIndexList shown;
  QModelIndexList open;  // the next one last
  const auto push = [&](const QModelIndex& pParent) {
    for (int row = model.rowCount(pParent) - 1; row >= 0; --row) open << model.index(row, 0, pParent);
  };
  push(pView.rootIndex());
  while (!open.isEmpty()) {
    shown << open.takeLast();
    if (pView.isExpanded(shown.last())) push(shown.last());
  }
  return shown;
}

TPrintedTable TPrintedTable::Of(const QTreeView& pView) {
  TPrintedTable table;
  const QAbstractItemModel& model = *pView.model();
  const QHeaderView& header = *pView.header();
  QList<int> columns;
  for (int visual = 0; visual < header.count(); ++visual) {
    const int column = header.logicalIndex(visual);
    if (header.isSectionHidden(column)) continue;
    columns << column;
    const int alignment = model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).toInt();
    table.fColumns << TColumn{model.headerData(column, Qt::Horizontal).toString(),
                              static_cast<double>(header.sectionSize(column)), (alignment & Qt::AlignRight) != 0};
  }
  for (const QModelIndex& row : ShownRows(pView)) {
    QStringList cells;
    for (const int column : columns) cells << row.siblingAtColumn(column).data().toString();
    if (row.parent() != pView.rootIndex() && !cells.isEmpty()) cells.front().prepend(QStringLiteral("    "));
    table.fRows << cells;
  }
  return table;
}

bool Print(const TPrintable& pPrintable, QPrinter& pPrinter) {
  QPainter painter;
  if (!painter.begin(&pPrinter)) return false;
  const double scale = pPrinter.resolution() / kPointsPerInch;
  const QSizeF page = QSizeF(pPrinter.pageLayout().paintRectPixels(pPrinter.resolution()).size()) / scale;
  painter.scale(scale, scale);
  if (!pPrintable.fMakeDrawing) {
    TTablePrinter(pPrintable, painter, pPrinter, page).Paint();
  } else {
    const Drawing::TDrawing drawing = pPrintable.fMakeDrawing();
    if (drawing.fWidth > 0 && drawing.fHeight > 0) {
      const double fit = std::min(page.width() / drawing.fWidth, page.height() / drawing.fHeight);
      painter.scale(fit, fit);
      PaintDrawing(painter, drawing, PictureFont());
    }
  }
  return painter.end();
}

}  // namespace Vantrel::Window

#pragma once

// Drawings and tables on paper.

#include <QList>
#include <QModelIndexList>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "presentation/drawing/Drawing.h"

class QPrinter;
class QTreeView;

namespace Vantrel::Window {

// All rows that are shown: those of the view's top, and beneath each expanded one. In their order.
QModelIndexList ShownRows(const QTreeView& pView);

// A table's visible columns and all its rows, as texts.
struct TPrintedTable {
  struct TColumn {
    QString fCaption;
    double fWidth;  // in proportion to the others
    bool fIsRight;
  };
  QList<TColumn> fColumns;
  QList<QStringList> fRows;

  // As they are shown; a row beneath another one is set in. Window thread.
  static TPrintedTable Of(const QTreeView& pView);
};

// What goes on paper: a drawing if there is a maker of one, else the table.
struct TPrintable {
  QString fTitle;
  std::function<Drawing::TDrawing()> fMakeDrawing{};
  TPrintedTable fTable{};

  bool IsEmpty() const { return !fMakeDrawing && fTable.fRows.isEmpty(); }
};

// A drawing fills a page. A table takes as many as it needs, with its captions on each. False when the printer cannot
// be used. Takes a while; any thread.
bool Print(const TPrintable& pPrintable, QPrinter& pPrinter);

}  // namespace Vantrel::Window

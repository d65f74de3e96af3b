#pragma once

// The table in which panes show their rows.

#include <QTreeView>

namespace Vantrel::Window {

// The view's selected rows, or without any all rows of its top, as lines of cells with tabs between them, under the
// captions. Hidden columns are left out.
QString RowsAsText(const QTreeView& pView);

// A flat table: whole rows are selected, Ctrl+C copies them, Enter and a double click activate one.
class TTableView : public QTreeView {
  Q_OBJECT
 public:
  explicit TTableView(QWidget* pParent = nullptr);

  void CopyRows() const;
  // Shown in the middle while there are no rows.
  void SetEmptyText(const QString& pText);
  // Sizes the columns to what they hold, once.
  void FitColumns();

 protected:
  void paintEvent(QPaintEvent* pEvent) override;
  void keyPressEvent(QKeyEvent* pEvent) override;

 private:
  QString fEmptyText;
};

}  // namespace Vantrel::Window

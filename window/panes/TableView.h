#pragma once

// The table in which panes show their rows.

#include <QTreeView>
#include <vector>

namespace Vantrel::Window {

// The selected rows, or without any the shown ones, as lines of cells with tabs between them, under the captions.
// Hidden columns are left out.
QString RowsAsText(const QTreeView& pView);

// Whole rows are selected, Ctrl+C copies them, Enter and a double click activate one. A right click on the captions
// chooses columns. Flat, unless its model is not.
class TTableView : public QTreeView {
  Q_OBJECT
 public:
  explicit TTableView(QWidget* pParent = nullptr);

  void CopyRows() const;
  // Shown in the middle while there are no rows.
  void SetEmptyText(const QString& pText);
  // Once there are rows and the table is seen: gives the columns the kept layout, or else hides those of pHidden and
  // sizes the others to what they hold, as far as the table has room. Columns of text are cut first.
  void FitColumns(const std::vector<int>& pHidden = {});
  // Widths, order and choice of the columns; empty before there are any.
  QByteArray Layout() const;
  // Kept until there are columns. A layout of another number of columns is not used.
  void KeepLayout(const QByteArray& pLayout) { fLayout = pLayout; }

 protected:
  void paintEvent(QPaintEvent* pEvent) override;
  void keyPressEvent(QKeyEvent* pEvent) override;
  void showEvent(QShowEvent* pEvent) override;

 private:
  std::vector<int> FittingWidths();
  void ShowColumnMenu(const QPoint& pAt);

  QString fEmptyText;
  QByteArray fLayout;
  std::vector<int> fHiddenAtFirst;
  bool fIsFitted = false;
};

}  // namespace Vantrel::Window

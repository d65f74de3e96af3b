#pragma once

// The view of entries: of the tree, and of one folder's contents.

#include <QTreeView>
#include <memory>
#include <vector>

#include "model/columns/MetaData.h"
#include "model/tree/ExpandedFolders.h"

namespace Vantrel::Window {

class TEntriesModel;

// Columns are chosen in the header's menu. Keys: Enter activates, Backspace goes to the folder above, Ctrl+C copies the
// selected rows as a table.
class TEntriesView : public QTreeView {
  Q_OBJECT
 public:
  // pColumns are the columns that are shown at first, besides the name and the figure.
  TEntriesView(TEntriesModel& pModel, std::vector<TColumn> pColumns, QWidget* pParent = nullptr);

  TEntriesModel& Entries() const { return fModel; }
  void ShowColumn(TColumn pColumn, bool pShown);
  bool ShowsColumn(TColumn pColumn) const;
  QByteArray Layout() const;
  // Restores what Layout gave. Without it the usual columns are shown.
  void SetLayout(const QByteArray& pLayout);
  // What is shown expanded of a row and beneath it.
  std::shared_ptr<const TExpandedFolders> ExpandedFolders(const QModelIndex& pTop) const;
  void SetEmptyText(const QString& pText) { fEmptyText = pText; }

 Q_SIGNALS:
  void MenuWanted(const QModelIndex& pIndex, const QPoint& pAt);
  void UpWanted();

 protected:
  void keyPressEvent(QKeyEvent* pEvent) override;
  void paintEvent(QPaintEvent* pEvent) override;
  void resizeEvent(QResizeEvent* pEvent) override;

 private:
  // Until the user sets a width, the name takes the room that the other columns leave.
  void FitName();
  void ShowUsualColumns();
  void ShowColumnMenu(const QPoint& pAt);
  void Activate(const QModelIndex& pIndex);
  void ShowMoreInSight();

  TEntriesModel& fModel;
  const std::vector<TColumn> fColumns;
  QString fEmptyText;
  bool fNameFits = true;
  bool fIsFitting = false;
};

}  // namespace Vantrel::Window

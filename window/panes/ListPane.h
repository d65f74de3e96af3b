#pragma once

// A pane that shows a list of `presentation/lists/` for the chosen folder.

#include <functional>
#include <optional>

#include "presentation/lists/List.h"
#include "window/panes/Pane.h"

class QLabel;
class QLineEdit;

namespace Vantrel::Window {

class TListModel;
class TTableView;

// The list is filled and sorted on another thread. While it is filled the earlier one stays.
class TListPane : public TPane {
  Q_OBJECT
 public:
  // Makes the list of a place. Called on another thread, maybe when the window has gone.
  using TFill = std::function<Presentation::TList(const TPlace&)>;
  // Makes such a function for one filling. Called on the window's thread, for what may be read there alone.
  using TPrepareFill = std::function<TFill()>;

  // pName identifies the pane in the layout; pEmptyText stands where rows would be.
  TListPane(const QString& pName, const QString& pEmptyText, TFill pFill, QWidget* pParent = nullptr);
  void PrepareEachFill(TPrepareFill pPrepare) { fPrepareFill = std::move(pPrepare); }

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override;
  TPrintable Printable() const override;

  void SetUnit(TSizeUnit pUnit);
  // Columns that the user has to choose in the header's menu.
  void HideAtFirst(std::vector<TColumn> pColumns) { fHidden = std::move(pColumns); }
  // Until the user sorts it, the list is sorted by this column, the largest first.
  void SortAtFirst(TColumn pColumn) { fSortAtFirst = pColumn; }
  // Writes the list as it is shown to a CSV file. Failures are shown.
  void ExportTo(const QString& pFile);
  bool IsFilling() const { return fIsFilling; }
  TListModel& Model() { return *fModel; }
  TTableView& Table() { return *fTable; }

 private:
  void Fill();
  void Receive(Presentation::TList pList);
  void SortBy(int pColumn, Qt::SortOrder pOrder);
  void Activate(const QModelIndex& pIndex);
  void ShowMenu(const QPoint& pAt);
  void FitColumns();
  void AskForExport();
  bool IsSame(const TPlace& pPlace) const;

  const TFill fFill;
  TPrepareFill fPrepareFill;  // empty: fFill serves each time
  std::vector<TColumn> fHidden;
  TPlace fPlace;
  QLabel* fTitle;
  TTableView* fTable;
  TListModel* fModel;
  int fSortColumn = -1;  // -1: the user has not sorted it
  std::optional<TColumn> fSortAtFirst;
  bool fDescending = true;
  bool fIsFilling = false;
  bool fIsStale = false;
};

}  // namespace Vantrel::Window

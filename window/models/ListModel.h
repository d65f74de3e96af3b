#pragma once

// A Qt model of a list of `presentation/lists/`.

#include <QAbstractTableModel>

#include "presentation/lists/List.h"

namespace Vantrel::Window {

// Shows a list as it is. A new list replaces the earlier one. Shares answer erShare (EntriesModel.h) for their bars.
class TListModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  using QAbstractTableModel::QAbstractTableModel;

  void SetList(Presentation::TList pList);
  const Presentation::TList& List() const { return fList; }
  void SetUnit(TSizeUnit pUnit);
  const TValueFormat& Format() const { return fFormat; }
  // The row with the key; -1 when there is none.
  int RowOfKey(const std::u16string& pKey) const;

  int rowCount(const QModelIndex& pParent = {}) const override;
  int columnCount(const QModelIndex& pParent = {}) const override;
  QVariant data(const QModelIndex& pIndex, int pRole) const override;
  QVariant headerData(int pSection, Qt::Orientation pOrientation, int pRole) const override;

 private:
  Presentation::TList fList;
  TValueFormat fFormat;
};

}  // namespace Vantrel::Window

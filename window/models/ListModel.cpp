#include "window/models/ListModel.h"

#include <QColor>
#include <QPainter>
#include <QPixmap>

#include "window/models/EntriesModel.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

void TListModel::SetList(Presentation::TList pList) {
  beginResetModel();
  fList = std::move(pList);
  endResetModel();
}

void TListModel::SetUnit(TSizeUnit pUnit) {
  beginResetModel();
  fFormat = WindowFormat(pUnit);
  endResetModel();
}

int TListModel::RowOfKey(const std::u16string& pKey) const {
  for (size_t row = 0; row < fList.fRows.size(); ++row)
    if (fList.fRows[row].fKey == pKey) return static_cast<int>(row);
  return -1;
}

int TListModel::rowCount(const QModelIndex& pParent) const {
  return pParent.isValid() ? 0 : static_cast<int>(fList.fRows.size());
}

int TListModel::columnCount(const QModelIndex& pParent) const {
  return pParent.isValid() ? 0 : static_cast<int>(fList.fColumns.size());
}

QVariant TListModel::data(const QModelIndex& pIndex, int pRole) const {
  if (!pIndex.isValid()) return {};
  const Presentation::TListRow& row = fList.fRows[pIndex.row()];
  const TColumn column = fList.fColumns[pIndex.column()].fColumn;
  if (static_cast<size_t>(pIndex.column()) >= row.fValues.size()) return {};
  const TMetaDataValue& value = row.fValues[pIndex.column()];
  switch (pRole) {
    case Qt::DisplayRole:
      return ShownValue(column, value, fFormat);
    case Qt::ToolTipRole:
      return ColumnInfo(column).fKind == TColumnKind::ckText ? ShownValue(column, value, fFormat) : QVariant();
    case Qt::TextAlignmentRole:
      return QVariant(
          (Presentation::AlignmentOf(column) == Presentation::TAlignment::alRight ? Qt::AlignRight : Qt::AlignLeft) |
          Qt::AlignVCenter);
    case Qt::DecorationRole:
      if (pIndex.column() != 0 || !row.fColor) return {};
      return QColor::fromRgb(*row.fColor);
    case erShare: {
      const auto* share = std::get_if<double>(&value);
      return share && ColumnInfo(column).fKind == TColumnKind::ckShare ? QVariant(*share) : QVariant();
    }
    default:
      return {};
  }
}

QVariant TListModel::headerData(int pSection, Qt::Orientation pOrientation, int pRole) const {
  if (pOrientation != Qt::Horizontal || pSection < 0 || pSection >= columnCount()) return {};
  const Presentation::TListColumn& column = fList.fColumns[pSection];
  if (pRole == Qt::DisplayRole) return Shown(column.fCaption);
  if (pRole == Qt::TextAlignmentRole && Presentation::AlignmentOf(column.fColumn) == Presentation::TAlignment::alRight)
    return QVariant(Qt::AlignRight | Qt::AlignVCenter);
  return {};
}

}  // namespace Vantrel::Window

#pragma once

// Paints cells with a bar for their share, and all others plainly.

#include <QStyledItemDelegate>

namespace Vantrel::Window {

class TShareDelegate : public QStyledItemDelegate {
  Q_OBJECT
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* pPainter, const QStyleOptionViewItem& pOption, const QModelIndex& pIndex) const override;
  QSize sizeHint(const QStyleOptionViewItem& pOption, const QModelIndex& pIndex) const override;

 protected:
  void initStyleOption(QStyleOptionViewItem* pOption, const QModelIndex& pIndex) const override;
};

}  // namespace Vantrel::Window

#include "window/models/ShareDelegate.h"

#include <QApplication>
#include <QPainter>
#include <algorithm>

#include "window/models/EntriesModel.h"
#include "window/models/Icons.h"

namespace Vantrel::Window {

void TShareDelegate::initStyleOption(QStyleOptionViewItem* pOption, const QModelIndex& pIndex) const {
  QStyledItemDelegate::initStyleOption(pOption, pIndex);
  // The cell with the keyboard focus is part of the selected row, which says enough.
  pOption->state &= ~QStyle::State_HasFocus;
  // Styles leave hardly any room between a text on the right and one on the left of the next column.
  if ((pOption->displayAlignment & Qt::AlignRight) != 0 && !pOption->text.isEmpty())
    pOption->text += QString(2, QChar(QChar::Nbsp));
  // Of a long path, the end tells more than the middle.
  const bool isPath = pOption->text.contains(u'/') || pOption->text.contains(u'\\');
  if (isPath || (pIndex.data(erKind).isValid() && pIndex.column() == ecName)) pOption->textElideMode = Qt::ElideMiddle;
}

void TShareDelegate::paint(QPainter* pPainter, const QStyleOptionViewItem& pOption, const QModelIndex& pIndex) const {
  const QVariant share = pIndex.data(erShare);
  if (!share.isValid()) return QStyledItemDelegate::paint(pPainter, pOption, pIndex);
  QStyleOptionViewItem option = pOption;
  initStyleOption(&option, pIndex);
  const QString text = std::exchange(option.text, QString()).trimmed();
  const QStyle& style = option.widget ? *option.widget->style() : *QApplication::style();
  style.drawControl(QStyle::CE_ItemViewItem, &option, pPainter, option.widget);

  const bool isSelected = (option.state & QStyle::State_Selected) != 0 && InvertsSelection(style);
  const QPalette::ColorRole ink = isSelected ? QPalette::HighlightedText : QPalette::Text;
  QColor bar = option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Highlight);
  bar.setAlphaF(isSelected ? 0.30F : 0.28F);
  const QRectF room = QRectF(option.rect).adjusted(3, 3, -3, -3);
  const double part = std::clamp(share.toDouble(), 0.0, 1.0);
  pPainter->save();
  pPainter->setRenderHint(QPainter::Antialiasing);
  pPainter->setPen(Qt::NoPen);
  QColor ground = option.palette.color(ink);
  ground.setAlphaF(0.05F);
  pPainter->setBrush(ground);
  pPainter->drawRoundedRect(room, 2.5, 2.5);
  if (part > 0) {
    pPainter->setBrush(bar);
    pPainter->drawRoundedRect(QRectF(room.topLeft(), QSizeF(std::max(2.0, room.width() * part), room.height())), 2.5,
                              2.5);
  }
  pPainter->setPen(option.palette.color(ink));
  pPainter->setFont(option.font);
  pPainter->drawText(room.adjusted(4, 0, -5, 0), Qt::AlignRight | Qt::AlignVCenter, text);
  pPainter->restore();
}

QSize TShareDelegate::sizeHint(const QStyleOptionViewItem& pOption, const QModelIndex& pIndex) const {
  QSize size = QStyledItemDelegate::sizeHint(pOption, pIndex);
  size.setHeight(std::max(size.height(), pOption.fontMetrics.height() + 7));
  if (pIndex.data(erShare).isValid()) size.rwidth() += 16;
  return size;
}

}  // namespace Vantrel::Window

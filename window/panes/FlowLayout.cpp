#include "window/panes/FlowLayout.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>

namespace Vantrel::Window {

QLayoutItem* TFlowLayout::itemAt(int pIndex) const {
  return pIndex >= 0 && pIndex < count() ? fItems[pIndex].get() : nullptr;
}

QLayoutItem* TFlowLayout::takeAt(int pIndex) {
  if (pIndex < 0 || pIndex >= count()) return nullptr;
  QLayoutItem* item = fItems[pIndex].release();
  fItems.erase(fItems.begin() + pIndex);
  return item;
}

QSize TFlowLayout::sizeHint() const {
  int width = 0;
  int height = 0;
  for (const auto& item : fItems) {
    if (item->isEmpty()) continue;
    width += (width > 0 ? spacing() : 0) + item->sizeHint().width();
    height = std::max(height, item->sizeHint().height());
  }
  return QSize(width, height).grownBy(contentsMargins());
}

QSize TFlowLayout::minimumSize() const {
  QSize size;
  for (const auto& item : fItems)
    if (!item->isEmpty()) size = size.expandedTo(item->minimumSize());
  return size.grownBy(contentsMargins());
}

void TFlowLayout::setGeometry(const QRect& pRect) {
  QLayout::setGeometry(pRect);
  Arrange(pRect, true);
}

int TFlowLayout::Arrange(const QRect& pRect, bool pMoves) const {
  const QRect inside = pRect.marginsRemoved(contentsMargins());
  int top = inside.top();
  for (size_t begin = 0; begin < fItems.size();) {
    int width = 0;
    int height = 0;
    size_t end = begin;
    for (; end < fItems.size(); ++end) {
      if (fItems[end]->isEmpty()) continue;
      const QSize size = fItems[end]->sizeHint();
      const int wider = width + (width > 0 ? spacing() : 0) + size.width();
      if (width > 0 && wider > inside.width()) break;
      width = wider;
      height = std::max(height, size.height());
    }
    if (pMoves) PlaceRow(begin, end, QRect(inside.left(), top, inside.width(), height));
    top += height + (end < fItems.size() ? spacing() : 0);
    begin = end;
  }
  return top - inside.top() + contentsMargins().top() + contentsMargins().bottom();
}

void TFlowLayout::PlaceRow(size_t pBegin, size_t pEnd, const QRect& pRow) const {
  const Qt::LayoutDirection direction = parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
  int left = pRow.left();
  for (size_t i = pBegin; i < pEnd; ++i) {
    if (fItems[i]->isEmpty()) continue;
    const QSize size = fItems[i]->sizeHint();
    const QRect place(left, pRow.top() + (pRow.height() - size.height()) / 2, std::min(size.width(), pRow.width()),
                      size.height());
    fItems[i]->setGeometry(QStyle::visualRect(direction, pRow, place));
    left += size.width() + spacing();
  }
}

}  // namespace Vantrel::Window

#pragma once

// A layout that puts its items in as many rows as the width needs.

#include <QLayout>
#include <memory>
#include <vector>

namespace Vantrel::Window {

// From left to right in the order of the items, each as large as it wants to be, in the middle of its row.
class TFlowLayout : public QLayout {
 public:
  void addItem(QLayoutItem* pItem) override { fItems.emplace_back(pItem); }
  int count() const override { return static_cast<int>(fItems.size()); }
  QLayoutItem* itemAt(int pIndex) const override;
  QLayoutItem* takeAt(int pIndex) override;
  Qt::Orientations expandingDirections() const override { return {}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int pWidth) const override { return Arrange(QRect(0, 0, pWidth, 0), false); }
  QSize sizeHint() const override;     // all in one row
  QSize minimumSize() const override;  // the widest item
  void setGeometry(const QRect& pRect) override;

 private:
  // Returns the height that the width needs.
  int Arrange(const QRect& pRect, bool pMoves) const;
  void PlaceRow(size_t pBegin, size_t pEnd, const QRect& pRow) const;

  std::vector<std::unique_ptr<QLayoutItem>> fItems;
};

}  // namespace Vantrel::Window

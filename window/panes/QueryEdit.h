#pragma once

// The line in which a query is typed, in the colours of its words.

#include <QLineEdit>

namespace Vantrel::Window {

// Colours its text by the query language while it is typed, and underlines the place of an error.
class TQueryEdit : public QLineEdit {
  Q_OBJECT
 public:
  explicit TQueryEdit(QWidget* pParent = nullptr);

  // Underlines a place, counted in UTF-16 units. The mark goes when the text changes.
  void MarkError(size_t pBegin, size_t pLength);
  void ForgetError();
  // The marked place; empty without one.
  QString MarkedText() const { return text().mid(fErrorBegin, fErrorLength); }

 protected:
  void changeEvent(QEvent* pEvent) override;

 private:
  void Colour();

  int fErrorBegin = 0;
  int fErrorLength = 0;
};

}  // namespace Vantrel::Window

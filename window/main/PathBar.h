#pragma once

// The bar with the chosen path: a button for each folder on the way, and a field to type another path.

#include <QStackedWidget>

class QHBoxLayout;
class QLineEdit;
class QScrollArea;

namespace Vantrel::Window {

class TPathBar : public QStackedWidget {
  Q_OBJECT
 public:
  explicit TPathBar(QWidget* pParent = nullptr);

  // The top's path is one button; the folders beneath it have one each.
  void SetPath(const QString& pTop, const QString& pPath, QChar pDelimiter);
  // Shows the field, to type a path. Enter scans it, or goes there if it lies in an open root.
  void Edit();
  QLineEdit& Field() { return *fField; }

 Q_SIGNALS:
  void PathChosen(const QString& pPath);
  void PathTyped(const QString& pPath);

 protected:
  bool eventFilter(QObject* pObject, QEvent* pEvent) override;

 private:
  void AddButton(const QString& pText, const QString& pPath);

  QWidget* fCrumbs;
  QHBoxLayout* fButtons;
  QLineEdit* fField;
  QString fPath;
};

// A field for the path of a folder that completes what is typed.
QLineEdit* NewPathField(QWidget* pParent = nullptr);

}  // namespace Vantrel::Window

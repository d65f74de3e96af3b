#pragma once

// What the window shows before anything is scanned: a path field, the drives, the recent targets.

#include <QWidget>

class QLabel;
class QLineEdit;
class QListWidget;

namespace Vantrel::Window {

class TListModel;
class TTableView;

class TStartPage : public QWidget {
  Q_OBJECT
 public:
  explicit TStartPage(QWidget* pParent = nullptr);

  void SetRecent(const QStringList& pPaths);
  void SetUnit(int pUnit);
  // Asks the system for the drives again, on another thread.
  void ReadDrives();
  QLineEdit& PathField() { return *fField; }
  TTableView& Drives() { return *fDrives; }
  QListWidget& Recent() { return *fRecent; }

 Q_SIGNALS:
  void PathChosen(const QString& pPath);
  void FileWanted();

 protected:
  void showEvent(QShowEvent* pEvent) override;

 private:
  QWidget* MakePathRow();
  void Browse();

  QLineEdit* fField;
  TTableView* fDrives;
  TListModel* fDriveModel;
  QListWidget* fRecent;
  QLabel* fRecentTitle;
  bool fIsReading = false;
};

}  // namespace Vantrel::Window

#pragma once

// What all panes of the window have in common: each shows one folder of a scanned root.

#include <QWidget>

#include "model/roots/RootInterfaces.h"
#include "window/painting/Printing.h"

namespace Vantrel::Window {

// A folder of a root. Both are nullptr when nothing is chosen.
struct TPlace {
  TRef<IHierarchicalRoot> fRoot;
  TRef<IFolderData> fFolder;
};

// A part of the window beside or below the tree. Window thread only.
class TPane : public QWidget {
  Q_OBJECT
 public:
  using QWidget::QWidget;

  // Shows another folder, or nothing. Returns at once; what takes time is worked out on other threads.
  virtual void ShowPlace(const TPlace& pPlace) = 0;
  // The shown folder may have changed. Called a few times a second at most while a scan runs, only for visible panes.
  virtual void Refresh() = 0;
  // What is shown at the moment, for paper. Empty when there is nothing.
  virtual TPrintable Printable() const { return {}; }

 Q_SIGNALS:
  // The user chose a folder, or a file by its full path, that the tree should go to.
  void PathChosen(const QString& pPath);
};

}  // namespace Vantrel::Window

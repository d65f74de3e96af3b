#pragma once

// The dialog with all that is known about a folder.

#include <QDialog>

#include "window/panes/Pane.h"

namespace Vantrel::Window {

class TPropertiesDialog : public QDialog {
  Q_OBJECT
 public:
  TPropertiesDialog(const TPlace& pPlace, QWidget* pParent);
};

}  // namespace Vantrel::Window

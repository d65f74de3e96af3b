#pragma once

// The program's one window.

#include <QMainWindow>

namespace Vantrel::Window {

class TMainWindow : public QMainWindow {
  Q_OBJECT
 public:
  TMainWindow();
};

}  // namespace Vantrel::Window

#include "window/main/MainWindow.h"

namespace Vantrel::Window {

TMainWindow::TMainWindow() {
  setWindowTitle(QStringLiteral("Vantrel"));
}

}  // namespace Vantrel::Window

// The window program's entry point on Linux.

#include <QApplication>

#include "window/main/MainWindow.h"

int main(int pCount, char** pArguments) {
  const QApplication application(pCount, pArguments);
  Vantrel::Window::TMainWindow window;
  window.show();
  return QApplication::exec();
}

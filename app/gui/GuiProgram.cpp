#include "app/gui/GuiProgram.h"

#include <QApplication>
#include <QIcon>
#include <clocale>

#include "app/Version.h"
#include "automation/commandline/ExitCodes.h"
#include "platform/system/Console.h"
#include "scan/engine/ThreadPool.h"
#include "window/main/MainWindow.h"
#include "window/main/WindowStart.h"
#include "window/painting/PictureRenderer.h"

namespace Vantrel {

namespace {

// Qt keeps references to both. The command line is the program's own to read.
int gArgumentCount = 1;
char gProgram[] = "vantrel-gui";
char* gArguments[] = {gProgram, nullptr};

QIcon ProgramIcon() {
  QIcon icon;
  for (const int size : {16, 32, 48, 256}) icon.addFile(QStringLiteral(":/icons/vantrel-%1.png").arg(size));
  return icon;
}

// Passes what workers have for the window to its thread.
void UseWindowThread(QApplication& pApplication) {
  ThreadPool::SetSynchronizer([&pApplication](std::function<void()> pCall) {
    QMetaObject::invokeMethod(&pApplication, std::move(pCall), Qt::QueuedConnection);
  });
}

int OpenWindow(const Window::TWindowStart& pStart) {
  QApplication application(gArgumentCount, gArguments);
  std::setlocale(LC_NUMERIC, "C");  // Qt has set the user's
  QApplication::setApplicationName(QString::fromLatin1(kProgramName));
  QApplication::setApplicationVersion(QString::fromLatin1(kVersion));
  QApplication::setDesktopFileName(QStringLiteral("vantrel-gui"));
  QApplication::setWindowIcon(ProgramIcon());
  UseWindowThread(application);
  TConsole::SetCancelHandler(nullptr);  // Ctrl+C in the terminal ends the program
  int result = 0;
  {
    Window::TMainWindow window(pStart);
    window.show();
    result = QApplication::exec();
  }
  ThreadPool::SetSynchronizer({});
  return result;
}

}  // namespace

TRunSettings CreateWindowRunSettings(std::string pPlatformName) {
  static Window::TPictureRenderer renderer;
  TRunSettings settings = CreateRunSettings(std::move(pPlatformName));
  settings.fAbilities = {CommandLine::TWindowUse::wuUsual, true};
  settings.fRenderer = &renderer;
  settings.fOpenWindow = [writeError = settings.fWriteError](const Window::TWindowStart& pStart) {
    const std::string reason = ReasonForNoWindow();
    if (reason.empty()) return OpenWindow(pStart);
    writeError(reason);
    return static_cast<int>(ecWrongCommandLine);
  };
  return settings;
}

}  // namespace Vantrel

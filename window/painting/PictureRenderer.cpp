#include "window/painting/PictureRenderer.h"

#include <QOperatingSystemVersion>
#include <clocale>

#include "platform/system/Console.h"
#include "window/painting/DrawingPainter.h"

namespace Vantrel::Window {

namespace {

// Qt keeps references to both for as long as its application lives. The command line is the program's own to read.
int gArgumentCount = 1;
char gProgram[] = "vantrel-gui";
char* gArguments[] = {gProgram, nullptr};

// Qt's remarks, as about folders of desktops that a server has not, are no messages of the run.
void KeepQuiet(QtMsgType pType, const QMessageLogContext&, const QString& pText) {
  if (pType == QtCriticalMsg || pType == QtFatalMsg) TConsole::WriteError(pText.toStdString());
}

}  // namespace

std::vector<uint32_t> TPictureRenderer::Render(const Drawing::TDrawing& pDrawing) {
  if (QCoreApplication::instance() == nullptr) {
    // A server has no display. Windows always has one, and without it Qt finds no fonts there.
    if (QOperatingSystemVersion::currentType() != QOperatingSystemVersion::Windows)
      qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(KeepQuiet);
    fOwnApplication = std::make_unique<QGuiApplication>(gArgumentCount, gArguments);
    std::setlocale(LC_NUMERIC, "C");  // Qt has set the user's
  }
  return PixelsOf(pDrawing, PictureFont());
}

}  // namespace Vantrel::Window

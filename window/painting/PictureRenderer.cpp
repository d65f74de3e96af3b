#include "window/painting/PictureRenderer.h"

#include <clocale>

#include "platform/system/Errors.h"
#include "window/painting/DrawingPainter.h"

namespace Vantrel::Window {

namespace {

// Qt keeps references to both for as long as its application lives. The command line is the program's own to read.
int gArgumentCount = 1;
char gProgram[] = "vantrel-gui";
char* gArguments[] = {gProgram, nullptr};

}  // namespace

std::vector<uint32_t> TPictureRenderer::Render(const Drawing::TDrawing& pDrawing) {
  if (QCoreApplication::instance() == nullptr) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    fOwnApplication = std::make_unique<QGuiApplication>(gArgumentCount, gArguments);
    std::setlocale(LC_NUMERIC, "C");  // Qt has set the user's
  }
  const QImage image = BitmapOf(pDrawing, PictureFont());
  if (image.isNull()) throw EInvalidOperation("There is no memory for a picture of this size");
  std::vector<uint32_t> pixels;
  pixels.reserve(static_cast<size_t>(image.width()) * static_cast<size_t>(image.height()));
  for (int row = 0; row < image.height(); ++row) {
    const auto* line = reinterpret_cast<const uint32_t*>(image.constScanLine(row));
    pixels.insert(pixels.end(), line, line + image.width());
  }
  return pixels;
}

}  // namespace Vantrel::Window

#include "window/painting/PictureFile.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QMessageBox>

#include "automation/actions/ExportFile.h"
#include "export/pictures/PNGEncoder.h"
#include "export/pictures/SVGWriter.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"
#include "window/painting/DrawingPainter.h"

namespace Vantrel::Window {

namespace {

std::string EncodedBitmap(const Drawing::TDrawing& pDrawing, const QFont& pFont) {
  const std::vector<uint32_t> pixels = PixelsOf(pDrawing, pFont);
  const int width = static_cast<int>(pDrawing.fWidth);
  return Pictures::EncodePNG(width, static_cast<int>(pixels.size()) / width, pixels);
}

}  // namespace

void WritePictureFile(const Drawing::TDrawing& pDrawing, const std::u16string& pFile, const QFont& pFont) {
  PostScanActions::TExportFile file(pFile, [] { return false; });
  if (HasExtension(pFile, u".png"))
    file.Write(EncodedBitmap(pDrawing, pFont));
  else
    Pictures::WriteSVG(pDrawing, file);
  file.Commit();
}

void SavePictureAs(QWidget* pParent, const QString& pName, const QFont& pFont,
                   std::function<Drawing::TDrawing()> pMakeDrawing) {
  const QString filters = QWidget::tr("PNG picture (*.png);;SVG drawing (*.svg)");
  QString filter;
  QString name = QFileDialog::getSaveFileName(pParent, QWidget::tr("Save picture"), pName, filters, &filter);
  if (name.isEmpty()) return;
  const auto endsWith = [&](const char* pEnd) { return name.endsWith(QLatin1String(pEnd), Qt::CaseInsensitive); };
  if (!endsWith(".png") && !endsWith(".svg"))
    name += filter.contains(QLatin1String("svg")) ? QStringLiteral(".svg") : QStringLiteral(".png");
  RunInBackground(
      LongWork(), pParent,
      [file = FromQString(name), pFont, make = std::move(pMakeDrawing)] {
        WritePictureFile(make(), file, pFont);
        return true;
      },
      [pParent](const TOutcome<bool>& pOutcome) {
        if (pOutcome.fError.isEmpty()) return;
        QMessageBox::warning(pParent, QWidget::tr("Save picture"), pOutcome.fError);
      });
}

void CopyPicture(const QImage& pImage) {
  if (!pImage.isNull()) QGuiApplication::clipboard()->setImage(pImage);
}

}  // namespace Vantrel::Window

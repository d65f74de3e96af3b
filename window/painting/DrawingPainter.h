#pragma once

// Paints drawings with the fonts of the system, on widgets and into bitmaps.

#include <QFont>
#include <QImage>
#include <vector>

#include "presentation/drawing/Drawing.h"
#include "presentation/drawing/TextMeasure.h"

class QPainter;

namespace Vantrel::Window {

// The font of pictures that stand alone, outside of any window.
QFont PictureFont();

// Measures texts as PaintDrawing paints them. The font's own size does not matter. Any thread.
class TFontMeasure final : public Drawing::ITextMeasure {
 public:
  explicit TFontMeasure(QFont pFont) : fFont(std::move(pFont)) {}
  double Width(std::u16string_view pText, double pFontSize) const override;

 private:
  const QFont fFont;
};

// Paints a drawing, its background included, with texts in this font. The drawing's pixels are the painter's units, so
// a painter with a scale paints lines and texts as sharp as its device can. Looks as the SVG file of the same drawing.
// Any thread that may use the painter.
void PaintDrawing(QPainter& pPainter, const Drawing::TDrawing& pDrawing, const QFont& pFont);

// The drawing as a bitmap without transparency, cut to whole pixels. Empty when the system has no memory for it.
QImage BitmapOf(const Drawing::TDrawing& pDrawing, const QFont& pFont);
// The bitmap's pixels, row by row from the top: 0xFFRRGGBB. EInvalidOperation when it is empty.
std::vector<uint32_t> PixelsOf(const Drawing::TDrawing& pDrawing, const QFont& pFont);

}  // namespace Vantrel::Window

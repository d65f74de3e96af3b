#include "window/painting/DrawingPainter.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>
#include <cmath>

#include "platform/system/Errors.h"
#include "window/models/ShownText.h"

namespace Vantrel::Window {

using namespace Drawing;

namespace {

// Fonts have whole sizes in pixels. Other sizes are painted by a painter with a scale, so that letters have the very
// size that the drawing asks for. Letters are not fitted to the pixels of one size, so that widths grow in proportion.
struct TSizedFont {
  QFont fFont;
  double fScale = 1;

  TSizedFont(const QFont& pBase, double pSize, bool pBold) : fFont(pBase) {
    const double whole = std::max(1.0, std::ceil(pSize));
    fFont.setPixelSize(static_cast<int>(whole));
    fFont.setBold(pBold);
    fFont.setHintingPreference(QFont::PreferNoHinting);
    fScale = pSize / whole;
  }
};

QColor ColorOf(TColor pColor, double pOpacity = 1) {
  QColor color = QColor::fromRgb(static_cast<QRgb>(pColor) | 0xFF000000);
  color.setAlphaF(static_cast<float>(std::clamp(pOpacity, 0.0, 1.0)));
  return color;
}

QPen PenOf(const TPaint& pPaint) {
  if (pPaint.fLineWidth <= 0) return Qt::NoPen;
  QPen pen(ColorOf(pPaint.fLine), pPaint.fLineWidth, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
  // In units of the line's width.
  if (pPaint.fDashed) pen.setDashPattern({4 / pPaint.fLineWidth, 3 / pPaint.fLineWidth});
  return pen;
}

QBrush BrushOf(const TPaint& pPaint) {
  if (pPaint.fOpacity <= 0) return Qt::NoBrush;
  return ColorOf(pPaint.fFill, pPaint.fOpacity);
}

QRectF SquareAround(TPoint pCenter, double pRadius) {
  return {pCenter.fX - pRadius, pCenter.fY - pRadius, 2 * pRadius, 2 * pRadius};
}

// Drawings turn clockwise from the top, Qt turns counter-clockwise from the right.
QPainterPath PathOf(const TWedge& pWedge) {
  constexpr double kTop = 90;
  constexpr double kWhole = 359.999;
  const QRectF outer = SquareAround(pWedge.fCenter, pWedge.fOuterRadius);
  const QRectF inner = SquareAround(pWedge.fCenter, pWedge.fInnerRadius);
  QPainterPath path;
  path.setFillRule(Qt::OddEvenFill);
  if (pWedge.fSweep >= kWhole) {
    path.addEllipse(outer);
    if (pWedge.fInnerRadius > 0) path.addEllipse(inner);
    return path;
  }
  const double begin = kTop - pWedge.fBegin;
  path.arcMoveTo(outer, begin);
  path.arcTo(outer, begin, -pWedge.fSweep);
  if (pWedge.fInnerRadius > 0)
    path.arcTo(inner, begin - pWedge.fSweep, pWedge.fSweep);
  else
    path.lineTo(pWedge.fCenter.fX, pWedge.fCenter.fY);
  path.closeSubpath();
  return path;
}

QPolygonF PointsOf(const std::vector<TPoint>& pPoints) {
  QPolygonF points;
  points.reserve(static_cast<qsizetype>(pPoints.size()));
  for (const TPoint& point : pPoints) points.append({point.fX, point.fY});
  return points;
}

// One line of text in one size. An anchor is a place and not a side of the text, so a name in Arabic begins at the
// left, too, as in SVG.
class TTextLine {
 public:
  TTextLine(const QString& pText, const QFont& pFont) : fLayout(pText, pFont) {
    QTextOption option;
    option.setTextDirection(Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    fLayout.setTextOption(option);
    fLayout.beginLayout();
    fLine = fLayout.createLine();
    fLayout.endLayout();
  }

  double Width() const { return fLine.naturalTextWidth(); }

  // Paints with the left end of the base line at this place, in the painter's pen.
  void Paint(QPainter& pPainter, double pLeft) const { fLayout.draw(&pPainter, {pLeft, -fLine.ascent()}); }

  // The outlines of the letters. Glyphs that are pictures, as those of emoji, have none.
  QPainterPath Outlines(double pLeft) const {
    QPainterPath path;
    for (const QGlyphRun& run : fLayout.glyphRuns()) {
      const QRawFont font = run.rawFont();
      if (!font.fontTable("CBLC").isEmpty() || !font.fontTable("COLR").isEmpty()) continue;
      const QList<quint32> glyphs = run.glyphIndexes();
      const QList<QPointF> places = run.positions();
      for (qsizetype i = 0; i < glyphs.size(); ++i)
        path.addPath(font.pathForGlyph(glyphs[i]).translated(places[i] + QPointF(pLeft, -fLine.ascent())));
    }
    path.setFillRule(Qt::WindingFill);
    return path;
  }

 private:
  QTextLayout fLayout;
  QTextLine fLine;
};

// Paints one drawing's shapes.
class TShapePainter {
 public:
  TShapePainter(QPainter& pPainter, const QFont& pFont) : fPainter(pPainter), fFont(pFont) {}

  void Paint(const TRectangle& pRectangle, const TPaint& pPaint) {
    const TBox& box = pRectangle.fBox;
    Use(pPaint);
    fPainter.drawRect(QRectF(box.fLeft, box.fTop, box.fWidth, box.fHeight));
  }

  void Paint(const TWedge& pWedge, const TPaint& pPaint) {
    Use(pPaint);
    fPainter.drawPath(PathOf(pWedge));
  }

  void Paint(const TPolyline& pLine, const TPaint& pPaint) {
    Use(pPaint);
    fPainter.setPen(Qt::NoPen);
    if (pPaint.fOpacity > 0) fPainter.drawPolygon(PointsOf(pLine.fPoints));
    fPainter.setPen(PenOf(pPaint));
    if (pPaint.fLineWidth > 0) fPainter.drawPolyline(PointsOf(pLine.fPoints));
  }

  void Paint(const TPolygon& pPolygon, const TPaint& pPaint) {
    Use(pPaint);
    fPainter.drawPolygon(PointsOf(pPolygon.fPoints));
  }

  void Paint(const TText& pText, const TPaint& pPaint) {
    if (pText.fText.empty() || pText.fFontSize <= 0) return;
    const TSizedFont sized(fFont, pText.fFontSize, pText.fBold);
    fPainter.save();
    fPainter.translate(pText.fPoint.fX, pText.fPoint.fY);
    fPainter.scale(sized.fScale, sized.fScale);
    const TTextLine line(ToQString(pText.fText), sized.fFont);
    double left = 0;
    if (pText.fAnchor != TAnchor::anStart) left = -line.Width() * (pText.fAnchor == TAnchor::anMiddle ? 0.5 : 1);
    if (pPaint.fLineWidth > 0) {  // the rim lies behind the letters
      QPen rim(ColorOf(pPaint.fLine), pPaint.fLineWidth / sized.fScale, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
      fPainter.strokePath(line.Outlines(left), rim);
    }
    fPainter.setPen(ColorOf(pPaint.fFill, pPaint.fOpacity));
    line.Paint(fPainter, left);
    fPainter.restore();
  }

  void Paint(const TBitmap& pBitmap, const TPaint&) {
    if (pBitmap.fPixels.empty()) return;
    static_assert(sizeof(QRgb) == sizeof(uint32_t));
    const QImage image(reinterpret_cast<const uchar*>(pBitmap.fPixels.data()), pBitmap.fWidth, pBitmap.fHeight,
                       static_cast<qsizetype>(pBitmap.fWidth) * 4, QImage::Format_RGB32);
    fPainter.drawImage(QPointF(pBitmap.fPoint.fX, pBitmap.fPoint.fY), image);
  }

 private:
  void Use(const TPaint& pPaint) {
    fPainter.setPen(PenOf(pPaint));
    fPainter.setBrush(BrushOf(pPaint));
  }

  QPainter& fPainter;
  const QFont& fFont;
};

}  // namespace

QFont PictureFont() {
  // Those that SVG files name.
  QFont font;
  font.setFamilies({QStringLiteral("Segoe UI"), QStringLiteral("Roboto"), QStringLiteral("Helvetica"),
                    QStringLiteral("Arial"), QStringLiteral("Liberation Sans"), QStringLiteral("DejaVu Sans"),
                    QStringLiteral("sans-serif")});
  font.setStyleHint(QFont::SansSerif);
  return font;
}

double TFontMeasure::Width(std::u16string_view pText, double pFontSize) const {
  if (pFontSize <= 0) return 0;
  const TSizedFont sized(fFont, pFontSize, false);
  return QFontMetricsF(sized.fFont).horizontalAdvance(ToQString(pText)) * sized.fScale;
}

void PaintDrawing(QPainter& pPainter, const TDrawing& pDrawing, const QFont& pFont) {
  pPainter.save();
  pPainter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
  pPainter.setLayoutDirection(Qt::LeftToRight);
  pPainter.fillRect(QRectF(0, 0, pDrawing.fWidth, pDrawing.fHeight), ColorOf(pDrawing.fBackground));
  TShapePainter shapes(pPainter, pFont);
  for (const TShape& shape : pDrawing.fShapes) {
    const bool isText = std::holds_alternative<TText>(shape.fForm) || std::holds_alternative<TBitmap>(shape.fForm);
    // Treemaps have thousands of shapes that are there for their tooltips alone.
    if (!isText && shape.fPaint.fOpacity <= 0 && shape.fPaint.fLineWidth <= 0) continue;
    std::visit([&](const auto& pForm) { shapes.Paint(pForm, shape.fPaint); }, shape.fForm);
  }
  pPainter.restore();
}

QImage BitmapOf(const TDrawing& pDrawing, const QFont& pFont) {
  QImage image(static_cast<int>(pDrawing.fWidth), static_cast<int>(pDrawing.fHeight), QImage::Format_RGB32);
  if (image.isNull()) return image;
  QPainter painter(&image);
  PaintDrawing(painter, pDrawing, pFont);
  return image;
}

std::vector<uint32_t> PixelsOf(const TDrawing& pDrawing, const QFont& pFont) {
  const QImage image = BitmapOf(pDrawing, pFont);
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

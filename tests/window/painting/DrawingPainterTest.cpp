// Pixels of painted drawings, worked out by hand or by the drawing's own geometry.

#include <gtest/gtest.h>

#include <QPainter>

#include "window/painting/DrawingPainter.h"

namespace {

using namespace Vantrel;
using namespace Vantrel::Drawing;
using namespace Vantrel::Window;

constexpr TColor kGround = 0x102030;
constexpr TColor kInk = 0xE04020;

TDrawing DrawingOf(TForm pForm, TPaint pPaint, double pWidth = 100, double pHeight = 60) {
  TDrawing drawing;
  drawing.fWidth = pWidth;
  drawing.fHeight = pHeight;
  drawing.fBackground = kGround;
  drawing.fShapes.push_back({std::move(pForm), pPaint, kNoSubject});
  return drawing;
}

TColor PixelAt(const QImage& pImage, int pX, int pY) {
  return static_cast<TColor>(pImage.pixel(pX, pY) & 0xFFFFFF);
}

// The smallest rectangle with all pixels of this colour, or all that differ from the ground.
QRect InkOf(const QImage& pImage, std::optional<TColor> pColor = {}) {
  QRect ink;
  for (int y = 0; y < pImage.height(); ++y)
    for (int x = 0; x < pImage.width(); ++x) {
      const TColor color = PixelAt(pImage, x, y);
      if (pColor ? color == *pColor : color != kGround) ink |= QRect(x, y, 1, 1);
    }
  return ink;
}

QImage Painted(TForm pForm, TPaint pPaint, double pWidth = 100, double pHeight = 60) {
  return BitmapOf(DrawingOf(std::move(pForm), pPaint, pWidth, pHeight), PictureFont());
}

TEST(DrawingPainter, FillsAndOutlinesRectangles) {
  const QImage image = Painted(TRectangle{{10, 20, 30, 15}}, {.fFill = kInk, .fLine = 0xFFFFFF, .fLineWidth = 2});
  EXPECT_EQ(InkOf(image), QRect(9, 19, 32, 17)) << "the line lies half outside";
  EXPECT_EQ(InkOf(image, kInk), QRect(11, 21, 28, 13)) << "and half inside";
  EXPECT_EQ(PixelAt(image, 10, 20), 0xFFFFFFu);
  // A quarter of the ink over three quarters of the ground, channel by channel.
  const TColor mixed = PixelAt(Painted(TRectangle{{10, 20, 30, 15}}, {.fFill = 0x0080FF, .fOpacity = 0.25}), 20, 25);
  EXPECT_NEAR(static_cast<int>(mixed >> 16), 0x10 * 0.75, 1);
  EXPECT_NEAR(static_cast<int>(mixed >> 8 & 0xFF), 0x20 * 0.75 + 0x80 * 0.25, 1);
  EXPECT_NEAR(static_cast<int>(mixed & 0xFF), 0x30 * 0.75 + 0xFF * 0.25, 1);
  EXPECT_TRUE(InkOf(Painted(TRectangle{{10, 20, 30, 15}}, {.fOpacity = 0})).isNull()) << "there for its tooltip alone";
}

// The drawing's own test of what lies inside is the reference, but for the pixels that an edge goes through.
TEST(DrawingPainter, WedgesTurnClockwiseFromTheTop) {
  const TWedge wedges[] = {{{50, 50}, 0, 40, 0, 90},   {{50, 50}, 20, 40, 10, 100},  {{50, 50}, 0, 40, 350, 200},
                           {{50, 50}, 20, 40, 0, 360}, {{50, 50}, 15, 45, 200, 340}, {{50, 50}, 0, 30, 0, 360}};
  for (const TWedge& wedge : wedges) {
    const QImage image = Painted(wedge, {.fFill = kInk}, 100, 100);
    int inside = 0;
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 100; ++x) {
        int corners = 0;
        for (const double dx : {-1.0, 2.0})
          for (const double dy : {-1.0, 2.0}) corners += Contains(wedge, {x + dx, y + dy}) ? 1 : 0;
        const bool contains = Contains(wedge, {x + 0.5, y + 0.5});
        if (corners != (contains ? 4 : 0)) continue;
        inside += contains ? 1 : 0;
        ASSERT_EQ(PixelAt(image, x, y), contains ? kInk : kGround)
            << x << "," << y << " of the wedge from " << wedge.fBegin << " over " << wedge.fSweep;
      }
    EXPECT_GT(inside, 300);
  }
}

TEST(DrawingPainter, LinesHaveTheirWidthAndDashes) {
  const QImage image =
      Painted(TPolyline{{{5, 10}, {95, 10}}}, {.fOpacity = 0, .fLine = kInk, .fLineWidth = 2, .fDashed = true});
  EXPECT_EQ(InkOf(image, kInk).top(), 9);
  EXPECT_EQ(InkOf(image, kInk).bottom(), 10);
  // Four pixels of line, three of gap, whatever the width.
  for (int x = 5; x < 95; ++x) EXPECT_EQ(PixelAt(image, x, 9), (x - 5) % 7 < 4 ? kInk : kGround) << x;
  const QImage area = Painted(TPolygon{{{10, 10}, {50, 10}, {50, 50}, {10, 50}}}, {.fFill = kInk});
  EXPECT_EQ(InkOf(area, kInk), QRect(10, 10, 40, 40));
}

TEST(DrawingPainter, BitmapsKeepTheirPixels) {
  const QImage image = Painted(TBitmap{{3, 4}, 2, 2, {0xFF112233, 0x445566, 0x778899, 0xFFAABBCC}}, {});
  EXPECT_EQ(InkOf(image), QRect(3, 4, 2, 2));
  EXPECT_EQ(PixelAt(image, 3, 4), 0x112233u);
  EXPECT_EQ(PixelAt(image, 4, 4), 0x445566u) << "the upper byte has no meaning";
  EXPECT_EQ(PixelAt(image, 4, 5), 0xAABBCCu);
}

TEST(DrawingPainter, TextsStandAtTheirAnchors) {
  for (const char16_t* name : {u"HHHHHH", u"<b>&\"", u"\u0639\u0631\u0628\u064A.txt", u"\u05E9\u05DC\u05D5\u05DD"}) {
    for (const double size : {9.0, 12.5, 20.0}) {
      const auto inkAt = [&](TAnchor pAnchor) {
        return InkOf(Painted(TText{name, {150, 40}, size, pAnchor}, {.fFill = 0xFFFFFF}, 300));
      };
      const QRect start = inkAt(TAnchor::anStart);
      const QRect middle = inkAt(TAnchor::anMiddle);
      const QRect end = inkAt(TAnchor::anEnd);
      const double width = TFontMeasure(PictureFont()).Width(name, size);
      SCOPED_TRACE(QString::fromUtf16(name).toStdString() + " " + std::to_string(size));
      ASSERT_FALSE(start.isNull()) << "this machine has no font";
      EXPECT_GE(start.left(), 148);
      EXPECT_LE(end.right(), 151);
      EXPECT_NEAR(start.right(), 150 + width, size / 3) << "as wide as measured";
      EXPECT_NEAR(start.left() - end.left(), width, 1.5);
      EXPECT_NEAR(start.left() - middle.left(), width / 2, 1.5);
      EXPECT_LE(start.top(), 40 - size / 3);
    }
  }
  const QRect plain = InkOf(Painted(TText{u"HH", {150, 40}, 20}, {.fFill = 0xFFFFFF}, 300));
  EXPECT_EQ(plain.bottom(), 39) << "the point is on the base line";
  const auto ink = [](bool pBold) {
    const QImage image = Painted(TText{u"HH", {150, 40}, 20, TAnchor::anStart, pBold}, {.fFill = 0xFFFFFF}, 300);
    int sum = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) sum += static_cast<int>(PixelAt(image, x, y) & 0xFF) - (kGround & 0xFF);
    return sum;
  };
  EXPECT_GT(ink(true), ink(false) * 5 / 4);
}

// The rim goes around the very letters that are painted, whatever the direction of the script.
TEST(DrawingPainter, RimsGoAroundTheirLetters) {
  for (const char16_t* name : {u"Wide name", u"\u0639\u0631\u0628\u064A.txt", u"a \u05E9\u05DC\u05D5\u05DD b"}) {
    const TText text{name, {150, 40}, 24, TAnchor::anMiddle};
    const QRect letters = InkOf(Painted(text, {.fFill = 0xFFFFFF}, 300));
    const QImage rimmed = Painted(text, {.fFill = 0xFFFFFF, .fLine = 0x000000, .fLineWidth = 6}, 300);
    EXPECT_EQ(InkOf(rimmed), letters.adjusted(-3, -3, 3, 3)) << QString::fromUtf16(name).toStdString();
    EXPECT_FALSE(InkOf(rimmed, 0xFFFFFF).isNull()) << "the rim lies behind the letters";
    // Where the letters are, the rim reaches: none of them stands without.
    const QImage bare = Painted(text, {.fFill = 0xFFFFFF}, 300);
    int lonely = 0;
    for (int y = 3; y < 57; ++y)
      for (int x = 3; x < 297; ++x)
        if (PixelAt(bare, x, y) == 0xFFFFFF) {
          bool near = false;
          for (int dy = -3; dy <= 3 && !near; ++dy)
            for (int dx = -3; dx <= 3 && !near; ++dx) near = (PixelAt(rimmed, x + dx, y + dy) & 0xF0F0F0) == 0;
          lonely += near ? 0 : 1;
        }
    EXPECT_EQ(lonely, 0) << QString::fromUtf16(name).toStdString();
  }
}

TEST(DrawingPainter, ScaledPaintersPaintSharperNotLarger) {
  const TDrawing drawing = DrawingOf(TRectangle{{10.5, 20, 30, 15}}, {.fFill = kInk});
  QImage image(200, 120, QImage::Format_RGB32);
  image.setDevicePixelRatio(2);
  QPainter painter(&image);
  PaintDrawing(painter, drawing, PictureFont());
  painter.end();
  EXPECT_EQ(InkOf(image, kInk), QRect(21, 40, 60, 30));
  EXPECT_EQ(PixelAt(image, 199, 119), kGround) << "the ground covers the whole device";
}

// Emoji are pictures in some fonts and have no outlines. The letters behind them have their rim all the same.
TEST(DrawingPainter, RimsAreInTheirPlaceBehindEmoji) {
  const TText text{u"\U0001F389\U0001F38AHH", {20, 60}, 40};
  const QRect plain = InkOf(Painted(text, {.fFill = 0xFFFFFF}, 300, 80));
  const QRect rimmed = InkOf(Painted(text, {.fFill = 0xFFFFFF, .fLine = kInk, .fLineWidth = 4}, 300, 80));
  EXPECT_NEAR(rimmed.right(), plain.right() + 2, 1);
  EXPECT_NEAR(plain.right(), 20 + TFontMeasure(PictureFont()).Width(text.fText, 40), 6);
}

}  // namespace

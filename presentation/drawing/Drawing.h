#pragma once

// A picture as data: shapes with colours and texts, and what each shape stands for.

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "model/statistics/ColorPalette.h"

namespace Vantrel::Drawing {

// Positions are in pixels from the top left corner. Later shapes are drawn over earlier ones. Who draws a drawing needs
// no knowledge of charts or treemaps.

struct TPoint {
  double fX = 0;
  double fY = 0;
};

struct TBox {
  double fLeft = 0;
  double fTop = 0;
  double fWidth = 0;
  double fHeight = 0;
  double Right() const { return fLeft + fWidth; }
  double Bottom() const { return fTop + fHeight; }
};

struct TRectangle {
  TBox fBox;
};

// A part of a ring, or of a disc when the inner radius is 0. Angles are in degrees, clockwise from the top. A sweep of
// 360 is the whole ring.
struct TWedge {
  TPoint fCenter;
  double fInnerRadius = 0;
  double fOuterRadius = 0;
  double fBegin = 0;
  double fSweep = 0;
};

struct TPolyline {
  std::vector<TPoint> fPoints;
};

// The area inside a closed line.
struct TPolygon {
  std::vector<TPoint> fPoints;
};

enum class TAnchor : uint8_t { anStart, anMiddle, anEnd };

// One line of text. The point is on the base line, at the start, middle or end of the text.
struct TText {
  std::u16string fText;  // made by ShownText
  TPoint fPoint;
  double fFontSize = 12;
  TAnchor fAnchor = TAnchor::anStart;
  bool fBold = false;
};

// A bitmap, drawn pixel by pixel from the box's left and top.
struct TBitmap {
  TPoint fPoint;
  int fWidth = 0;
  int fHeight = 0;
  std::vector<uint32_t> fPixels;  // 0xRRGGBB or 0xAARRGGBB, row by row from the top; the upper byte is ignored
};

using TForm = std::variant<TRectangle, TWedge, TPolyline, TPolygon, TText, TBitmap>;

// How a shape is filled and outlined. A text's outline is a rim around its letters, which keeps it readable on any
// ground.
struct TPaint {
  TColor fFill = 0;
  double fOpacity = 1;  // of the fill; 0 for none
  TColor fLine = 0;
  double fLineWidth = 0;  // 0: no outline
  bool fDashed = false;
};

constexpr int kNoSubject = -1;

struct TShape {
  TForm fForm;
  TPaint fPaint;
  int fSubject = kNoSubject;  // in the drawing's subjects
};

// What a shape stands for.
struct TSubject {
  std::u16string fKey;  // a path, an extension, an owner …; empty for a rest of several
  int64_t fValue = 0;
  std::u16string fHint;  // for tooltips; lines are separated by "\n"
};

struct TDrawing {
  double fWidth = 0;
  double fHeight = 0;
  TColor fBackground = 0xFFFFFF;
  std::u16string fTitle;  // names the picture for those who cannot see it
  std::vector<TSubject> fSubjects;
  std::vector<TShape> fShapes;
};

bool Contains(const TWedge& pWedge, TPoint pPoint);

// The subject of the topmost shape that has one and contains the point; kNoSubject if there is none.
int SubjectAt(const TDrawing& pDrawing, TPoint pPoint);

}  // namespace Vantrel::Drawing

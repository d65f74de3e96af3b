#include "presentation/drawing/Drawing.h"

#include <cmath>
#include <numbers>

namespace Vantrel::Drawing {

bool Contains(const TWedge& pWedge, TPoint pPoint) {
  const double x = pPoint.fX - pWedge.fCenter.fX;
  const double y = pPoint.fY - pWedge.fCenter.fY;
  const double radius = std::hypot(x, y);
  if (radius < pWedge.fInnerRadius || radius >= pWedge.fOuterRadius) return false;
  double angle = std::fmod(std::atan2(x, -y) * 180 / std::numbers::pi - pWedge.fBegin, 360.0);
  if (angle < 0) angle += 360;
  return angle < pWedge.fSweep;
}

namespace {

bool Contains(const TRectangle& pRectangle, TPoint pPoint) {
  const TBox& box = pRectangle.fBox;
  return pPoint.fX >= box.fLeft && pPoint.fX < box.Right() && pPoint.fY >= box.fTop && pPoint.fY < box.Bottom();
}

// Even-odd rule.
bool Contains(const TPolygon& pPolygon, TPoint pPoint) {
  bool inside = false;
  for (size_t i = 0, before = pPolygon.fPoints.size() - 1; i < pPolygon.fPoints.size(); before = i++) {
    const TPoint& a = pPolygon.fPoints[i];
    const TPoint& b = pPolygon.fPoints[before];
    if ((a.fY > pPoint.fY) != (b.fY > pPoint.fY) &&
        pPoint.fX < (b.fX - a.fX) * (pPoint.fY - a.fY) / (b.fY - a.fY) + a.fX)
      inside = !inside;
  }
  return inside;
}

// Lines, texts and bitmaps have no area that a pointer could mean.
template <class TOther>
bool Contains(const TOther&, TPoint) {
  return false;
}

}  // namespace

int SubjectAt(const TDrawing& pDrawing, TPoint pPoint) {
  for (size_t i = pDrawing.fShapes.size(); i-- > 0;) {
    const TShape& shape = pDrawing.fShapes[i];
    if (shape.fSubject == kNoSubject) continue;
    if (std::visit([&](const auto& pForm) { return Contains(pForm, pPoint); }, shape.fForm)) return shape.fSubject;
  }
  return kNoSubject;
}

}  // namespace Vantrel::Drawing

// Pie and ring charts.

#include <algorithm>
#include <cmath>
#include <numbers>

#include "presentation/charts/ChartBuilder.h"

namespace Vantrel::Charts {

namespace {

constexpr double kWholeCircle = 360;

TPoint PointAt(const TWedge& pWedge, double pDegrees, double pRadius) {
  const double angle = pDegrees * std::numbers::pi / 180;
  return {pWedge.fCenter.fX + pRadius * std::sin(angle), pWedge.fCenter.fY - pRadius * std::cos(angle)};
}

// Whether a box around a point lies in the wedge: its corners, and enough points of its sides that no inner circle
// reaches in between them.
bool HoldsBox(const TWedge& pWedge, TPoint pMiddle, double pWidth, double pHeight) {
  constexpr int kSteps = 8;
  for (int i = 0; i <= kSteps; ++i) {
    const double along = static_cast<double>(i) / kSteps - 0.5;
    for (const double side : {-0.5, 0.5}) {
      const TPoint onTopOrBottom{pMiddle.fX + along * pWidth, pMiddle.fY + side * pHeight};
      const TPoint onLeftOrRight{pMiddle.fX + side * pWidth, pMiddle.fY + along * pHeight};
      if (!Contains(pWedge, onTopOrBottom) || !Contains(pWedge, onLeftOrRight)) return false;
    }
  }
  return true;
}

class TWedges {
 public:
  TWedges(TChartBuilder& pChart, TPoint pCenter) : fChart(pChart), fCenter(pCenter) {}

  TWedge Add(double pInner, double pOuter, double pBegin, double pSweep, TColor pColor, int pSubject) {
    const TWedge wedge{fCenter, pInner, pOuter, pBegin, pSweep};
    const double line = pSweep < kWholeCircle ? std::min(1.5, pOuter / 60) : 0;
    fChart.Add(wedge, {.fFill = pColor, .fLine = fChart.Theme().fBackground, .fLineWidth = line}, pSubject);
    return wedge;
  }

  // Writes the text into the wedge if it fits, else the other one.
  void AddLabel(const TWedge& pWedge, std::u16string_view pText, std::u16string_view pOther, TColor pGround) {
    const bool isDisc = pWedge.fSweep >= kWholeCircle && pWedge.fInnerRadius == 0;
    const double radius = isDisc                     ? 0
                          : pWedge.fInnerRadius == 0 ? pWedge.fOuterRadius * 0.66
                                                     : (pWedge.fInnerRadius + pWedge.fOuterRadius) / 2;
    const TPoint middle = PointAt(pWedge, pWedge.fBegin + pWedge.fSweep / 2, radius);
    for (const std::u16string_view text : {pText, pOther}) {
      if (text.empty()) continue;
      const double width = fChart.WidthOf(text) + fChart.FontSize() * 0.4;
      if (!HoldsBox(pWedge, middle, width, fChart.FontSize() * 1.3)) continue;
      fChart.AddText(text, middle, TAnchor::anMiddle, width, ReadableOn(pGround), false);
      return;
    }
  }

 private:
  TChartBuilder& fChart;
  const TPoint fCenter;
};

// The sum of the values, also beyond the range of integers.
double WholeOf(const std::vector<TChartItem>& pItems) {
  double whole = 0;
  for (const TChartItem& item : pItems) whole += static_cast<double>(item.fValue);
  return whole;
}

// The angle at which an item ends that is after so much of the total.
double AngleAt(double pBegin, double pSweep, double pBefore, double pTotal) {
  return pBegin + pSweep * (pBefore / pTotal);
}

// Mixes a colour with the ground, so that outer rings are paler than inner ones.
TColor Paler(TColor pColor, TColor pGround, double pShare) {
  TColor mixed = 0;
  for (const int shift : {16, 8, 0}) {
    const double color = static_cast<double>((pColor >> shift) & 0xFF);
    const double ground = static_cast<double>((pGround >> shift) & 0xFF);
    mixed |= static_cast<TColor>(std::lround(color + (ground - color) * pShare)) << shift;
  }
  return mixed;
}

int LevelsOf(const std::vector<TChartItem>& pItems, int pMost) {
  int levels = pItems.empty() ? 0 : 1;
  if (pMost <= 1) return levels;
  for (const TChartItem& item : pItems) levels = std::max(levels, 1 + LevelsOf(item.fChildren, pMost - 1));
  return levels;
}

class TRings {
 public:
  TRings(TChartBuilder& pChart, TPoint pCenter, double pRadius, int pLevels, int64_t pTotal)
      : fChart(pChart),
        fWedges(pChart, pCenter),
        fHole(pRadius * (pLevels == 1 ? 0.55 : 0.3)),
        fThickness((pRadius - fHole) / pLevels),
        fLevels(pLevels),
        fTotal(pTotal) {}

  double Hole() const { return fHole; }
  void DrawAll(const std::vector<TChartItem>& pItems, const std::vector<int>& pSubjects) {
    double before = 0;
    for (size_t i = 0; i < pItems.size(); ++i)
      Draw(pItems[i], pSubjects[i], {0, kWholeCircle, WholeOf(pItems)}, before, 0, fChart.ColorOf(pItems[i]));
  }

 private:
  // A part of a ring that several items share.
  struct TSpan {
    double fBegin;
    double fSweep;
    double fWhole;  // the value of the whole span
  };

  // Draws an item that begins after so much of the span, and its children around it. Children have the colour of the
  // item in the innermost ring, so that a branch is seen as one.
  void Draw(const TChartItem& pItem, int pSubject, const TSpan& pSpan, double& pBefore, int pLevel, TColor pColor) {
    const double inner = fHole + fThickness * pLevel;
    const double begin = AngleAt(pSpan.fBegin, pSpan.fSweep, pBefore, pSpan.fWhole);
    pBefore += static_cast<double>(pItem.fValue);
    const double sweep = AngleAt(pSpan.fBegin, pSpan.fSweep, pBefore, pSpan.fWhole) - begin;
    if (sweep <= 0) return;
    const TColor shown = Paler(pColor, fChart.Theme().fBackground, 0.15 * pLevel);
    const TWedge wedge = fWedges.Add(inner, inner + fThickness, begin, sweep, shown, pSubject);
    fWedges.AddLabel(wedge, ShownText(pItem.fLabel), fChart.ShareText(pItem.fValue, fTotal), shown);
    if (pLevel + 1 >= fLevels) return;
    const std::vector<TChartItem> children = Visible(pItem, sweep, inner + fThickness);
    const TSpan span{begin, sweep, std::max(static_cast<double>(pItem.fValue), WholeOf(children))};
    double before = 0;
    for (const TChartItem& child : children)
      Draw(child, fChart.AddSubject(child, fTotal), span, before, pLevel + 1,
           child.fIsRest || child.fColor ? fChart.ColorOf(child) : pColor);
  }

  // The children that get wedges of their own: those wider than a few pixels. The others are drawn together.
  std::vector<TChartItem> Visible(const TChartItem& pItem, double pSweep, double pRadius) const {
    constexpr double kLeastPixels = 3;
    const double pixels = pSweep * std::numbers::pi / 180 * pRadius;
    if (pixels < kLeastPixels || pItem.fChildren.empty()) return {};
    const double least = static_cast<double>(pItem.fValue) * kLeastPixels / pixels;
    const auto wide = static_cast<size_t>(
        std::count_if(pItem.fChildren.begin(), pItem.fChildren.end(),
                      [&](const TChartItem& pChild) { return static_cast<double>(pChild.fValue) >= least; }));
    const size_t shown = wide == pItem.fChildren.size() ? wide : wide + 1;
    return LargestAndRest(pItem.fChildren, std::min(shown, fChart.Settings().fMostItems));
  }

  TChartBuilder& fChart;
  TWedges fWedges;
  const double fHole;
  const double fThickness;
  const int fLevels;
  const int64_t fTotal;
};

// What pies and rings share: the items with their legend, and the circle beside it. Without a total there is a message
// instead.
struct TRoundChart {
  TRoundChart(const TChartData& pData, const TChartSettings& pSettings, const ITextMeasure& pMeasure)
      : fChart(pData.fTitle, pData.fColumn, pSettings, pMeasure),
        fItems(LargestAndRest(pData.fItems, std::min(pSettings.fMostItems, std::max<size_t>(fChart.RowsInArea(1), 1)),
                              pData.fIsOrdered)),
        fTotal(TotalOf(fItems)) {
    if (fTotal == 0) {
      fChart.AddNothingToShow();
      return;
    }
    for (const TChartItem& item : fItems) fSubjects.push_back(fChart.AddSubject(item, fTotal));
    fChart.AddLegend(fItems, fSubjects, fTotal);
    const TBox& area = fChart.fArea;
    fCenter = {area.fLeft + area.fWidth / 2, area.fTop + area.fHeight / 2};
    fRadius = std::max(std::min(area.fWidth, area.fHeight) / 2 - 1, 0.0);
  }

  TChartBuilder fChart;
  const std::vector<TChartItem> fItems;
  const int64_t fTotal;
  std::vector<int> fSubjects;
  TPoint fCenter;
  double fRadius = 0;
};

}  // namespace

TDrawing PieChart(const TChartData& pData, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  TRoundChart round(pData, pSettings, pMeasure);
  if (round.fTotal == 0) return round.fChart.Take();
  TChartBuilder& chart = round.fChart;
  TWedges wedges(chart, round.fCenter);
  const std::vector<TChartItem>& items = round.fItems;
  const double whole = WholeOf(items);
  double before = 0;
  for (size_t i = 0; i < items.size(); ++i) {
    const double begin = AngleAt(0, kWholeCircle, before, whole);
    before += static_cast<double>(items[i].fValue);
    const double sweep = AngleAt(0, kWholeCircle, before, whole) - begin;
    if (sweep <= 0) continue;
    const TColor color = chart.ColorOf(items[i]);
    const TWedge wedge = wedges.Add(0, round.fRadius, begin, sweep, color, round.fSubjects[i]);
    wedges.AddLabel(wedge, chart.ShareText(items[i].fValue, round.fTotal), {}, color);
  }
  return chart.Take();
}

TDrawing RingChart(const TChartData& pData, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  constexpr int kMostLevels = 4;
  TRoundChart round(pData, pSettings, pMeasure);
  if (round.fTotal == 0) return round.fChart.Take();
  TChartBuilder& chart = round.fChart;
  const TPoint center = round.fCenter;
  TRings rings(chart, center, round.fRadius, LevelsOf(round.fItems, kMostLevels), round.fTotal);
  rings.DrawAll(round.fItems, round.fSubjects);
  const std::u16string text = chart.ValueText(round.fTotal);
  if (HoldsBox({center, 0, rings.Hole(), 0, kWholeCircle}, center, chart.WidthOf(text), chart.LineHeight()))
    chart.AddText(text, center, TAnchor::anMiddle, 2 * rings.Hole(), chart.Theme().fText, false);
  return chart.Take();
}

}  // namespace Vantrel::Charts

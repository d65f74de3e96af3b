// Line and area charts over time, and the choice of a chart by its type.

#include <algorithm>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "presentation/charts/ChartBuilder.h"

namespace Vantrel::Charts {

namespace {

std::vector<TTimePoint> InOrder(const TTimeSeries& pSeries) {
  std::vector<TTimePoint> points;
  for (const TTimePoint& point : pSeries.fPoints)
    if (point.fTime.IsSet()) points.push_back(point);
  std::stable_sort(points.begin(), points.end(),
                   [](const TTimePoint& pA, const TTimePoint& pB) { return pA.fTime < pB.fTime; });
  return points;
}

class TTimeChart {
 public:
  TTimeChart(const TTimeSeries& pSeries, const TChartSettings& pSettings, const ITextMeasure& pMeasure, bool pIsArea)
      : fPoints(InOrder(pSeries)), fIsArea(pIsArea), fChart(pSeries.fTitle, pSeries.fColumn, pSettings, pMeasure) {}

  TDrawing Draw() {
    if (fPoints.empty() || fChart.fArea.fHeight < 4 * fChart.LineHeight()) {
      fChart.AddNothingToShow();
      return fChart.Take();
    }
    AddNote();
    AddAxes();
    AddCurve();
    AddPoints();
    return fChart.Take();
  }

 private:
  bool HasIncomplete() const {
    return std::any_of(fPoints.begin(), fPoints.end(), [](const TTimePoint& pPoint) { return pPoint.fIsIncomplete; });
  }

  void AddNote() {
    if (!HasIncomplete()) return;
    TBox& area = fChart.fArea;
    const double line = fChart.LineHeight();
    const double radius = fChart.FontSize() * 0.35;
    const TPoint middle{area.fLeft + radius + 1, area.Bottom() - line / 2};
    AddDisc(middle, radius, true, kNoSubject);
    fChart.AddText(u"Folders could not be read: the value is too small.", {middle.fX + fChart.FontSize(), middle.fY},
                   TAnchor::anStart, area.fWidth - 2 * fChart.FontSize(), fChart.Theme().fFaintText);
    area.fHeight -= line;
  }

  void AddAxes() {
    const auto [least, most] =
        std::minmax_element(fPoints.begin(), fPoints.end(),
                            [](const TTimePoint& pA, const TTimePoint& pB) { return pA.fValue < pB.fValue; });
    TBox& area = fChart.fArea;
    area.fHeight -= fChart.LineHeight() * 1.2;  // for the dates
    area.fTop += fChart.LineHeight() / 2;       // for the upper half of the topmost label
    area.fHeight -= fChart.LineHeight() / 2;
    fValues = fChart.AddLeftAxis(fIsArea ? 0 : static_cast<double>(least->fValue), static_cast<double>(most->fValue));
    // Points on the edge of the period are not cut off.
    const double margin = std::min(fChart.FontSize(), area.fWidth / 10);
    area.fLeft += margin;
    area.fWidth -= 2 * margin;
    constexpr double kLettersPerDate = 8;
    const int ticks = static_cast<int>(std::clamp(area.fWidth / (kLettersPerDate * fChart.FontSize()), 2.0, 12.0));
    fTimes = MakeTimeAxis(fPoints.front().fTime, fPoints.back().fTime, ticks);
    fChart.AddBottomTicks(fTimes, area.fLeft - margin);  // to the right of the values' labels
  }

  TPoint PlaceOf(const TTimePoint& pPoint) const {
    const TBox& area = fChart.fArea;
    return {area.fLeft + fTimes.ShareOf(static_cast<double>(pPoint.fTime.fTicks)) * area.fWidth,
            area.Bottom() - fValues.ShareOf(static_cast<double>(pPoint.fValue)) * area.fHeight};
  }

  void AddCurve() {
    if (fPoints.size() < 2) return;
    TPolyline line;
    for (const TTimePoint& point : fPoints) line.fPoints.push_back(PlaceOf(point));
    const TColor color = fChart.Theme().fLine;
    if (fIsArea) {
      TPolygon area{line.fPoints};
      area.fPoints.push_back({line.fPoints.back().fX, fChart.fArea.Bottom()});
      area.fPoints.push_back({line.fPoints.front().fX, fChart.fArea.Bottom()});
      fChart.Add(std::move(area), {.fFill = color, .fOpacity = 0.25});
    }
    fChart.Add(std::move(line), {.fOpacity = 0, .fLine = color, .fLineWidth = std::max(1.5, fChart.FontSize() / 6)});
  }

  void AddDisc(TPoint pPoint, double pRadius, bool pIsIncomplete, int pSubject) {
    const TTheme& theme = fChart.Theme();
    const TColor color = pIsIncomplete ? theme.fAlarm : theme.fLine;
    fChart.Add(TWedge{pPoint, 0, pRadius, 0, 360},
               {.fFill = pIsIncomplete ? theme.fBackground : color, .fLine = color, .fLineWidth = pRadius / 3},
               pSubject);
  }

  void AddPoints() {
    const double radius =
        std::clamp(fChart.fArea.fWidth / static_cast<double>(fPoints.size()) / 4, 1.0, fChart.FontSize() * 0.35);
    for (const TTimePoint& point : fPoints) {
      const std::u16string date = FromUtf8(FormatIsoLocal(point.fTime));
      std::u16string hint = date + u"\n" + fChart.ValueText(point.fValue);
      if (point.fIsIncomplete) hint += u" (incomplete)";
      AddDisc(PlaceOf(point), radius, point.fIsIncomplete, fChart.AddSubject(date, point.fValue, std::move(hint)));
    }
  }

  const std::vector<TTimePoint> fPoints;
  const bool fIsArea;
  TChartBuilder fChart;
  TAxis fValues;
  TAxis fTimes;
};

}  // namespace

TDrawing LineChart(const TTimeSeries& pSeries, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  return TTimeChart(pSeries, pSettings, pMeasure, false).Draw();
}

TDrawing AreaChart(const TTimeSeries& pSeries, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  return TTimeChart(pSeries, pSettings, pMeasure, true).Draw();
}

TDrawing MakeChart(TChartType pType, const TChartData& pData, const TChartSettings& pSettings,
                   const ITextMeasure& pMeasure) {
  switch (pType) {
    case TChartType::ctBar:
      return BarChart(pData, pSettings, pMeasure);
    case TChartType::ctColumn:
      return ColumnChart(pData, pSettings, pMeasure);
    case TChartType::ctPie:
      return PieChart(pData, pSettings, pMeasure);
    case TChartType::ctRing:
      return RingChart(pData, pSettings, pMeasure);
    default:
      throw EInvalidArgumentValue("MakeChart: this type of chart shows values over time");
  }
}

TDrawing MakeChart(TChartType pType, const TTimeSeries& pSeries, const TChartSettings& pSettings,
                   const ITextMeasure& pMeasure) {
  if (!IsOverTime(pType)) throw EInvalidArgumentValue("MakeChart: this type of chart shows no values over time");
  return pType == TChartType::ctLine ? LineChart(pSeries, pSettings, pMeasure)
                                     : AreaChart(pSeries, pSettings, pMeasure);
}

}  // namespace Vantrel::Charts

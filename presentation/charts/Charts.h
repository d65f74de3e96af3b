#pragma once

// Charts as drawings: bars, columns, pies, rings, and lines and areas over time.

#include "presentation/charts/ChartData.h"
#include "presentation/drawing/Drawing.h"
#include "presentation/drawing/TextMeasure.h"

namespace Vantrel::Charts {

struct TChartSettings {
  double fWidth = 1000;  // in pixels
  double fHeight = 700;
  size_t fMostItems = 12;  // "others" included; fewer if the picture has no room for so many
  bool fDark = false;
  double fFontSize = 0;  // in pixels; 0 picks one for the picture's size
  TValueFormat fFormat;
};

// All charts lie inside their picture, whatever its size. Texts do not overlap; what has no room is shortened or left
// out. Each bar, wedge and point has a subject with a hint. A chart without values says so.

// Horizontal bars, one below the other, with labels, values and shares of the total.
Drawing::TDrawing BarChart(const TChartData& pData, const TChartSettings& pSettings,
                           const Drawing::ITextMeasure& pMeasure);
// Vertical bars, side by side.
Drawing::TDrawing ColumnChart(const TChartData& pData, const TChartSettings& pSettings,
                              const Drawing::ITextMeasure& pMeasure);
// A disc with one wedge per item, clockwise from the top, and a legend.
Drawing::TDrawing PieChart(const TChartData& pData, const TChartSettings& pSettings,
                           const Drawing::ITextMeasure& pMeasure);
// Rings around each other: the items, around them their children, and so on. The total is in the middle. Children too
// small to be seen are drawn together.
Drawing::TDrawing RingChart(const TChartData& pData, const TChartSettings& pSettings,
                            const Drawing::ITextMeasure& pMeasure);
// A curve over time. The scale begins near the least value, so that growth of a few per cent shows.
Drawing::TDrawing LineChart(const TTimeSeries& pSeries, const TChartSettings& pSettings,
                            const Drawing::ITextMeasure& pMeasure);
// The area below the curve. The scale begins at 0.
Drawing::TDrawing AreaChart(const TTimeSeries& pSeries, const TChartSettings& pSettings,
                            const Drawing::ITextMeasure& pMeasure);

enum class TChartType : uint8_t { ctBar, ctColumn, ctPie, ctRing, ctLine, ctArea };

// Whether charts of this type show values over time.
inline bool IsOverTime(TChartType pType) {
  return pType == TChartType::ctLine || pType == TChartType::ctArea;
}

// The chart of a type. EInvalidArgumentValue for a type that does not show this kind of data.
Drawing::TDrawing MakeChart(TChartType pType, const TChartData& pData, const TChartSettings& pSettings,
                            const Drawing::ITextMeasure& pMeasure);
Drawing::TDrawing MakeChart(TChartType pType, const TTimeSeries& pSeries, const TChartSettings& pSettings,
                            const Drawing::ITextMeasure& pMeasure);

}  // namespace Vantrel::Charts

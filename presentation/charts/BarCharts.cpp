// Bar and column charts.

#include <algorithm>

#include "presentation/charts/ChartBuilder.h"

namespace Vantrel::Charts {

namespace {

int64_t LargestOf(const std::vector<TChartItem>& pItems) {
  int64_t largest = 0;
  for (const TChartItem& item : pItems) largest = std::max(largest, item.fValue);
  return largest;
}

// A label on one line, or on two if it is wider than the room and has a blank to break at.
std::vector<std::u16string> LinesOf(const std::u16string& pLabel, double pRoom, const TChartBuilder& pChart) {
  if (pChart.WidthOf(pLabel) <= pRoom) return {pLabel};
  size_t best = std::u16string::npos;
  double bestWidth = pChart.WidthOf(pLabel);
  for (size_t at = pLabel.find(u' '); at != std::u16string::npos; at = pLabel.find(u' ', at + 1)) {
    const double width =
        std::max(pChart.WidthOf(std::u16string_view(pLabel).substr(0, at)), pChart.WidthOf(pLabel.substr(at + 1)));
    const bool isBeforeDash = at + 1 < pLabel.size() && pLabel[at + 1] == u'-';  // a dash stays on its line
    if (width >= bestWidth || isBeforeDash) continue;
    bestWidth = width;
    best = at;
  }
  if (best == std::u16string::npos) return {pLabel};
  return {pLabel.substr(0, best), pLabel.substr(best + 1)};
}

// What stands on both sides of the bars.
struct TBarTexts {
  double fGap = 0;     // between a bar and its texts
  double fLabels = 0;  // the width of the labels
  double fValues = 0;  // the width of the values; 0: they are not shown
};

std::u16string ValueAndShare(const TChartItem& pItem, int64_t pTotal, const TChartBuilder& pChart) {
  return pChart.ValueText(pItem.fValue) + u"  " + pChart.ShareText(pItem.fValue, pTotal);
}

TBarTexts MeasureTexts(const std::vector<TChartItem>& pItems, int64_t pTotal, const TChartBuilder& pChart) {
  constexpr double kLettersForTexts = 12;  // a narrower picture has room for the bars alone
  constexpr double kMostOfWidth = 0.35;
  const double most = pChart.fArea.fWidth * kMostOfWidth;
  const bool hasTexts = pChart.fArea.fWidth > kLettersForTexts * pChart.FontSize();
  TBarTexts texts{.fGap = hasTexts ? pChart.FontSize() * 0.6 : 0};
  for (size_t i = 0; hasTexts && i < pItems.size(); ++i) {
    const TChartItem& item = pItems[i];
    texts.fLabels = std::max(texts.fLabels, pChart.WidthOf(ShownText(item.fLabel)));
    texts.fValues = std::max(texts.fValues, pChart.WidthOf(ValueAndShare(item, pTotal, pChart)));
  }
  texts.fLabels = std::min(texts.fLabels, most);
  if (texts.fValues > most) texts.fValues = 0;  // no room for them
  return texts;
}

}  // namespace

TDrawing BarChart(const TChartData& pData, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  TChartBuilder chart(pData.fTitle, pData.fColumn, pSettings, pMeasure);
  TBox& area = chart.fArea;
  const size_t most = std::min(pSettings.fMostItems, chart.RowsInArea(1) > 1 ? chart.RowsInArea(1) - 1 : 0);
  const std::vector<TChartItem> items = LargestAndRest(pData.fItems, most, pData.fIsOrdered);
  const int64_t total = TotalOf(items);
  if (items.empty() || total == 0) {
    chart.AddNothingToShow();
    return chart.Take();
  }
  const auto [gap, labels, values] = MeasureTexts(items, total, chart);
  area.fLeft += labels + gap;
  area.fWidth -= labels + values + 2 * gap;
  const TAxis axis = chart.AddBottomAxis(0, static_cast<double>(LargestOf(items)));
  const double pitch = std::min(area.fHeight / static_cast<double>(items.size()), chart.LineHeight() * 2.5);
  double middle = area.fTop + pitch / 2;
  for (const TChartItem& item : items) {
    const int subject = chart.AddSubject(item, total);
    const double width = axis.ShareOf(static_cast<double>(item.fValue)) * area.fWidth;
    chart.Add(TRectangle{{area.fLeft, middle - pitch * 0.36, width, pitch * 0.72}}, {.fFill = chart.ColorOf(item)},
              subject);
    chart.AddText(ShownText(item.fLabel), {area.fLeft - gap, middle}, TAnchor::anEnd, labels, chart.Theme().fText);
    if (values > 0)
      chart.AddText(ValueAndShare(item, total, chart), {area.fLeft + width + gap, middle}, TAnchor::anStart, values + 1,
                    chart.Theme().fText, false);
    middle += pitch;
  }
  return chart.Take();
}

TDrawing ColumnChart(const TChartData& pData, const TChartSettings& pSettings, const ITextMeasure& pMeasure) {
  TChartBuilder chart(pData.fTitle, pData.fColumn, pSettings, pMeasure);
  TBox& area = chart.fArea;
  constexpr double kLettersPerColumn = 2;
  const auto room = static_cast<size_t>(area.fWidth / (kLettersPerColumn * chart.FontSize()));
  const std::vector<TChartItem> items =
      LargestAndRest(pData.fItems, std::min(pSettings.fMostItems, room), pData.fIsOrdered);
  const int64_t total = TotalOf(items);
  const double below = chart.LineHeight() * 2.6;  // two lines of labels
  if (items.empty() || total == 0 || area.fHeight < 2 * below) {
    chart.AddNothingToShow();
    return chart.Take();
  }
  area.fHeight -= below;
  area.fTop += chart.LineHeight();  // for the value above a column as high as the axis
  area.fHeight -= chart.LineHeight();
  const TAxis axis = chart.AddLeftAxis(0, static_cast<double>(LargestOf(items)));
  const double pitch = area.fWidth / static_cast<double>(items.size());
  const double labelRoom = pitch - chart.FontSize() * 0.5;
  const double line = chart.LineHeight();
  double middle = area.fLeft + pitch / 2;
  for (const TChartItem& item : items) {
    const int subject = chart.AddSubject(item, total);
    const double height = axis.ShareOf(static_cast<double>(item.fValue)) * area.fHeight;
    chart.Add(TRectangle{{middle - pitch * 0.36, area.Bottom() - height, pitch * 0.72, height}},
              {.fFill = chart.ColorOf(item)}, subject);
    chart.AddText(chart.ValueText(item.fValue), {middle, area.Bottom() - height - line * 0.5}, TAnchor::anMiddle,
                  labelRoom, chart.Theme().fText, false);
    double y = area.Bottom() + line * 0.7;
    for (const std::u16string& text : LinesOf(ShownText(item.fLabel), labelRoom, chart)) {
      chart.AddText(text, {middle, y}, TAnchor::anMiddle, labelRoom, chart.Theme().fText);
      y += line * 0.9;
    }
    middle += pitch;
  }
  chart.AddLine({area.fLeft, area.Bottom()}, {area.Right(), area.Bottom()}, chart.Theme().fAxis, 1);
  return chart.Take();
}

}  // namespace Vantrel::Charts

#pragma once

// What all charts have in common: title, texts that fit, subjects, colours, and the legend.

#include <string>
#include <string_view>
#include <vector>

#include "presentation/charts/ChartAxis.h"
#include "presentation/charts/Charts.h"
#include "presentation/drawing/Theme.h"

namespace Vantrel::Charts {

using namespace Drawing;

// Collects the shapes of one chart. Used by one thread.
class TChartBuilder {
 public:
  // Places the title at the top.
  TChartBuilder(const std::u16string& pTitle, TColumn pColumn, const TChartSettings& pSettings,
                const ITextMeasure& pMeasure);

  // What is left for the chart. Part of it may be cut off for something else.
  TBox fArea;

  double FontSize() const { return fFontSize; }
  double LineHeight() const { return fFontSize * 1.5; }
  const TTheme& Theme() const { return fTheme; }
  const TChartSettings& Settings() const { return fSettings; }
  double WidthOf(std::u16string_view pText) const { return fMeasure.Width(pText, fFontSize); }

  std::u16string ValueText(int64_t pValue) const { return FormatValue(fColumn, pValue, fSettings.fFormat); }
  std::u16string ShareText(int64_t pValue, int64_t pTotal) const;
  TColor ColorOf(const TChartItem& pItem) const;

  int AddSubject(std::u16string pKey, int64_t pValue, std::u16string pHint);
  // The item's subject: its label, value, and share of the total.
  int AddSubject(const TChartItem& pItem, int64_t pTotal);
  void Add(TForm pForm, TPaint pPaint, int pSubject = kNoSubject);
  void AddLine(TPoint pFrom, TPoint pTo, TColor pColor, double pWidth);
  // Adds text that is centred vertically on the point. Without room for the whole text, it is shortened if it may be,
  // else left out. Returns its width, 0 when left out.
  double AddText(std::u16string_view pText, TPoint pMiddle, TAnchor pAnchor, double pRoom, TColor pColor,
                 bool pMayShorten = true);
  // Says in the middle that there is nothing to show.
  void AddNothingToShow();
  // Cuts the legend off the area, where there is room, and adds it: color, label, value and share of each item.
  void AddLegend(const std::vector<TChartItem>& pItems, const std::vector<int>& pSubjects, int64_t pTotal);
  // The number of rows, of at least this height in lines, that the area has room for.
  size_t RowsInArea(double pLines) const;

  // An axis of values along the bottom of the area, or along its left side, with lines across the area. It is cut off
  // the area first.
  TAxis AddBottomAxis(double pLeast, double pMost);
  TAxis AddLeftAxis(double pLeast, double pMost);
  // The ticks and labels of an axis below the area. Labels begin at pLeft.
  void AddBottomTicks(const TAxis& pAxis, double pLeft);

  TDrawing Take() { return std::move(fDrawing); }

 private:
  const TChartSettings& fSettings;
  const ITextMeasure& fMeasure;
  const TTheme& fTheme;
  const TColumn fColumn;
  double fFontSize = 12;
  TDrawing fDrawing;
};

}  // namespace Vantrel::Charts

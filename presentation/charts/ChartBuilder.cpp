#include "presentation/charts/ChartBuilder.h"

#include <algorithm>
#include <utility>

namespace Vantrel::Charts {

namespace {

// The letters of a text lie between these distances above and below its base line, in parts of the font size.
constexpr double kMiddleAboveBase = 0.35;

double FontSizeFor(double pWidth, double pHeight) {
  constexpr double kLeast = 9;
  constexpr double kMost = 72;
  return std::clamp(std::min(pWidth / 65, pHeight / 42), kLeast, kMost);
}

}  // namespace

TChartBuilder::TChartBuilder(const std::u16string& pTitle, TColumn pColumn, const TChartSettings& pSettings,
                             const ITextMeasure& pMeasure)
    : fSettings(pSettings), fMeasure(pMeasure), fTheme(ThemeOf(pSettings.fDark)), fColumn(pColumn) {
  fDrawing.fWidth = std::max(pSettings.fWidth, 1.0);
  fDrawing.fHeight = std::max(pSettings.fHeight, 1.0);
  fDrawing.fBackground = fTheme.fBackground;
  fDrawing.fTitle = ShownText(pTitle);
  fFontSize = pSettings.fFontSize > 0 ? pSettings.fFontSize : FontSizeFor(fDrawing.fWidth, fDrawing.fHeight);
  const double margin = std::min({fFontSize, fDrawing.fWidth / 20, fDrawing.fHeight / 20});
  fArea = {margin, margin, fDrawing.fWidth - 2 * margin, fDrawing.fHeight - 2 * margin};
  const double titleSize = fFontSize * 1.3;
  const double titleHeight = titleSize * 2;
  std::u16string title = FitText(fDrawing.fTitle, titleSize * 1.08, fArea.fWidth, fMeasure);  // bold is wider
  if (title.empty() || titleHeight > fArea.fHeight / 3) return;
  Add(TText{std::move(title), {fArea.fLeft, fArea.fTop + titleSize}, titleSize, TAnchor::anStart, true},
      {.fFill = fTheme.fText});
  fArea.fTop += titleHeight;
  fArea.fHeight -= titleHeight;
}

std::u16string TChartBuilder::ShareText(int64_t pValue, int64_t pTotal) const {
  if (pTotal <= 0) return {};
  return FormatValue(TColumn::mdPercentOfRoot, static_cast<double>(pValue) / static_cast<double>(pTotal),
                     fSettings.fFormat);
}

TColor TChartBuilder::ColorOf(const TChartItem& pItem) const {
  if (pItem.fIsRest) return fTheme.fRest;
  return pItem.fColor ? *pItem.fColor : CommonColorPalette().GetColorForKey(pItem.fKey);
}

int TChartBuilder::AddSubject(std::u16string pKey, int64_t pValue, std::u16string pHint) {
  fDrawing.fSubjects.push_back({std::move(pKey), pValue, std::move(pHint)});
  return static_cast<int>(fDrawing.fSubjects.size()) - 1;
}

int TChartBuilder::AddSubject(const TChartItem& pItem, int64_t pTotal) {
  std::u16string hint = ShownText(pItem.fLabel) + u"\n" + ValueText(pItem.fValue);
  if (pTotal > 0) hint += u" (" + ShareText(pItem.fValue, pTotal) + u")";
  return AddSubject(pItem.fIsRest ? std::u16string() : pItem.fKey, pItem.fValue, std::move(hint));
}

void TChartBuilder::Add(TForm pForm, TPaint pPaint, int pSubject) {
  fDrawing.fShapes.push_back({std::move(pForm), pPaint, pSubject});
}

void TChartBuilder::AddLine(TPoint pFrom, TPoint pTo, TColor pColor, double pWidth) {
  Add(TPolyline{{pFrom, pTo}}, {.fOpacity = 0, .fLine = pColor, .fLineWidth = pWidth});
}

double TChartBuilder::AddText(std::u16string_view pText, TPoint pMiddle, TAnchor pAnchor, double pRoom, TColor pColor,
                              bool pMayShorten) {
  if (!pMayShorten && WidthOf(pText) > pRoom) return 0;
  std::u16string text = FitText(pText, fFontSize, pRoom, fMeasure);
  if (text.empty()) return 0;
  const double width = WidthOf(text);
  Add(TText{std::move(text), {pMiddle.fX, pMiddle.fY + fFontSize * kMiddleAboveBase}, fFontSize, pAnchor},
      {.fFill = pColor});
  return width;
}

void TChartBuilder::AddNothingToShow() {
  if (fArea.fHeight < LineHeight()) return;
  AddText(u"There is nothing to show.", {fArea.fLeft + fArea.fWidth / 2, fArea.fTop + fArea.fHeight / 2},
          TAnchor::anMiddle, fArea.fWidth, fTheme.fFaintText);
}

size_t TChartBuilder::RowsInArea(double pLines) const {
  return static_cast<size_t>(std::max(0.0, fArea.fHeight / (LineHeight() * pLines)));
}

void TChartBuilder::AddLegend(const std::vector<TChartItem>& pItems, const std::vector<int>& pSubjects,
                              int64_t pTotal) {
  constexpr double kLeastLetters = 40;  // of the area's width, or the chart itself gets too small
  const double gap = fFontSize;
  if (fArea.fWidth < kLeastLetters * fFontSize || pItems.size() > RowsInArea(1)) return;
  double labels = 0;
  double values = 0;
  double shares = 0;
  for (const TChartItem& item : pItems) {
    labels = std::max(labels, WidthOf(ShownText(item.fLabel)));
    values = std::max(values, WidthOf(ValueText(item.fValue)));
    shares = std::max(shares, WidthOf(ShareText(item.fValue, pTotal)));
  }
  const double numbers = values + shares + 2 * gap;
  const double swatch = fFontSize;
  const double width = std::min(fArea.fWidth * 0.5, labels + numbers + 2 * gap + swatch);
  const double left = fArea.Right() - width + gap;
  const double rowHeight = std::min(LineHeight() * 1.3, fArea.fHeight / static_cast<double>(pItems.size()));
  double middle = fArea.fTop + (fArea.fHeight - rowHeight * static_cast<double>(pItems.size())) / 2 + rowHeight / 2;
  for (size_t i = 0; i < pItems.size(); ++i, middle += rowHeight) {
    Add(TRectangle{{left, middle - swatch / 2, swatch, swatch}}, {.fFill = ColorOf(pItems[i])}, pSubjects[i]);
    const double textLeft = left + swatch + gap / 2;
    AddText(ShownText(pItems[i].fLabel), {textLeft, middle}, TAnchor::anStart, fArea.Right() - numbers - textLeft,
            fTheme.fText);
    AddText(ValueText(pItems[i].fValue), {fArea.Right() - shares - gap, middle}, TAnchor::anEnd, values + 1,
            fTheme.fText, false);
    AddText(ShareText(pItems[i].fValue, pTotal), {fArea.Right(), middle}, TAnchor::anEnd, shares + 1, fTheme.fFaintText,
            false);
  }
  fArea.fWidth -= width + gap;
}

// --- axes ----------------------------------------------------------------------------------------------------------

void TChartBuilder::AddBottomTicks(const TAxis& pAxis, double pLeft) {
  const double middle = fArea.Bottom() + LineHeight() * 0.6;
  AddLine({fArea.fLeft, fArea.Bottom()}, {fArea.Right(), fArea.Bottom()}, fTheme.fAxis, 1);
  double free = pLeft;  // to the right of the label before
  const double right = fDrawing.fWidth - 1;
  for (const TTick& tick : pAxis.fTicks) {
    const double x = fArea.fLeft + pAxis.ShareOf(tick.fValue) * fArea.fWidth;
    AddLine({x, fArea.fTop}, {x, fArea.Bottom()}, fTheme.fGrid, 1);
    const double half = WidthOf(tick.fLabel) / 2;
    if (x - half < free || x + half > right) continue;
    AddText(tick.fLabel, {x, middle}, TAnchor::anMiddle, 2 * half + 1, fTheme.fFaintText, false);
    free = x + half + fFontSize;
  }
}

TAxis TChartBuilder::AddBottomAxis(double pLeast, double pMost) {
  constexpr double kLettersPerLabel = 9;
  const int steps = static_cast<int>(std::clamp(fArea.fWidth / (kLettersPerLabel * fFontSize), 2.0, 10.0));
  const TAxis axis = MakeValueAxis(pLeast, pMost, steps, fColumn, fSettings.fFormat);
  fArea.fHeight = std::max(fArea.fHeight - LineHeight() * 1.2, 0.0);
  AddBottomTicks(axis, 1);
  return axis;
}

TAxis TChartBuilder::AddLeftAxis(double pLeast, double pMost) {
  constexpr double kLinesPerLabel = 2.5;
  const int steps = static_cast<int>(std::clamp(fArea.fHeight / (kLinesPerLabel * LineHeight()), 2.0, 10.0));
  const TAxis axis = MakeValueAxis(pLeast, pMost, steps, fColumn, fSettings.fFormat);
  double width = 0;
  for (const TTick& tick : axis.fTicks) width = std::max(width, WidthOf(tick.fLabel));
  const double gap = fFontSize * 0.6;
  const bool hasLabels = width + gap < fArea.fWidth / 2;
  if (hasLabels) {
    fArea.fLeft += width + gap;
    fArea.fWidth -= width + gap;
  }
  double free = fDrawing.fHeight;  // above the label before
  for (const TTick& tick : axis.fTicks) {
    const double y = fArea.Bottom() - axis.ShareOf(tick.fValue) * fArea.fHeight;
    AddLine({fArea.fLeft, y}, {fArea.Right(), y}, fTheme.fGrid, 1);
    if (!hasLabels || y + LineHeight() / 2 > free || y < LineHeight() / 2) continue;
    AddText(tick.fLabel, {fArea.fLeft - gap, y}, TAnchor::anEnd, width + 1, fTheme.fFaintText, false);
    free = y - LineHeight() / 2;
  }
  return axis;
}

}  // namespace Vantrel::Charts

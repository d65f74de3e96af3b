#include "export/pictures/TreemapDrawing.h"

#include <algorithm>
#include <functional>

#include "presentation/treemap/TreemapWorker.h"

namespace Vantrel::Pictures {

using namespace Drawing;
using namespace Treemap;

namespace {

double FontSizeOf(double pWidth, double pHeight, const TTreemapDrawingStyle& pStyle) {
  if (pStyle.fLegendTextSize > 0) return pStyle.fLegendTextSize;
  constexpr double kLeast = 10;
  constexpr double kMost = 60;
  return std::clamp(std::min(pWidth / 75, pHeight / 50), kLeast, kMost);
}

struct TPlacedItem {
  TPoint fPoint;  // left end and middle of the row
  std::u16string fText;
};

// Places the items in rows from left to right. Returns the height of all rows.
double PlaceLegend(const std::vector<TTreemapLegendItem>& pLegend, double pWidth, double pFontSize,
                   const ITextMeasure& pMeasure, std::vector<TPlacedItem>& pItems) {
  const double rowHeight = pFontSize * 1.7;
  const double margin = pFontSize * 0.5;
  double x = margin;
  double y = rowHeight / 2;
  for (const TTreemapLegendItem& item : pLegend) {
    const std::u16string text =
        FitText(ShownText(item.fText), pFontSize, pWidth - 2 * margin - pFontSize * 1.4, pMeasure);
    const double width = pFontSize * 1.4 + pMeasure.Width(text, pFontSize);
    if (x > margin && x + width > pWidth - margin) {
      x = margin;
      y += rowHeight;
    }
    pItems.push_back({{x, y}, text});
    x += width + pFontSize * 1.2;
  }
  return y + rowHeight / 2;
}

// The indexes of the tiles with tooltips, in the order of the tiles.
std::vector<uint32_t> TilesWithHints(const TTreemapPicture& pPicture) {
  constexpr int64_t kLeastPixels = 30;
  constexpr size_t kMost = 20'000;
  std::vector<uint32_t> tiles;
  for (uint32_t i = 0; i < pPicture.fTiles.size(); ++i)
    if (pPicture.fTiles[i].fRect.Area() >= kLeastPixels) tiles.push_back(i);
  if (tiles.size() <= kMost) return tiles;
  std::nth_element(tiles.begin(), tiles.begin() + kMost, tiles.end(), [&](uint32_t pA, uint32_t pB) {
    return pPicture.fTiles[pA].fRect.Area() > pPicture.fTiles[pB].fRect.Area();
  });
  tiles.resize(kMost);
  std::sort(tiles.begin(), tiles.end());
  return tiles;
}

void AddHints(TDrawing& pDrawing, const TTreemapPicture& pPicture, const TValueFormat& pFormat) {
  for (const uint32_t index : TilesWithHints(pPicture)) {
    const TTreemapTile& tile = pPicture.fTiles[index];
    std::u16string hint = TTreemapWorkItem::CalculateHint(pPicture, index, pFormat);
    if (hint.empty()) continue;
    const std::u16string key = hint.substr(0, hint.find(u'\n'));
    pDrawing.fSubjects.push_back({key, tile.fValue, std::move(hint)});
    const TTreemapRect& rect = tile.fRect;
    pDrawing.fShapes.push_back({TRectangle{{static_cast<double>(rect.fLeft), static_cast<double>(rect.fTop),
                                            static_cast<double>(rect.Width()), static_cast<double>(rect.Height())}},
                                {.fOpacity = 0},
                                static_cast<int>(pDrawing.fSubjects.size()) - 1});
  }
}

void AddCaptions(TDrawing& pDrawing, const TTreemapPicture& pPicture) {
  constexpr double kMiddleAboveBase = 0.35;
  for (const TTreemapCaption& caption : pPicture.fCaptions) {
    const bool isHeading = caption.fKind == TTreemapCaptionKind::ckHeading;
    const TTreemapRect& rect = caption.fRect;
    const double middle = (rect.fTop + rect.fBottom) / 2.0 + caption.fTextSize * kMiddleAboveBase;
    const double x = isHeading ? rect.fLeft : (rect.fLeft + rect.fRight) / 2.0;
    TPaint paint{.fFill = caption.fColor};
    if (!isHeading) {  // a rim, because the ground is shaded
      paint.fLine = ReadableOn(caption.fColor);
      paint.fLineWidth = caption.fTextSize / 5.0;
    }
    pDrawing.fShapes.push_back({TText{caption.fText,
                                      {x, middle},
                                      static_cast<double>(caption.fTextSize),
                                      isHeading ? TAnchor::anStart : TAnchor::anMiddle},
                                paint, kNoSubject});
  }
}

}  // namespace

double LegendHeight(const std::vector<TTreemapLegendItem>& pLegend, double pWidth, double pHeight,
                    const ITextMeasure& pMeasure, const TTreemapDrawingStyle& pStyle) {
  constexpr double kMostShare = 0.25;
  if (pLegend.empty()) return 0;
  std::vector<TPlacedItem> items;
  const double height = PlaceLegend(pLegend, pWidth, FontSizeOf(pWidth, pHeight, pStyle), pMeasure, items);
  return height > pHeight * kMostShare ? 0 : height;
}

TDrawing DrawingOfTreemap(const TTreemapPicture& pPicture, double pHeight, std::u16string_view pTitle,
                          const TTheme& pTheme, const TValueFormat& pFormat, const ITextMeasure& pMeasure,
                          const TTreemapDrawingStyle& pStyle) {
  TDrawing drawing;
  drawing.fWidth = pPicture.fWidth;
  drawing.fHeight = pHeight;
  drawing.fBackground = pTheme.fBackground;
  drawing.fTitle = ShownText(pTitle);
  if (!pPicture.fPixels.empty())
    drawing.fShapes.push_back({TBitmap{{0, 0}, pPicture.fWidth, pPicture.fHeight, pPicture.fPixels}, {}, kNoSubject});
  if (pStyle.fHasHints) AddHints(drawing, pPicture, pFormat);
  AddCaptions(drawing, pPicture);
  if (LegendHeight(pPicture.fLegend, drawing.fWidth, pHeight, pMeasure, pStyle) > pHeight - pPicture.fHeight)
    return drawing;
  std::vector<TPlacedItem> items;
  const double size = FontSizeOf(drawing.fWidth, pHeight, pStyle);
  PlaceLegend(pPicture.fLegend, drawing.fWidth, size, pMeasure, items);
  for (size_t i = 0; i < items.size(); ++i) {
    const double y = pPicture.fHeight + items[i].fPoint.fY;
    drawing.fShapes.push_back({TRectangle{{items[i].fPoint.fX, y - size / 2, size, size}},
                               {.fFill = pPicture.fLegend[i].fColor},
                               kNoSubject});
    drawing.fShapes.push_back({TText{items[i].fText, {items[i].fPoint.fX + size * 1.4, y + size * 0.35}, size},
                               {.fFill = pTheme.fText},
                               kNoSubject});
  }
  return drawing;
}

}  // namespace Vantrel::Pictures

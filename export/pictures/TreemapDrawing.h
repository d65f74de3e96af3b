#pragma once

// Treemaps as drawings: the shaded tiles as a bitmap, captions, tooltips and the legend around it.

#include <string_view>
#include <vector>

#include "model/columns/MetaData.h"
#include "presentation/drawing/Drawing.h"
#include "presentation/drawing/TextMeasure.h"
#include "presentation/drawing/Theme.h"
#include "presentation/treemap/TreemapPicture.h"

namespace Vantrel::Pictures {

// What drawings of treemaps differ in.
struct TTreemapDrawingStyle {
  double fLegendTextSize = 0;  // in pixels; 0 picks one for the picture's size
  bool fHasHints = true;
};

// The height in pixels of the legend below a treemap. 0 if the picture has no room for a legend.
double LegendHeight(const std::vector<Treemap::TTreemapLegendItem>& pLegend, double pWidth, double pHeight,
                    const Drawing::ITextMeasure& pMeasure, const TTreemapDrawingStyle& pStyle = {});

// The treemap at the top, and its legend below in a picture of pHeight pixels. Tiles that a pointer can hit have their
// hint as tooltip. The number of tooltips is limited, so that the file stays small enough for browsers; the largest
// tiles have them.
Drawing::TDrawing DrawingOfTreemap(const Treemap::TTreemapPicture& pPicture, double pHeight, std::u16string_view pTitle,
                                   const Drawing::TTheme& pTheme, const TValueFormat& pFormat,
                                   const Drawing::ITextMeasure& pMeasure, const TTreemapDrawingStyle& pStyle = {});

}  // namespace Vantrel::Pictures

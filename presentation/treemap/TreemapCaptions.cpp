#include "presentation/treemap/TreemapCaptions.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "presentation/drawing/Theme.h"
#include "presentation/treemap/TreemapBuilder.h"

namespace Vantrel::Treemap {

namespace {

class TCaptioner {
 public:
  TCaptioner(TTreemapPicture& pPicture, const TTreemapSettings& pSettings, TColumn pValueColumn)
      : fPicture(pPicture),
        fSettings(pSettings),
        fValueColumn(pValueColumn),
        fMeasure(pSettings.fMeasure ? *pSettings.fMeasure : fEstimate),
        fTextSize(TextSizeOf(pSettings)) {}

  void AddHeading(uint32_t pTile) {
    const TTreemapTile& tile = fPicture.fTiles[pTile];
    if (!TTreemapBuilder::HasHeading(tile.fRect, tile.fLayer, fSettings)) return;
    TTreemapRect rect = tile.fRect;
    rect.fLeft += fTextSize / 3;
    rect.fRight -= fTextSize / 3;
    rect.fBottom = rect.fTop + TTreemapBuilder::HeadingHeight(fSettings);
    const std::u16string name = NameOf(pTile);
    const std::u16string text = Drawing::NameAndFigure(name, ValueOf(tile));
    const bool fits = fMeasure.Width(text, fTextSize) <= rect.Width();
    Add(pTile, TTreemapCaptionKind::ckHeading, rect, fits ? text : Shortened(name, rect.Width()),
        Drawing::ReadableOn(ColorOfFrame(tile.fLayer, fSettings.fDark)));
  }

  // One or two lines in the middle.
  void AddName(uint32_t pTile) {
    const TTreemapTile& tile = fPicture.fTiles[pTile];
    const int32_t margin = fTextSize / 4;
    const int32_t line = fTextSize * 5 / 4;
    TTreemapRect rect{tile.fRect.fLeft + margin, tile.fRect.fTop, tile.fRect.fRight - margin, tile.fRect.fBottom};
    if (rect.Width() < 3 * fTextSize || rect.Height() < line + margin) return;
    const std::u16string text = Shortened(NameOf(pTile), rect.Width());
    const std::u16string value = ValueOf(tile);
    const bool hasValue = rect.Height() >= 2 * line + margin && fMeasure.Width(value, fTextSize) <= rect.Width();
    rect.fTop += (rect.Height() - (hasValue ? 2 : 1) * line) / 2;
    rect.fBottom = rect.fTop + line;
    const TColor color = Drawing::ReadableOn(ColorBehind(rect));
    Add(pTile, TTreemapCaptionKind::ckLeaf, rect, text, color);
    if (!hasValue) return;
    rect.fTop += line;
    rect.fBottom += line;
    Add(pTile, TTreemapCaptionKind::ckLeaf, rect, value, color);
  }

 private:
  std::u16string NameOf(uint32_t pTile) const { return Drawing::ShownText(fPicture.GetCaption(pTile)); }

  std::u16string ValueOf(const TTreemapTile& pTile) const {
    const std::u16string value = FormatValue(fValueColumn, pTile.fValue, fSettings.fFormat);
    return fValueColumn == TColumn::mdFiles ? value + (pTile.fValue == 1 ? u" file" : u" files") : value;
  }

  // Empty when fewer than five letters of a longer name would be left.
  std::u16string Shortened(const std::u16string& pName, int32_t pWidth) const {
    std::u16string text = Drawing::FitText(pName, fTextSize, pWidth, fMeasure);
    return text != pName && text.size() < 6 ? std::u16string() : text;
  }

  // The mean of some pixels, because a cushion is lighter in the middle.
  TColor ColorBehind(const TTreemapRect& pRect) const {
    const int32_t y = (pRect.fTop + pRect.fBottom) / 2;
    const int32_t step = std::max(pRect.Width() / 16, 1);
    TColorMixer mixer;
    for (int32_t x = pRect.fLeft; x < pRect.fRight; x += step)
      mixer.Add(
          fPicture.fPixels[static_cast<size_t>(y) * static_cast<size_t>(fPicture.fWidth) + static_cast<size_t>(x)] &
              0xFFFFFF,
          1);
    return mixer.Mixed(0);
  }

  void Add(uint32_t pTile, TTreemapCaptionKind pKind, const TTreemapRect& pRect, std::u16string pText, TColor pColor) {
    if (!pText.empty()) fPicture.fCaptions.push_back({pTile, pKind, pRect, std::move(pText), fTextSize, pColor});
  }

  TTreemapPicture& fPicture;
  const TTreemapSettings& fSettings;
  const TColumn fValueColumn;
  const Drawing::TEstimatedTextMeasure fEstimate;
  const Drawing::ITextMeasure& fMeasure;
  const int32_t fTextSize;
};

}  // namespace

void AddCaptions(TTreemapPicture& pPicture, const TTreemapSettings& pSettings, TColumn pValueColumn) {
  TCaptioner captioner(pPicture, pSettings, pValueColumn);
  const bool onLeaves = pSettings.fFlags.Has(TTreemapFlag::tmfShowLeafCaptions);
  for (uint32_t i = 0; i < pPicture.fTiles.size(); ++i) {
    const TTreemapTileKind kind = pPicture.fTiles[i].fKind;
    if (kind == TTreemapTileKind::tkBranch)
      captioner.AddHeading(i);
    else if (kind != TTreemapTileKind::tkRest && onLeaves)
      captioner.AddName(i);
  }
}

}  // namespace Vantrel::Treemap

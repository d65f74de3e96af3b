#include "presentation/treemap/TreemapPainter.h"

#include <algorithm>

#include "presentation/treemap/ParallelWork.h"

namespace Vantrel::Treemap {

namespace {

constexpr uint32_t kOpaque = 0xFF000000;

class TPainter {
 public:
  TPainter(TTreemapPicture& pPicture, const TTreemapSettings& pSettings)
      : fPicture(pPicture),
        fSettings(pSettings),
        fShader(pSettings.fPhong),
        fHasBorders(pSettings.fFlags.Has(TTreemapFlag::tmfHighlightCellBorders)) {
    // The deepest tiles are the last.
    for (int32_t layer = 0; layer <= pPicture.fTiles.back().fLayer; ++layer)
      fRidges.push_back(layer == 0 ? 0 : RidgeHeight(pSettings, layer));
  }

  // The pixels of one tile in the lines from pTop to below pBottom.
  void Paint(const TTreemapTile& pTile, int32_t pTop, int32_t pBottom) const {
    TTreemapRect part = pTile.fRect;
    part.fTop = std::max(part.fTop, pTop);
    part.fBottom = std::min(part.fBottom, pBottom);
    if (pTile.fKind == TTreemapTileKind::tkBranch) return PaintFrame(pTile, part);
    if (fSettings.fRenderMode == TTreemapRenderMode::rmFlat || pTile.fKind == TTreemapTileKind::tkFreeSpace) {
      Fill(part, pTile.fColor);
    } else {
      TCushion cushion;
      if (pTile.fParent != kNoTile) cushion = fPicture.fBranches[fPicture.fTiles[pTile.fParent].fBranch].fCushion;
      AddRidge(cushion, pTile.fRect, fRidges[static_cast<size_t>(pTile.fLayer)]);
      fShader.Shade(fPicture.fPixels.data(), static_cast<size_t>(fPicture.fWidth), part, cushion, pTile.fColor);
    }
    if (fHasBorders) PaintBorder(pTile.fRect, part);
  }

 private:
  uint32_t* LineOf(int32_t pY) const {
    return fPicture.fPixels.data() + static_cast<size_t>(pY) * static_cast<size_t>(fPicture.fWidth);
  }

  void Fill(const TTreemapRect& pRect, TColor pColor) const {
    for (int32_t y = pRect.fTop; y < pRect.fBottom; ++y)
      std::fill(LineOf(y) + pRect.fLeft, LineOf(y) + pRect.fRight, kOpaque | pColor);
  }

  // What is around the children of an opened tile.
  void PaintFrame(const TTreemapTile& pTile, const TTreemapRect& pPart) const {
    const TTreemapRect& inner = fPicture.fBranches[pTile.fBranch].fInner;
    const TColor color = ColorOfFrame(pTile.fLayer, fSettings.fDark);
    const int32_t top = std::clamp(inner.fTop, pPart.fTop, pPart.fBottom);
    const int32_t bottom = std::clamp(inner.fBottom, top, pPart.fBottom);
    Fill({pPart.fLeft, pPart.fTop, pPart.fRight, top}, color);
    Fill({pPart.fLeft, top, inner.fLeft, bottom}, color);
    Fill({inner.fRight, top, pPart.fRight, bottom}, color);
    Fill({pPart.fLeft, bottom, pPart.fRight, pPart.fBottom}, color);
  }

  // The right and the bottom line of a tile become darker, unless hardly anything would be left of it.
  void PaintBorder(const TTreemapRect& pTile, const TTreemapRect& pPart) const {
    if (pTile.Width() < 4 || pTile.Height() < 4) return;
    const auto darken = [](uint32_t& pPixel) { pPixel = kOpaque | ((pPixel >> 1) & 0x7F7F7F); };
    for (int32_t y = pPart.fTop; y < pPart.fBottom; ++y) darken(LineOf(y)[pTile.fRight - 1]);
    if (pPart.fBottom == pTile.fBottom)
      std::for_each(LineOf(pTile.fBottom - 1) + pTile.fLeft, LineOf(pTile.fBottom - 1) + pTile.fRight - 1, darken);
  }

  TTreemapPicture& fPicture;
  const TTreemapSettings& fSettings;
  const TCushionShader fShader;
  const bool fHasBorders;
  std::vector<double> fRidges;  // by layer
};

}  // namespace

void PaintTiles(TTreemapPicture& pPicture, const TTreemapSettings& pSettings, int pThreads,
                const ICancellationIndicator* pToken) {
  pPicture.fPixels.resize(static_cast<size_t>(pPicture.fWidth) * static_cast<size_t>(pPicture.fHeight));
  const TPainter painter(pPicture, pSettings);
  // Large tiles are divided into bands. Small ones are painted in groups.
  constexpr int64_t kLarge = 1 << 16;  // pixels
  struct TBand {
    const TTreemapTile* fTile;
    int32_t fTop;
    int32_t fBottom;
  };
  std::vector<TBand> bands;
  for (const TTreemapTile& tile : pPicture.fTiles) {
    if (tile.fRect.Area() < kLarge) continue;
    const int32_t lines = std::max<int32_t>(1, static_cast<int32_t>(kLarge / tile.fRect.Width()));
    for (int32_t y = tile.fRect.fTop; y < tile.fRect.fBottom; y += lines)
      bands.push_back({&tile, y, std::min(y + lines, tile.fRect.fBottom)});
  }
  constexpr size_t kGroup = 512;
  const size_t groups = (pPicture.fTiles.size() + kGroup - 1) / kGroup;
  ForEachStep(pThreads, bands.size() + groups, pToken, [&](size_t pStep, size_t) {
    if (pStep < bands.size()) return painter.Paint(*bands[pStep].fTile, bands[pStep].fTop, bands[pStep].fBottom);
    const size_t first = (pStep - bands.size()) * kGroup;
    const size_t end = std::min(pPicture.fTiles.size(), first + kGroup);
    for (size_t i = first; i < end; ++i) {
      const TTreemapTile& tile = pPicture.fTiles[i];
      if (tile.fRect.Area() < kLarge) painter.Paint(tile, tile.fRect.fTop, tile.fRect.fBottom);
    }
  });
}

}  // namespace Vantrel::Treemap

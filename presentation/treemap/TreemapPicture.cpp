#include "presentation/treemap/TreemapPicture.h"

#include <algorithm>

namespace Vantrel::Treemap {

// The rows and tiles of a branch are searched by halving. What is free after a row begins ever further to the right and
// the bottom. So all rows from the one that holds the position on fulfil the condition.
uint32_t TTreemapPicture::GetTileByPosition(int32_t pX, int32_t pY) const {
  if (fTiles.empty() || !fTiles[0].fRect.Contains(pX, pY)) return kNoTile;
  uint32_t tile = 0;
  while (fTiles[tile].fBranch != kNoTile) {
    const TTreemapBranch& branch = fBranches[fTiles[tile].fBranch];
    if (!branch.fInner.Contains(pX, pY)) return tile;
    const auto rows = fRows.begin() + branch.fFirstRow;
    const auto row = std::partition_point(rows, rows + branch.fRowCount,
                                          [&](const TTreemapRow& pRow) { return pX >= pRow.fLeft && pY >= pRow.fTop; });
    const auto tiles = fTiles.begin() + row->fFirstTile;
    const auto found = std::partition_point(tiles, tiles + row->fTileCount, [&](const TTreemapTile& pTile) {
      return row->fIsColumn ? pY >= pTile.fRect.fBottom : pX >= pTile.fRect.fRight;
    });
    tile = static_cast<uint32_t>(found - fTiles.begin());
  }
  return tile;
}

TTreemapElementID TTreemapPicture::GetIDByPosition(int32_t pX, int32_t pY) const {
  const uint32_t tile = GetTileByPosition(pX, pY);
  return tile == kNoTile ? TTreemapElementID::None : fTiles[tile].fID;
}

// The rest of a folder is no level of its own.
int32_t TTreemapPicture::GetLayerByPosition(int32_t pX, int32_t pY) const {
  const uint32_t tile = GetTileByPosition(pX, pY);
  return tile == kNoTile ? -1 : fTiles[ElementTile(tile)].fLayer;
}

uint32_t TTreemapPicture::FindTile(TTreemapElementID pID) const {
  const auto found =
      std::find_if(fTiles.begin(), fTiles.end(), [pID](const TTreemapTile& pTile) { return pTile.fID == pID; });
  return found == fTiles.end() ? kNoTile : static_cast<uint32_t>(found - fTiles.begin());
}

uint32_t TTreemapPicture::ElementTile(uint32_t pTile) const {
  const TTreemapTile& tile = fTiles[pTile];
  return tile.fKind == TTreemapTileKind::tkRest ? tile.fParent : pTile;
}

const ITreemapContainer& TTreemapPicture::ContainerOf(const TTreemapTile& pTile) const {
  return pTile.fParent == kNoTile ? *fTop : *fBranches[fTiles[pTile.fParent].fBranch].fContainer;
}

TRef<TTreeMapElement> TTreemapPicture::CreateElement(uint32_t pTile) const {
  const TTreemapTile& tile = fTiles[ElementTile(pTile)];
  return ContainerOf(tile).CreateElement(tile.fItem);
}

std::u16string TTreemapPicture::GetCaption(uint32_t pTile) const {
  const TTreemapTile& tile = fTiles[ElementTile(pTile)];
  return ContainerOf(tile).GetCaption(tile.fItem);
}

}  // namespace Vantrel::Treemap

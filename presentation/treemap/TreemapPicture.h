#pragma once

// A finished treemap as a value: tiles, pixels, captions and legend, and finding the tile at a position.

#include <cstdint>
#include <string>
#include <vector>

#include "presentation/treemap/CushionShading.h"
#include "presentation/treemap/TreemapElements.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

enum class TTreemapTileKind : uint8_t {
  tkLeaf,       // one element, in its own colour: a file, or a folder that is not opened
  tkBranch,     // an opened element: its children are tiles, and only its frame and heading are its own
  tkFreeSpace,  // drawn flat, as it is nothing
  tkRest,       // the children of a folder that are too small for tiles of their own; it has the folder's identifier
};

constexpr uint32_t kNoTile = 0xFFFFFFFF;

// One rectangle of the picture. The tiles stand in one array: the top element first, then level by level, and the
// children of one tile side by side, the largest first. A tile has at least one pixel.
struct TTreemapTile {
  TTreemapElementID fID = TTreemapElementID::None;
  int64_t fValue = 0;
  TTreemapRect fRect;
  uint32_t fParent = kNoTile;  // the index of the parent's tile
  uint32_t fItem = 0;  // the element's number in its parent's container; for tkRest, how many children it stands for
  uint32_t fBranch = kNoTile;  // for tkBranch: an index into fBranches
  TColor fColor = 0;
  int32_t fLayer = 0;  // depth; the top element has 0
  TTreemapTileKind fKind = TTreemapTileKind::tkLeaf;
};

// What belongs to an opened tile.
struct TTreemapBranch {
  TRef<const ITreemapContainer> fContainer;
  TTreemapRect fInner;  // what the children share; the frame and the heading are around it
  TCushion fCushion;
  uint32_t fTile = 0;
  uint32_t fFirstTile = 0;  // of the children
  uint32_t fTileCount = 0;
  uint32_t fFirstRow = 0;
  uint32_t fRowCount = 0;
};

// A row of the layout. Rows are taken from the left or from the top of what is free. So the first row whose fLeft or
// fTop lies beyond a position holds that position.
struct TTreemapRow {
  uint32_t fFirstTile = 0;
  uint32_t fTileCount = 0;
  int32_t fLeft = 0;  // what is free after this row begins here
  int32_t fTop = 0;
  bool fIsColumn = false;  // the row's tiles stand below each other
};

enum class TTreemapCaptionKind : uint8_t {
  ckHeading,  // in the heading of an opened folder: left, centred vertically
  ckLeaf,     // on a tile: centred both ways
};

// A text to be drawn over the pixels. The text fits the rectangle by the measure that was used. It holds no control
// character and no lone surrogate.
struct TTreemapCaption {
  uint32_t fTile = 0;
  TTreemapCaptionKind fKind = TTreemapCaptionKind::ckLeaf;
  TTreemapRect fRect;
  std::u16string fText;
  int32_t fTextSize = 12;  // height of a letter in pixels
  TColor fColor = 0;
};

// A finished treemap. Immutable once ComputeTreemap has returned it. It keeps the nodes alive that it shows.
class TTreemapPicture {
 public:
  int32_t fWidth = 0;
  int32_t fHeight = 0;
  // Row by row from the top: 0xAARRGGBB with the alpha always 0xFF, so opaque.
  std::vector<uint32_t> fPixels;
  std::vector<TTreemapTile> fTiles;  // empty when the size is empty
  std::vector<TTreemapBranch> fBranches;
  std::vector<TTreemapRow> fRows;
  std::vector<TTreemapCaption> fCaptions;   // the parents' before the children's
  std::vector<TTreemapLegendItem> fLegend;  // empty without tmfLegend

  // The innermost tile at a position, kNoTile outside the picture. The time grows with the depth and the logarithm of
  // the number of tiles.
  uint32_t GetTileByPosition(int32_t pX, int32_t pY) const;
  // The identifier of the innermost element at a position; None outside the picture.
  TTreemapElementID GetIDByPosition(int32_t pX, int32_t pY) const;
  // Its depth: 0 for the top element, -1 outside the picture.
  int32_t GetLayerByPosition(int32_t pX, int32_t pY) const;
  // The tile of an element; kNoTile when it has none. Looks at all tiles.
  uint32_t FindTile(TTreemapElementID pID) const;
  // The element of a tile; for a rest, the folder.
  TRef<TTreeMapElement> CreateElement(uint32_t pTile) const;
  // The name of a tile's element, as it stands on its caption.
  std::u16string GetCaption(uint32_t pTile) const;

  TRef<const ITreemapContainer> fTop;  // its only child is the top element

 private:
  uint32_t ElementTile(uint32_t pTile) const;
  const ITreemapContainer& ContainerOf(const TTreemapTile& pTile) const;
};

}  // namespace Vantrel::Treemap

#pragma once

// The basic types of treemaps: identifiers, rectangles, flags, shading parameters and settings.

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "model/columns/MetaData.h"
#include "model/statistics/ColorPalette.h"
#include "presentation/drawing/TextMeasure.h"

namespace Vantrel::Treemap {

// Identifies an element across layouts: a hash of the names on the way down from the top. So a folder that is scanned
// again keeps its identifier. The identifiers of two elements differ, but for one chance in 10^7 in a picture of a
// million tiles.
enum class TTreemapElementID : uint64_t { None = 0 };

// The identifier of a child, from that of its parent and the child's name.
TTreemapElementID ChildID(TTreemapElementID pParent, std::u16string_view pName);

// A rectangle in whole pixels. Left and top are inside, right and bottom outside.
struct TTreemapRect {
  int32_t fLeft = 0;
  int32_t fTop = 0;
  int32_t fRight = 0;
  int32_t fBottom = 0;

  int32_t Width() const { return fRight - fLeft; }
  int32_t Height() const { return fBottom - fTop; }
  int64_t Area() const { return static_cast<int64_t>(Width()) * Height(); }
  bool IsEmpty() const { return fLeft >= fRight || fTop >= fBottom; }
  bool Contains(int32_t pX, int32_t pY) const { return pX >= fLeft && pX < fRight && pY >= fTop && pY < fBottom; }
  bool operator==(const TTreemapRect&) const = default;
};

// What a chart shows and how it behaves. The values are bit numbers.
enum class TTreemapFlag : uint8_t {
  tmfShowRoot,                 // the top folder has a heading and a frame
  tmfShowLeafCaptions,         // names on files and on folders that are not opened
  tmfShowNonLeafCaptions,      // headings of opened folders
  tmfHighlightCellBorders,     // a thin dark line along each tile
  tmfParents,                  // frames around opened folders
  tmfShowLeafs,                // files are tiles; otherwise only folders are
  tmfLegend,                   // what the colours mean
  tmfIsPainting,               // a picture is being computed
  tmfHotTrackRectangles,       // the element under the pointer is marked
  tmfSpacePressed,             // the space bar is held down
  tmfCacheInvalid,             // the picture no longer matches size, settings or data
  tmfOLEDragDrop,              // elements can be dragged
  tmfShowHint,                 // tooltips
  tmfScrollOnMouseMove,        // dragging with the space bar moves the picture
  tmfPerformDragOnMouseMove,   // the next movement of the pointer begins a drag
  tmfKeepOrientation,          // rows run along the longer side instead of the shorter one
  tmfPaintConcurrent,          // pictures are computed on the pool of threads
  tmfExporting,                // the picture is for a file or the clipboard
  tmfTerminateOutdatedWorker,  // a new request ends the computation of the previous one
};

// A set of flags.
class TTreemapFlags {
 public:
  constexpr TTreemapFlags() = default;
  constexpr TTreemapFlags(std::initializer_list<TTreemapFlag> pFlags) {
    for (const TTreemapFlag flag : pFlags) fBits |= Bit(flag);
  }
  constexpr bool Has(TTreemapFlag pFlag) const { return (fBits & Bit(pFlag)) != 0; }
  constexpr void Set(TTreemapFlag pFlag, bool pOn = true) { fBits = pOn ? fBits | Bit(pFlag) : fBits & ~Bit(pFlag); }
  constexpr bool operator==(const TTreemapFlags&) const = default;

 private:
  static constexpr uint32_t Bit(TTreemapFlag pFlag) { return 1u << static_cast<unsigned>(pFlag); }
  uint32_t fBits = 0;
};

// The light and the material of shaded tiles, after Phong.
//
// Each channel of a pixel is Ambient + Diffuse x cos(normal, light) + Specular x cos(reflected light, view)^Shininess.
// The coefficients are percentages. A colour of 1 is the channel's full value.
struct TPhongProperties {
  float PhongLightVectorX = 0;
  float PhongLightVectorY = 0;
  float PhongLightVectorZ = 1;
  float PhongViewVectorX = 0;
  float PhongViewVectorY = 0;
  float PhongViewVectorZ = 1;
  int32_t PhongDiffuseCoeff = 20;
  int32_t PhongAmbientCoeff = 35;
  int32_t PhongSpecularCoeff = 45;
  int32_t PhongShininess = 3;
  int32_t PhongDiffuseColorR = 1;
  int32_t PhongDiffuseColorG = 0;
  int32_t PhongDiffuseColorB = 0;
  int32_t PhongAmbientColorR = 1;
  int32_t PhongAmbientColorG = 0;
  int32_t PhongAmbientColorB = 0;
  int32_t PhongSpecularColorR = 1;
  int32_t PhongSpecularColorG = 1;
  int32_t PhongSpecularColorB = 1;
  // Each tile's own colour, such as that of its depth, takes the place of the diffuse and the ambient colour.
  bool PhongDifferentLayerColors = true;

  std::function<void()> OnChange;

  // Copies all values. Calls OnChange when one of them changed. Keeps its own OnChange.
  void Assign(const TPhongProperties& pSource);
  bool SameAs(const TPhongProperties& pOther) const;
};

enum class TTreemapRenderMode : uint8_t { rmCushion, rmFlat };

// What the colour of a tile means.
enum class TTreemapColorScheme : uint8_t {
  csType,       // the file-type group
  csExtension,  // the extension
  csAge,        // the time since the last change, or the date that the scan's ages use
  csDepth,      // the level below the top
  csGrowth,     // shrunk, unchanged, grown or new since the scan that the root is compared with
};

// All that a picture depends on, besides its data.
struct TTreemapSettings {
  int32_t fWidth = 1000;  // pixels; 0 gives an empty picture
  int32_t fHeight = 700;
  TTreemapFlags fFlags = {
      TTreemapFlag::tmfShowRoot, TTreemapFlag::tmfShowLeafCaptions, TTreemapFlag::tmfShowNonLeafCaptions,
      TTreemapFlag::tmfParents,  TTreemapFlag::tmfShowLeafs,        TTreemapFlag::tmfLegend,
      TTreemapFlag::tmfShowHint, TTreemapFlag::tmfPaintConcurrent,  TTreemapFlag::tmfTerminateOutdatedWorker};
  TTreemapRenderMode fRenderMode = TTreemapRenderMode::rmCushion;
  TPhongProperties fPhong;
  // The ridge of the first level below the top in percent, and each further level's in relation to the one above it.
  // Frames show the folders, so flat cushions suffice. The deeper ridges are the stronger ones, so that a file can be
  // told from its neighbours.
  int32_t fCushionHeight = 3;
  int32_t fCushionHeightScale = 110;
  bool fDark = false;         // the background that the picture will stand on
  int32_t fSmallestTile = 9;  // pixels; children below this area are drawn as one part of their folder
  int32_t fMostLayers = 256;  // folders at this depth are not opened
  int32_t fTextSize = 0;      // pixels; 0 picks a size for the picture's size, at least 12
  int32_t fThreads = 0;       // 0: as many as there are processors
  TValueFormat fFormat;       // of sizes in captions
  std::shared_ptr<const Drawing::ITextMeasure> fMeasure;  // of captions; nullptr estimates the widths
};

// The height of a letter in the picture, in pixels.
int32_t TextSizeOf(const TTreemapSettings& pSettings);

}  // namespace Vantrel::Treemap

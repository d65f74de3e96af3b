#pragma once

// Divides a rectangle among the children of an element, in rows of tiles that are nearly square.

#include <cstdint>
#include <vector>

#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// One child that is laid out.
struct TElementEntry {
  double fValue = 0;
  uint32_t fItem = 0;          // the child's number inside its container
  double fArea = 0;            // in hundreds of pixels
  double fCumulativeArea = 0;  // of all entries up to and including this one
  float fWidth = 0;            // exact size in pixels
  float fHeight = 0;
  TTreemapRect fRect;  // the same in whole pixels; may be empty
};

// A row: its entries, and where the free rectangle begins after it.
struct TLayoutRow {
  size_t fFirst = 0;
  size_t fCount = 0;
  int32_t fLeft = 0;
  int32_t fTop = 0;
  bool fIsColumn = false;
};

// Sets area, size and rectangle of all entries, whose values are set. Appends the rows.
//
// Entries are placed in their order, in rows that are taken from the left or the top of what is free. A row ends where
// one more entry would be less square than the last one before it. So entries should come largest first. The last row
// takes all that remain.
//
// Whole pixels: each edge is rounded once and shared by the tiles on both sides. So the tiles cover the rectangle
// without gap or overlap. Nothing is placed when the values sum to 0.
//
// Rows run along the shorter side of what is free; with pKeepOrientation along the longer one.
void LayOut(const TTreemapRect& pRect, bool pKeepOrientation, std::vector<TElementEntry>& pEntries,
            std::vector<TLayoutRow>& pRows);

}  // namespace Vantrel::Treemap

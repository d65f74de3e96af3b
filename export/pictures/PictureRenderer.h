#pragma once

// What bitmaps with text need from a program that has fonts.

#include <cstdint>
#include <vector>

#include "presentation/drawing/Drawing.h"

namespace Vantrel::Pictures {

// Draws drawings as pixels. The window program has one; the console program has no fonts.
class IPictureRenderer {
 public:
  virtual ~IPictureRenderer() = default;
  // The whole drawing, row by row from the top: 0xRRGGBB, the upper byte has no meaning. Main thread only.
  // EInvalidOperation when it cannot be drawn, such as for lack of memory.
  virtual std::vector<uint32_t> Render(const Drawing::TDrawing& pDrawing) = 0;
};

}  // namespace Vantrel::Pictures

#pragma once

// Drawings as SVG files.

#include "platform/files/ByteStreams.h"
#include "presentation/drawing/Drawing.h"

namespace Vantrel::Pictures {

// Writes a drawing as an SVG file in UTF-8, which browsers and drawing programs open. Text stays text. The hint of a
// shape's subject is its tooltip. Bitmaps are embedded as PNG. The file is well-formed whatever the texts hold: what
// XML cannot hold becomes a visible escape or U+FFFD. Failures are those of the sink.
void WriteSVG(const Drawing::TDrawing& pDrawing, IByteSink& pSink);

}  // namespace Vantrel::Pictures

#pragma once

// Computes the pixels of a treemap from its tiles.

#include "presentation/treemap/TreemapPicture.h"

namespace Vantrel::Treemap {

// Sets the picture's pixels. Each belongs to one tile alone, so threads share the tiles without waiting for each other.
// They are incomplete when the token was cancelled meanwhile.
void PaintTiles(TTreemapPicture& pPicture, const TTreemapSettings& pSettings, int pThreads,
                const ICancellationIndicator* pToken);

}  // namespace Vantrel::Treemap

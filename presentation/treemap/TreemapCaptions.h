#pragma once

// Places the names of elements on a treemap.

#include "presentation/treemap/TreemapPicture.h"

namespace Vantrel::Treemap {

// Adds the captions to a picture that is painted. Headings stand in the frames of opened elements, other names in the
// middle of their tiles. A name that does not fit ends with "…"; a tile that is too small for a few letters has none.
// Where there is room, the value stands after the name of a heading, and below the name on a tile.
void AddCaptions(TTreemapPicture& pPicture, const TTreemapSettings& pSettings, TColumn pValueColumn);

}  // namespace Vantrel::Treemap

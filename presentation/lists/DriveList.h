#pragma once

// The list of drives.

#include <span>

#include "platform/files/Volumes.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The drives of this machine, by path. A drive that does not answer within a few seconds, or has no sizes, has empty
// cells. "% Used" refers to the sum of used and free space, as in df.
TList DriveList();
// The same for the given drives.
TList DriveList(std::span<const TVolumeInformation> pDrives);

}  // namespace Vantrel::Presentation

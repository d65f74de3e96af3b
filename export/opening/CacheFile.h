#pragma once

// Reads cache files of QDirStat.

#include <string_view>

#include "export/opening/LoadedTree.h"
#include "export/opening/ScanFiles.h"

namespace Vantrel::Opening {

// Whether a file that begins like this is such a cache file.
bool IsCacheFile(std::string_view pStart);
// EFileError when the file is damaged. When cancelled, returns no root.
TOpenedScan ReadCacheFile(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress);

}  // namespace Vantrel::Opening

#pragma once

// Reads what "du -ak" writes.

#include <string_view>

#include "export/opening/LoadedTree.h"
#include "export/opening/ScanFiles.h"

namespace Vantrel::Opening {

// Whether a file that begins like this may be such a text: a number, a tab and a path.
bool IsDuText(std::string_view pStart);
// EFileError when the text is damaged. When cancelled, returns no root.
TOpenedScan ReadDuText(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress);

}  // namespace Vantrel::Opening

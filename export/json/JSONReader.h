#pragma once

// Reads trees that JSONExport wrote, in both layouts.

#include "export/json/JSONValues.h"
#include "export/opening/LoadedTree.h"
#include "export/opening/ScanFiles.h"

namespace Vantrel::JSON {

// Reads a document. Opening::EFileError when it is damaged, has another version or holds no tree. When cancelled,
// returns no root.
Opening::TOpenedScan ReadTree(IByteSource& pSource, IScanRoots& pTarget, const Opening::TFileProgress& pProgress);

}  // namespace Vantrel::JSON

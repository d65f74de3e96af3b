#pragma once

// Reads trees in the JSON form of ncdu.

#include "export/json/JSONValues.h"
#include "export/opening/LoadedTree.h"
#include "export/opening/ScanFiles.h"

namespace Vantrel::JSON {

// Reads a document. Opening::EFileError when it is damaged or has another major version. When cancelled, returns no
// root.
Opening::TOpenedScan ReadNcdu(IByteSource& pSource, IScanRoots& pTarget, const Opening::TFileProgress& pProgress);

}  // namespace Vantrel::JSON

#pragma once

// The list of the largest files.

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The largest files that the root remembers, by size, then by full path. A row leads to the file's folder and has the
// colour of its extension. Owners appear if the scan collected them. The owner's cell is empty for a file that the scan
// did not keep.
TList TopFilesList(const IHierarchicalRoot& pRoot);

}  // namespace Vantrel::Presentation

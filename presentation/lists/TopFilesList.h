#pragma once

// The list of the largest files.

#include <functional>

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The largest files that the root remembers, by size, then by full path. A row leads to the file's folder and has the
// colour of its extension. Owners appear if the scan collected them. The owner's cell is empty for a file that the scan
// did not keep.
TList TopFilesList(const IHierarchicalRoot& pRoot);
// The same for a folder with all beneath it, as many as the root remembers of its own. They come from the files that
// the scan kept, so it takes time. Without kept files, only those of the root's largest that lie in the folder. Empty
// when pIsCancelled returned true.
TList TopFilesList(const IHierarchicalRoot& pRoot, IFolderData& pFolder,
                   const std::function<bool()>& pIsCancelled = {});

}  // namespace Vantrel::Presentation

#pragma once

// The folders with the most in them, as a list.

#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The folders of a root whose direct files take the most, the largest first, as many as the largest files of a scan.
// What lies in their sub-folders does not count: so a folder does not stand beside all the folders above it.
TList TopFoldersList(const IHierarchicalRoot& pRoot);

}  // namespace Vantrel::Presentation

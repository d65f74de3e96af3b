#pragma once

// The list of all that is known about a folder.

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// Two columns: what is told, and its value as text in the given format. First the folder, then the scan and the drive.
TList DetailsList(const IHierarchicalRoot& pRoot, const IFolderData& pFolder, const TValueFormat& pFormat);

}  // namespace Vantrel::Presentation

#pragma once

// The list of folders that a scan could not read.

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The positions of the columns.
enum TErrorColumn : size_t { erPath, erReason, erRemark };

// The root's errors by path. The remark is "read in part" or empty. A row leads to the folder's node.
TList ErrorList(const IHierarchicalRoot& pRoot);
// Those in a folder and beneath it.
TList ErrorList(const IHierarchicalRoot& pRoot, const IFolderData& pFolder);

}  // namespace Vantrel::Presentation

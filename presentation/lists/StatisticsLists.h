#pragma once

// The lists of a root's statistics: extensions, file types, owners, file ages.

#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// The lists are those of a folder with all beneath it, by default of the whole root. If the scan did not collect the
// data, a list has no rows and its title ends with "(not collected)". Shares refer to the folder, in the sizes that the
// root uses for shares.

// Extensions by size, with the common file-type groups that hold each. Equal sizes are sorted by extension.
TList ExtensionsList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
// The common file-type groups in their order, including those without files. An extension counts in every group that
// takes it, so the shares may add up to more than the whole.
TList FileTypesList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
// Owners by size. Equal sizes are sorted by name.
TList UsersList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);
// The scan's age intervals, the youngest first, including those without files.
TList FileAgesList(const IHierarchicalRoot& pRoot, TRef<IFolderData> pFolder = nullptr);

}  // namespace Vantrel::Presentation

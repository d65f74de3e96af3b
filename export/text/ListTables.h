#pragma once

// The lists beside the tree: largest files, extensions, owners, file ages, drives.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "model/roots/RootInterfaces.h"
#include "platform/files/Volumes.h"

namespace Vantrel::Exporting {

// A column of a list. The catalogue's column says how its values are formatted. The caption may differ from the
// catalogue's.
struct TListColumn {
  std::u16string fCaption;
  TColumn fColumn;
};

// A list beside the tree, ready to be written.
struct TListTable {
  std::u16string fTitle;      // "Largest files of /data"
  std::u16string_view fName;  // such as "topfiles": ASCII, used in file names
  std::vector<TListColumn> fColumns;
  std::vector<std::vector<TMetaDataValue>> fRows;  // one raw value per column
};

// The lists of one root, from its tree as it is now. If the scan did not collect the data, the list has no rows and its
// title ends with "(not collected)". Shares refer to the whole root, in the sizes that the root uses for shares.

// The largest files that the root remembers, by size. Owners appear if the scan collected them. The owner's cell is
// empty for a file that the scan did not keep.
TListTable TopFilesList(IHierarchicalRoot& pRoot);
// Extensions by size, with the standard file-type groups that hold each. Equal sizes are sorted by extension.
TListTable ExtensionsList(IHierarchicalRoot& pRoot);
// Owners by size. Equal sizes are sorted by name.
TListTable UsersList(IHierarchicalRoot& pRoot);
// The scan's age intervals, the youngest first, including those without files.
TListTable FileAgesList(IHierarchicalRoot& pRoot);

// The lists that the options ask for.
std::vector<TListTable> ChosenLists(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions);
// Only the names of these lists.
std::vector<std::u16string_view> ChosenListNames(const TGlobalOptions& pOptions);

// The drives of this machine, by path. A drive that does not answer within a few seconds, or has no sizes, has empty
// cells. "% Used" refers to the sum of used and free space, as in df.
TListTable DriveList();
// The same for the given drives.
TListTable DriveList(std::span<const TVolumeInformation> pDrives);

}  // namespace Vantrel::Exporting

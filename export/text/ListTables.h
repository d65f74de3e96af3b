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

// A column of a list: the catalogue's column says how its values are formatted, the caption may be another.
struct TListColumn {
  std::u16string fCaption;
  TColumn fColumn;
};

// A list beside the tree, ready to be written.
struct TListTable {
  std::u16string fTitle;      // "Largest files of /data"
  std::u16string_view fName;  // "topfiles": ASCII, goes into file names
  std::vector<TListColumn> fColumns;
  std::vector<std::vector<TMetaDataValue>> fRows;  // a raw value per column
};

// The lists of one root, of what its tree holds at the moment. Where the scan did not collect what a list shows, there
// are no rows and the title ends with "(not collected)". Shares are of the whole root, in the sizes that the root's
// shares are of.

// The largest files, as the root remembers them, by size. Owners are there when the scan collected them; the cell is
// empty for a file that the scan did not keep.
TListTable TopFilesList(IHierarchicalRoot& pRoot);
// Extensions by size, with the standard file-type groups that each counts in; equal sizes by extension.
TListTable ExtensionsList(IHierarchicalRoot& pRoot);
// Owners by size, equal sizes by name.
TListTable UsersList(IHierarchicalRoot& pRoot);
// The intervals of the scan, from the youngest on, those without files too.
TListTable FileAgesList(IHierarchicalRoot& pRoot);

// Those of them that the options ask for.
std::vector<TListTable> ChosenLists(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions);
// Their names alone.
std::vector<std::u16string_view> ChosenListNames(const TGlobalOptions& pOptions);

// The drives of this machine, by path. One that does not answer within a few seconds, or has no sizes, has empty cells.
// "% Used" is of what is used and free, as df reckons it.
TListTable DriveList();
// The same of these drives.
TListTable DriveList(std::span<const TVolumeInformation> pDrives);

}  // namespace Vantrel::Exporting

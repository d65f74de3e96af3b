#pragma once

// Makes the groups that a search for duplicates tells: their names, their order, and what they waste.

#include <span>
#include <unordered_map>
#include <vector>

#include "search/duplicates/DuplicateSettings.h"
#include "search/duplicates/FolderContents.h"

namespace Vantrel::Search {

// Equal files with all their names.
TDuplicateGroup GroupOfFiles(std::span<const TRef<TDuplicateFile>> pFiles);
// The most wasteful first, then by the paths of the first file.
void SortGroups(std::vector<TDuplicateGroup>& pGroups);

// Equal folders, sorted. A group is left out if its folders lie in the equal folders of another group, one in each.
std::vector<TDuplicateGroup> GroupsOfFolders(
    const std::vector<TRef<TDuplicatesGroup>>& pGroups,
    const std::unordered_map<const TDuplicateFile*, const TFolderNode*>& pNodes);
// What would be free if only the first folder of each group was kept. Groups may lie in folders of other groups.
int64_t WastedByFolders(std::span<const TDuplicateGroup> pGroups);

}  // namespace Vantrel::Search

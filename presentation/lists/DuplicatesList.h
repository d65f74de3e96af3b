#pragma once

// The list of the groups that a search for duplicates has found.

#include <span>
#include <string>
#include <vector>

#include "presentation/lists/List.h"
#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::Presentation {

// The columns of a file's own values, as programs get them.
std::vector<TColumn> UsualDuplicatesColumns();

// One row for each name, group by group. In front of the columns stand the number of the group, what the whole group
// wastes, and whether the name is a hard link of a file that stands above it in its group.
TList DuplicatesList(std::u16string pTitle, std::span<const Search::TDuplicateGroup> pGroups,
                     std::span<const TColumn> pColumns);

}  // namespace Vantrel::Presentation

#pragma once

// The list of what a search has found.

#include <span>
#include <string>
#include <vector>

#include "presentation/lists/List.h"
#include "search/files/FoundItem.h"

namespace Vantrel::Presentation {

// The columns that people see, and those for programs.
std::vector<TColumn> UsualFoundColumns(bool pForPrograms);

// A found item's value in a column of the catalogue. "No value" for what is not known of it, such as a folder's size on
// a storage.
TMetaDataValue FoundValue(const Search::TFoundItem& pItem, TColumn pColumn);

// The items as a list, in their order. A row leads to the node of an item that was found in a tree.
TList FoundList(std::u16string pTitle, std::span<const Search::TFoundItem> pItems, std::span<const TColumn> pColumns);

// Sorts by a column. Items with equal values keep their order. Missing values come first, or last in descending order.
void SortFound(std::vector<Search::TFoundItem>& pItems, TColumn pColumn, bool pDescending);

}  // namespace Vantrel::Presentation

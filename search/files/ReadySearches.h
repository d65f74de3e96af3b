#pragma once

// The searches that the program knows by a name.

#include <span>
#include <string_view>

namespace Vantrel::Search {

struct TReadySearch {
  std::u16string_view fName;
  std::u16string_view fQuery;
  std::string_view fMeaning;
};

std::span<const TReadySearch> ReadySearches();
// The search of that name, in any letter case; nullptr when there is none.
const TReadySearch* FindReadySearch(std::u16string_view pName);

}  // namespace Vantrel::Search

#pragma once

// All lists of a root that users can ask for, with the option that asks for each.

#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "model/roots/RootInterfaces.h"
#include "presentation/lists/List.h"

namespace Vantrel::Presentation {

// A kind of list.
struct TRootList {
  std::u16string_view fName;  // such as "topfiles": ASCII, used in file names
  bool TGlobalOptions::*fOption;
  // Makes the list from the root's tree as it is now, as often as wanted. Any thread, also while the root is scanned.
  TList (*fFill)(const IHierarchicalRoot&);
};

// The lists that the options ask for.
std::vector<TRootList> ChosenLists(const TGlobalOptions& pOptions);

}  // namespace Vantrel::Presentation

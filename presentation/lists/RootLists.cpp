#include "presentation/lists/RootLists.h"

#include <algorithm>
#include <iterator>

#include "presentation/lists/StatisticsLists.h"
#include "presentation/lists/TopFilesList.h"

namespace Vantrel::Presentation {

namespace {

constexpr TRootList kRootLists[] = {{u"topfiles", &TGlobalOptions::ListTopFiles, TopFilesList},
                                    {u"extensions", &TGlobalOptions::ListExtensions, ExtensionsList},
                                    {u"filetypes", &TGlobalOptions::ListFileTypes, FileTypesList},
                                    {u"users", &TGlobalOptions::ListUsers, UsersList},
                                    {u"ages", &TGlobalOptions::ListFileAges, FileAgesList}};

}  // namespace

std::vector<TRootList> ChosenLists(const TGlobalOptions& pOptions) {
  std::vector<TRootList> chosen;
  std::copy_if(std::begin(kRootLists), std::end(kRootLists), std::back_inserter(chosen),
               [&](const TRootList& pList) { return pOptions.*pList.fOption; });
  return chosen;
}

}  // namespace Vantrel::Presentation

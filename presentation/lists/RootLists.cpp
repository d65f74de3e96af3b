#include "presentation/lists/RootLists.h"

#include <algorithm>
#include <iterator>

#include "presentation/lists/StatisticsLists.h"
#include "presentation/lists/TopFilesList.h"
#include "presentation/lists/TopFoldersList.h"

namespace Vantrel::Presentation {

namespace {

template <TList (*pList)(const IHierarchicalRoot&, TRef<IFolderData>)>
TList OfRoot(const IHierarchicalRoot& pRoot) {
  return pList(pRoot, nullptr);
}

constexpr TRootList kRootLists[] = {{u"topfiles", &TGlobalOptions::ListTopFiles, TopFilesList},
                                    {u"topfolders", &TGlobalOptions::ListTopFolders, TopFoldersList},
                                    {u"extensions", &TGlobalOptions::ListExtensions, OfRoot<ExtensionsList>},
                                    {u"filetypes", &TGlobalOptions::ListFileTypes, OfRoot<FileTypesList>},
                                    {u"users", &TGlobalOptions::ListUsers, OfRoot<UsersList>},
                                    {u"ages", &TGlobalOptions::ListFileAges, OfRoot<FileAgesList>}};

}  // namespace

std::vector<TRootList> ChosenLists(const TGlobalOptions& pOptions) {
  std::vector<TRootList> chosen;
  std::copy_if(std::begin(kRootLists), std::end(kRootLists), std::back_inserter(chosen),
               [&](const TRootList& pList) { return pOptions.*pList.fOption; });
  return chosen;
}

}  // namespace Vantrel::Presentation

#include "export/xml/ScanFileElements.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <iterator>
#include <utility>

#include "platform/text/Text.h"

namespace Vantrel::XML {

namespace {

using enum TScanFileElement;

// In small letters.
constexpr std::pair<std::u16string_view, TScanFileElement> kElements[] = {
    {u"root", elRoot},
    {u"path", elPath},
    {u"title", elTitle},
    {u"date", elDate},
    {u"dateiso", elDateISO},
    {u"filesystem", elFilesystem},
    {u"bytespercluster", elBytesPerCluster},
    {u"totalbytesondrive", elTotalBytes},
    {u"usedbytesondrive", elTotalBytes},
    {u"freebytesondrive", elFreeBytes},
    {u"excludedobjects", elExcludedObjects},
    {u"terminated", elTerminated},
    {u"isfullexport", elIsFullExport},
    {u"iscompared", elIsCompared},
    {u"fileagesdatetype", elFileAgesDateType},
    {u"docreatefileages", elDoCreateFileAges},
    {u"ttopsizefilelist", elTopSizeList},
    {u"topfile", elTopFile},
    {u"includepatterns", elPatterns},
    {u"excludepatterns", elPatterns},
    {u"tpatternlist", elPatternList},
    {u"pattern", elPattern},
    {u"folder", elFolder},
    {u"attributes", elAttributes},
    {u"owner", elOwner},
    {u"errormessage", elErrorMessage},
    {u"folderstate", elFolderState},
    {u"lastaccessdate", elLastAccess},
    {u"lastchangedate", elLastChange},
    {u"creationdate", elCreation},
    {u"sizedata", elSizeData},
    {u"textensionsizearray", elExtensionSizeArray},
    {u"tusersizearray", elUserSizeArray},
    {u"item", elItem},
    {u"fileagedistribution", elFileAges},
};

}  // namespace

TScanFileElement ElementOf(std::u16string_view pName) {
  static const boost::unordered_flat_map<std::u16string_view, TScanFileElement> elements(std::begin(kElements),
                                                                                         std::end(kElements));
  constexpr size_t kLongest = 32;
  if (pName.size() > kLongest) return elUnknown;
  char16_t folded[kLongest];
  std::transform(pName.begin(), pName.end(), folded, FoldAscii);
  const auto found = elements.find(std::u16string_view(folded, pName.size()));
  return found == elements.end() ? elUnknown : found->second;
}

}  // namespace Vantrel::XML

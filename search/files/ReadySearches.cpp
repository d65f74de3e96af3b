#include "search/files/ReadySearches.h"

#include <algorithm>
#include <iterator>

#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

constexpr TReadySearch kSearches[] = {
    {u"largest", u"size:>=100MB", "files of 100 MB and more"},
    {u"oldest", u"attribute:!=D modified:>\"5 years\"", "files that were last changed more than five years ago"},
    {u"newest", u"attribute:!=D modified:<\"1 day\"", "files that were changed within a day"},
    {u"temporary", u"attribute:!=D name:*.tmp;*.temp;*.bak;*.swp;*.crdownload;*.part;*~;~$*",
     "files that programs leave behind"},
    {u"emptyfolders", u"mdata:EmptyFolder:yes", "folders with nothing in them"},
    {u"broken", u"mdata:BrokenLink:yes", "links and shortcuts that lead nowhere"},
    {u"longpaths", u"mdata:PathLength:>=260", "paths that many programs find too long"},
};

}  // namespace

std::span<const TReadySearch> ReadySearches() {
  return kSearches;
}

const TReadySearch* FindReadySearch(std::u16string_view pName) {
  const auto found = std::find_if(std::begin(kSearches), std::end(kSearches),
                                  [&](const TReadySearch& pSearch) { return SameTextAscii(pSearch.fName, pName); });
  return found == std::end(kSearches) ? nullptr : found;
}

}  // namespace Vantrel::Search

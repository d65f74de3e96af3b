#include "platform/Utf.h"
#include "platform/WildcardMatch.h"

namespace Kiv {

namespace {

// The last "*" may take any run, those before it need no second try: each has already found the shortest run that fits
// what stands between it and the next. So the work is at most name times mask.
bool MatchesOne(std::u16string_view pName, std::u16string_view pMask) {
  constexpr auto kNoStar = std::u16string_view::npos;
  size_t name = 0;
  size_t mask = 0;
  size_t afterStar = kNoStar;
  size_t resume = 0;
  while (name < pName.size()) {
    if (mask < pMask.size() && pMask[mask] == u'*') {
      afterStar = ++mask;
      resume = name;
    } else if (mask < pMask.size() && (pMask[mask] == u'?' || pMask[mask] == pName[name] ||
                                       UpcaseUnit(pMask[mask]) == UpcaseUnit(pName[name]))) {
      ++mask;
      ++name;
    } else if (afterStar != kNoStar) {
      mask = afterStar;
      name = ++resume;
    } else {
      return false;
    }
  }
  return pMask.find_first_not_of(u'*', mask) == std::u16string_view::npos;
}

}  // namespace

bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks) {
  if (pMasks == u"*.*") return true;
  while (!pMasks.empty()) {
    const size_t end = pMasks.find(u';');
    if (MatchesOne(pName, pMasks.substr(0, end))) return true;
    pMasks.remove_prefix(end == std::u16string_view::npos ? pMasks.size() : end + 1);
  }
  return false;
}

}  // namespace Kiv

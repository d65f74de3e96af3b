#include "platform/text/WildcardMatch.h"

#include <algorithm>

#include "platform/text/Utf.h"

namespace Vantrel::OwnWildcards {

namespace {

bool SameLetter(char16_t pA, char16_t pB) {
  return pA == pB || UpcaseUnit(pA) == UpcaseUnit(pB);
}
bool SameUnit(char16_t pA, char16_t pB) {
  return pA == pB;
}

using TSame = bool (*)(char16_t, char16_t);

// The first position from pFrom on at which the mask's part after a star may begin. The name's size when there is none.
template <TSame kSame>
size_t NextBegin(std::u16string_view pName, size_t pFrom, char16_t pFirstOfPart) {
  if (pFirstOfPart == u'?') return pFrom;
  while (pFrom < pName.size() && !kSame(pFirstOfPart, pName[pFrom])) ++pFrom;
  return pFrom;
}

// Only the last "*" needs further tries. Each earlier star has already found the shortest run for which the part up to
// the next star fits. So the work is at most name times mask.
template <TSame kSame>
bool MatchesOne(std::u16string_view pName, std::u16string_view pMask) {
  constexpr auto kNoStar = std::u16string_view::npos;
  size_t name = 0;
  size_t mask = 0;
  size_t afterStar = kNoStar;
  size_t resume = 0;
  while (name < pName.size()) {
    if (mask < pMask.size() && pMask[mask] == u'*') {
      afterStar = pMask.find_first_not_of(u'*', mask);
      if (afterStar == kNoStar) return true;
      mask = afterStar;
      name = resume = NextBegin<kSame>(pName, name, pMask[afterStar]);
    } else if (mask < pMask.size() && (pMask[mask] == u'?' || kSame(pMask[mask], pName[name]))) {
      ++mask;
      ++name;
    } else if (afterStar != kNoStar) {
      mask = afterStar;
      name = resume = NextBegin<kSame>(pName, resume + 1, pMask[afterStar]);
    } else {
      return false;
    }
  }
  return pMask.find_first_not_of(u'*', mask) == std::u16string_view::npos;
}

template <TSame kSame, bool kStripped>
bool MatchesList(std::u16string_view pName, std::u16string_view pMasks) {
  if (pMasks == u"*.*") return true;
  while (!pMasks.empty()) {
    const size_t length = std::min(pMasks.find(u';'), pMasks.size());
    std::u16string_view mask = pMasks.substr(0, length);
    if (kStripped) mask.remove_prefix(std::min(mask.find_first_not_of(u' '), length));
    if (MatchesOne<kSame>(pName, mask)) return true;
    pMasks.remove_prefix(std::min(length + 1, pMasks.size()));
  }
  return false;
}

}  // namespace

bool Matches(std::u16string_view pName, std::u16string_view pMasks) {
  return MatchesList<SameLetter, false>(pName, pMasks);
}
bool MatchesStripped(std::u16string_view pName, std::u16string_view pMasks) {
  return MatchesList<SameLetter, true>(pName, pMasks);
}
bool MatchesFolded(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks) {
  return MatchesList<SameUnit, false>(pFoldedName, pFoldedMasks);
}
bool MatchesFoldedStripped(std::u16string_view pFoldedName, std::u16string_view pFoldedMasks) {
  return MatchesList<SameUnit, true>(pFoldedName, pFoldedMasks);
}

}  // namespace Vantrel::OwnWildcards

#include "platform/text/WildcardMatch.h"

namespace Vantrel {

bool MatchesWildcards(std::u16string_view pName, std::u16string_view pMasks) {
  return OwnWildcards::Matches(pName, pMasks);
}
bool MatchesWildcardsStripped(std::u16string_view pName, std::u16string_view pMasks) {
  return OwnWildcards::MatchesStripped(pName, pMasks);
}

}  // namespace Vantrel

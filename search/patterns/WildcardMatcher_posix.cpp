#include <string>

#include "platform/text/WildcardMatch.h"
#include "search/patterns/WildcardMatcher.h"

namespace Vantrel::PatternMatching {

namespace {

class TGeneralMatcher : public IWildcardMatcher {
 public:
  explicit TGeneralMatcher(std::u16string_view pMasks) : fFoldedMasks(TMatchText(pMasks).Folded()) {}
  bool Matches(TMatchText& pText) const override { return OwnWildcards::MatchesFolded(pText.Folded(), fFoldedMasks); }
  TWildcardShape Shape() const override { return TWildcardShape::wsGeneral; }

 private:
  const std::u16string fFoldedMasks;
};

}  // namespace

std::unique_ptr<const IWildcardMatcher> CreateGeneralMatcher(std::u16string_view pMasks) {
  return std::make_unique<TGeneralMatcher>(pMasks);
}

}  // namespace Vantrel::PatternMatching

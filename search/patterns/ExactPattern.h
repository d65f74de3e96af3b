#pragma once

// A pattern that matches one exact text.

#include "search/patterns/CustomPattern.h"

namespace Vantrel::PatternMatching {

// Matches values that equal the text. Only the letters a to z are folded.
class TExactPattern : public TCustomPattern {
 public:
  TExactPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType, char16_t pPathDelimiter)
      : TCustomPattern(pText, pTarget, pType, pPathDelimiter) {}

  TPatternClass PatternClass() const override { return TPatternClass::pcExact; }
  std::u16string ToString() const override { return Quoted(GetPattern()); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TExactPattern"; }

 protected:
  bool MatchesText(TMatchText& pText) override;
  bool SameMatches(const TCustomPattern& pOther) const override { return pOther.GetPattern() == GetPattern(); }
  bool MayLieBeneath(std::u16string_view pFolder) const override;
};

}  // namespace Vantrel::PatternMatching

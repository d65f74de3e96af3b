#pragma once

// Wildcards: what becomes of a text, names without a dot, which folders lie on the way.

#include <memory>

#include "search/patterns/CustomPattern.h"
#include "search/patterns/WildcardMatcher.h"

namespace Vantrel::PatternMatching {

// "*.tmp;*.bak": masks as the shell has them. docs/patterns.md says what becomes of a text.
//
// Three forms of the text are kept apart: the pattern as it was typed; the shown form, which says how it is matched and
// reads back into an equal pattern; and the match text, in which dates and environment variables are filled in.
class TWildcardPattern : public TCustomPattern {
 public:
  TWildcardPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType,
                   char16_t pPathDelimiter);

  bool MatchesAll() const override;
  TPatternClass PatternClass() const override { return TPatternClass::pcWildcard; }
  std::u16string ToString() const override { return ShownText(); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TWildcardPattern"; }
  // What values are matched against; of the no-extension form the text itself.
  const std::u16string& MatchText() const { return fMatchText; }

 protected:
  bool MatchesText(TMatchText& pText) override;
  void Prepare() override;
  bool SameMatches(const TCustomPattern& pOther) const override;
  bool MayLieBeneath(std::u16string_view pFolder) const override;
  // For groups, whose text is not what is matched.
  void UseMasks(std::u16string_view pMasks);

 private:
  bool IsNoExtensionForm() const;
  bool MatchesNoExtension(TMatchText& pText) const;
  std::u16string ShownText() const;
  std::u16string Widened(std::u16string_view pText) const;
  bool AlternativeMayLieBeneath(std::u16string_view pText, std::u16string_view pFolder) const;

  std::u16string fMatchText;
  std::u16string fFoldedMatchText;
  bool fNoExtension = false;
  std::unique_ptr<const IWildcardMatcher> fMatcher;  // of the no-extension form for its text without the dot
};

// Whether some text that begins with pBeginning could match the mask, one without ";". Both in the same letter case.
bool CanMatchSomethingBeginningWith(std::u16string_view pMask, std::u16string_view pBeginning);

}  // namespace Vantrel::PatternMatching

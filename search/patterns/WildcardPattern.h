#pragma once

// The wildcard pattern: its text forms, its match of names without a dot, and which folders lead to a match.

#include <memory>

#include "search/patterns/CustomPattern.h"
#include "search/patterns/WildcardMatcher.h"

namespace Vantrel::PatternMatching {

// Wildcard masks such as "*.tmp;*.bak", as in the shell. docs/patterns.md explains what becomes of a text.
//
// A pattern has three forms of its text. The pattern is the text as typed. The shown form says how it is matched and
// reads back into an equal pattern. The match text has dates and environment variables filled in.
class TWildcardPattern : public TCustomPattern {
 public:
  TWildcardPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType,
                   char16_t pPathDelimiter);

  bool MatchesAll() const override;
  TPatternClass PatternClass() const override { return TPatternClass::pcWildcard; }
  std::u16string ToString() const override { return ShownText(); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TWildcardPattern"; }
  // The text that values are matched against. For the no-extension form it is the text itself.
  const std::u16string& MatchText() const { return fMatchText; }

 protected:
  bool MatchesText(TMatchText& pText) override;
  void Prepare() override;
  bool SameMatches(const TCustomPattern& pOther) const override;
  bool MayLieBeneath(std::u16string_view pFolder) const override;
  // For groups, which match other masks than their text.
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
  std::unique_ptr<const IWildcardMatcher> fMatcher;  // for the no-extension form, it matches the text without the dot
};

// Whether some text that begins with pBeginning could match pMask. The mask holds no ";". Both have the same letter
// case.
bool CanMatchSomethingBeginningWith(std::u16string_view pMask, std::u16string_view pBeginning);

}  // namespace Vantrel::PatternMatching

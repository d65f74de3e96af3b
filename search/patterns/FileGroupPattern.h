#pragma once

// A pattern that stands for a file-type group.

#include "search/patterns/WildcardPattern.h"

namespace Vantrel::PatternMatching {

// Stands for a named file-type group. The group's masks are matched against the name. The constructor copies the masks.
class TFileGroupPattern : public TWildcardPattern {
 public:
  // pGroup is the caption of one of the common groups, in any letter case.
  TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter);

  bool MatchesAll() const override { return false; }
  std::u16string ToString() const override { return GetPattern(); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TFileGroupPattern"; }
  // "No file group found matching …" if the group does not exist.
  std::u16string GetErrorText() const override { return fErrorText; }

 protected:
  bool MatchesText(TMatchText& pText) override { return fErrorText.empty() && TWildcardPattern::MatchesText(pText); }
  void Prepare() override;
  bool SameMatches(const TCustomPattern& pOther) const override;
  bool MayLieBeneath(std::u16string_view) const override { return true; }

 private:
  std::u16string fErrorText;
};

}  // namespace Vantrel::PatternMatching

#pragma once

// A file-type group as a pattern.

#include "search/patterns/WildcardPattern.h"

namespace Vantrel {
class IFileTypeGroups;
}

namespace Vantrel::PatternMatching {

// Stands for a named file-type group: the masks of the group, matched against the name. Takes the masks when it is
// made.
class TFileGroupPattern : public TWildcardPattern {
 public:
  // The text is the group's caption, in any letter case.
  TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter,
                    const IFileTypeGroups& pGroups);
  // With the groups that the program starts with.
  TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter);

  bool MatchesAll() const override { return false; }
  std::u16string ToString() const override { return GetPattern(); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TFileGroupPattern"; }
  // "No file group found matching …" when there is no such group.
  std::u16string GetErrorText() const override { return fErrorText; }

 protected:
  bool MatchesText(TMatchText& pText) override { return fErrorText.empty() && TWildcardPattern::MatchesText(pText); }
  void Prepare() override;
  bool SameMatches(const TCustomPattern& pOther) const override;
  bool MayLieBeneath(std::u16string_view) const override { return true; }

 private:
  const TRef<const IFileTypeGroups> fGroups;
  std::u16string fErrorText;
};

}  // namespace Vantrel::PatternMatching

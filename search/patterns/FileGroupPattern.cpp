#include "search/patterns/FileGroupPattern.h"

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Text.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/PatternTargets.h"

namespace Vantrel::PatternMatching {

namespace {

const IFileTypeGroups& StandardGroups() {
  static const TRef<const IFileTypeGroups> groups = MakeRef<TStandardFileTypes>();
  return *groups;
}

}  // namespace

TFileGroupPattern::TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter,
                                     const IFileTypeGroups& pGroups)
    : TWildcardPattern(pGroup, NameTarget(), pType, pPathDelimiter), fGroups(&pGroups) {
  TFileGroupPattern::Prepare();
}

TFileGroupPattern::TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter)
    : TFileGroupPattern(pGroup, pType, pPathDelimiter, StandardGroups()) {}

void TFileGroupPattern::Prepare() {
  fErrorText = u"No file group found matching \"" + GetPattern() + u"\"";
  for (int i = 0; i < fGroups->GetCount(); ++i) {
    const TRef<IFileTypeGroup> group = fGroups->GetItem(i);
    if (!SameTextAscii(group->GetCaption(), GetPattern())) continue;
    fErrorText.clear();
    UseMasks(group->GetPatterns());
    return;
  }
}

bool TFileGroupPattern::SameMatches(const TCustomPattern& pOther) const {
  return SameTextAscii(pOther.GetPattern(), GetPattern());
}

std::u16string TFileGroupPattern::ToExpression() const {
  const bool isExclude = GetPatternType() == TPatternType::ptyExclude;
  return std::u16string(u"filetype:") + (isExclude ? u"!=" : u"") + ExpressionValue(GetPattern());
}

}  // namespace Vantrel::PatternMatching

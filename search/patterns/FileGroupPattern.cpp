#include "search/patterns/FileGroupPattern.h"

#include "model/statistics/FileTypeGroups.h"
#include "platform/text/Text.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/PatternTargets.h"

namespace Vantrel::PatternMatching {

TFileGroupPattern::TFileGroupPattern(std::u16string_view pGroup, TPatternType pType, char16_t pPathDelimiter)
    : TWildcardPattern(pGroup, NameTarget(), pType, pPathDelimiter) {
  TFileGroupPattern::Prepare();
}

void TFileGroupPattern::Prepare() {
  fErrorText = u"No file group found matching \"" + GetPattern() + u"\"";
  const TRef<const IFileTypeGroups> groups = CommonFileTypeGroups();
  for (int i = 0; i < groups->GetCount(); ++i) {
    const TRef<IFileTypeGroup> group = groups->GetItem(i);
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

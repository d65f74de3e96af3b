#include "search/patterns/ExactPattern.h"

#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::PatternMatching {

bool TExactPattern::MatchesText(TMatchText& pText) {
  const std::u16string_view text = pText.Text();
  return SameTextAscii(text, GetPattern()) ||
         (HasTrailingDelimiter(text) && SameTextAscii(text.substr(0, text.size() - 1), GetPattern()));
}

bool TExactPattern::MayLieBeneath(std::u16string_view pFolder) const {
  const char16_t delimiter = PathDelimiter();
  const std::u16string_view text = FoldedPattern();
  if (IsSameOrInside(text, pFolder, delimiter)) return true;  // the folder leads to the text
  if (pFolder.starts_with(text) || IsSameOrInside(pFolder, text, delimiter)) return true;
  return IsSameOrInside(pFolder, FolderOfPath(text, delimiter), delimiter) &&
         FileNameOfPath(pFolder, delimiter) == FileNameOfPath(text, delimiter);
}

std::u16string TExactPattern::ToExpression() const {
  const bool isExclude = GetPatternType() == TPatternType::ptyExclude;
  return ExpressionKeyword() + (isExclude ? u"!=" : u"=") + Quoted(GetPattern());
}

}  // namespace Vantrel::PatternMatching

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
  const std::u16string& text = GetPattern();
  if (text.find_first_of(u"*?") == std::u16string::npos)
    return ExpressionKeyword() + (isExclude ? u"!=" : u"=") + Quoted(text);
  // In a query these two are wildcards, even in quotes. A regular expression takes them as they are.
  std::u16string expression = u"(?i)^";
  for (const char16_t unit : text) {
    if (std::u16string_view(u"\\^$.[]|()?*+{}").find(unit) != std::u16string_view::npos) expression += u'\\';
    expression += unit;
  }
  return ExpressionKeyword() + (isExclude ? u"!~" : u"~") + Quoted(expression + u"$");
}

}  // namespace Vantrel::PatternMatching

#include "search/ExactPattern.h"

#include "platform/Paths.h"
#include "platform/Text.h"

namespace Kiv::PatternMatching {

std::u16string Quoted(std::u16string_view pText) {
  std::u16string quoted = u"\"";
  for (char16_t unit : pText) quoted.append(unit == u'"' ? 2 : 1, unit);
  return quoted + u'"';
}

std::u16string Unquoted(std::u16string_view pText) {
  if (!pText.starts_with(u'"')) return std::u16string(pText);
  pText.remove_prefix(1);
  if (pText.ends_with(u'"')) pText.remove_suffix(1);
  std::u16string unquoted;
  for (size_t i = 0; i < pText.size(); ++i) {
    unquoted += pText[i];
    if (pText.substr(i, 2) == u"\"\"") ++i;
  }
  return unquoted;
}

bool TExactPattern::MatchesText(TMatchText& pText) {
  const std::u16string_view text = pText.Text();
  return SameTextAscii(text, GetPattern()) ||
         (HasTrailingDelimiter(text) && SameTextAscii(text.substr(0, text.size() - 1), GetPattern()));
}

bool TExactPattern::MayLieBeneath(std::u16string_view pFolder) const {
  const char16_t delimiter = PathDelimiter();
  const std::u16string text = FoldedText(GetPattern());
  if (IsSameOrInside(text, pFolder, delimiter)) return true;  // on the way to it
  if (pFolder.starts_with(text) || IsSameOrInside(pFolder, text, delimiter)) return true;
  return IsSameOrInside(pFolder, FolderOfPath(text, delimiter), delimiter) &&
         FileNameOfPath(pFolder, delimiter) == FileNameOfPath(text, delimiter);
}

std::u16string TExactPattern::ToExpression() const {
  const bool isExclude = GetPatternType() == TPatternType::ptyExclude;
  return ExpressionKeyword() + (isExclude ? u"!=" : u"=") + Quoted(GetPattern());
}

}  // namespace Kiv::PatternMatching

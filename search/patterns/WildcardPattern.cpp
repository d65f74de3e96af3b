#include "search/patterns/WildcardPattern.h"

#include <algorithm>

#include "platform/files/Paths.h"
#include "platform/system/Environment.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "platform/text/WildcardMatch.h"
#include "search/patterns/PatternTargets.h"

namespace Vantrel::PatternMatching {

namespace {

bool IsBlank(std::u16string_view pText) {
  return std::all_of(pText.begin(), pText.end(), [](char16_t pUnit) { return pUnit <= u' '; });
}

// Replaces "%DATE%", in any letter case, wherever it stands.
std::u16string WithDate(std::u16string pText) {
  constexpr std::u16string_view kPlaceholder = u"%DATE%";
  for (size_t at = 0; at + kPlaceholder.size() <= pText.size(); ++at) {
    if (!SameTextAscii(std::u16string_view(pText).substr(at, kPlaceholder.size()), kPlaceholder)) continue;
    const std::u16string date = CurrentDateText();
    pText.replace(at, kPlaceholder.size(), date);
    at += date.size() - 1;
  }
  return pText;
}

// Calls the function for every non-empty mask of a list, until a call returns true. Returns whether one did.
template <class TCall>
bool AnyMask(std::u16string_view pMasks, const TCall& pCall) {
  while (!pMasks.empty()) {
    const size_t end = std::min(pMasks.find(u';'), pMasks.size());
    if (end > 0 && pCall(pMasks.substr(0, end))) return true;
    pMasks.remove_prefix(std::min(end + 1, pMasks.size()));
  }
  return false;
}

// Removes leading blanks of masks, which do not count when names without a dot are matched.
std::u16string WithoutLeadingBlanks(std::u16string_view pMasks) {
  std::u16string masks;
  for (char16_t unit : pMasks)
    if (unit != u' ' || (!masks.empty() && masks.back() != u';')) masks += unit;
  // "*.*" alone matches more than "*.*" in a list, and " *.*" does not.
  return masks == u"*.*" && masks != pMasks ? masks + u";" : masks;
}

// Gives lists that match alike an equal form. An empty part after the last ";" is not a mask, so a final ";" changes
// nothing.
std::u16string Canonical(std::u16string pMasks) {
  // "*.*" matches more alone than in a list.
  if (pMasks != u"*.*" && !pMasks.ends_with(u';')) pMasks += u';';
  return pMasks;
}

}  // namespace

bool CanMatchSomethingBeginningWith(std::u16string_view pMask, std::u16string_view pBeginning) {
  // If a place in the mask can be reached, some text matches the rest of the mask. After a "*" every place can be
  // reached, since "*" takes in the rest of the beginning. So only the part before the first "*" is compared.
  for (size_t i = 0; i < pBeginning.size(); ++i) {
    if (i == pMask.size()) return false;
    if (pMask[i] == u'*') return true;
    if (pMask[i] != u'?' && pMask[i] != pBeginning[i]) return false;
  }
  return true;
}

TWildcardPattern::TWildcardPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType,
                                   char16_t pPathDelimiter)
    : TCustomPattern(pText, pTarget, pType, pPathDelimiter) {
  TWildcardPattern::Prepare();
}

bool TWildcardPattern::IsNoExtensionForm() const {
  return std::u16string_view(GetPattern()).ends_with(u"*.");
}

bool TWildcardPattern::MatchesAll() const {
  return GetPatternType() == TPatternType::ptyInclude && GetPattern() == u"*";
}

// A text without wildcards is searched for anywhere. A whole path is searched for only at the beginning of paths. It
// occurs nowhere else, except with slashes: "/data" would also be found in "/old/data".
std::u16string TWildcardPattern::Widened(std::u16string_view pText) const {
  std::u16string text(pText);
  if (IsBlank(text)) return u"*" + text + u"*";
  if (HasWildcards(text)) return text;
  const bool isWholePath = GetTarget() == FullPathTarget() && IsRootedPath(text, PathDelimiter());
  if (!isWholePath && !text.starts_with(u';')) text.insert(0, u"*");
  if (!text.ends_with(u';')) text += u'*';
  return text;
}

std::u16string TWildcardPattern::ShownText() const {
  if (IsNoExtensionForm()) return GetPattern();
  return Widened(Unquoted(GetPattern()));
}

void TWildcardPattern::Prepare() {
  if (IsNoExtensionForm()) {
    UseMasks(WithoutLeadingBlanks(GetPattern().substr(0, GetPattern().size() - 1)));
    fMatchText = GetPattern();
    fFoldedMatchText = FoldedPattern();
    fNoExtension = true;
    return;
  }
  std::u16string text = Unquoted(GetPattern());
  if (IsBlank(text)) text = u"*" + text + u"*";
  if (GetTarget() != FullPathTarget()) text = ExpandEnvironment(WithDate(std::move(text)));
  UseMasks(Widened(text));
}

void TWildcardPattern::UseMasks(std::u16string_view pMasks) {
  fNoExtension = false;
  fMatchText = pMasks;
  fFoldedMatchText = TMatchText(fMatchText).Folded();
  fMatcher = CreateWildcardMatcher(fMatchText);
}

bool TWildcardPattern::MatchesText(TMatchText& pText) {
  if (fNoExtension) return MatchesNoExtension(pText);
  if (fMatcher->Matches(pText)) return true;
  if (!HasTrailingDelimiter(pText.Text())) return false;
  TMatchText shorter(pText.Text().substr(0, pText.Text().size() - 1));
  return fMatcher->Matches(shorter);
}

bool TWildcardPattern::MatchesNoExtension(TMatchText& pText) const {
  const std::u16string_view text = pText.Text();
  // Most texts do not match, and then no search for dots is needed.
  const bool mayHaveDelimiter = (pText.Units() & UnitsOf(std::u16string(1, PathDelimiter()))) != 0;
  const size_t delimiter = mayHaveDelimiter ? text.rfind(PathDelimiter()) : std::u16string_view::npos;
  if (delimiter == std::u16string_view::npos)
    return fMatcher->Matches(pText) && text.find(u'.') == std::u16string_view::npos;
  if (text.find(u'.') == std::u16string_view::npos) return fMatcher->Matches(pText);
  if (GetTarget() == FullPathTarget() && !fMatcher->Matches(pText)) return false;
  const std::u16string_view name = text.substr(delimiter + 1);
  return !name.empty() && name.find(u'.') == std::u16string_view::npos;
}

bool TWildcardPattern::SameMatches(const TCustomPattern& pOther) const {
  const auto& other = static_cast<const TWildcardPattern&>(pOther);
  return IsNoExtensionForm() == other.IsNoExtensionForm() && Canonical(ShownText()) == Canonical(other.ShownText());
}

// --- walks ---------------------------------------------------------------------------------------------------------

bool TWildcardPattern::MayLieBeneath(std::u16string_view pFolder) const {
  std::u16string_view text = FoldedPattern();
  if (fNoExtension) text.remove_suffix(1);
  if (AnyMask(text, [&](std::u16string_view pMask) { return AlternativeMayLieBeneath(pMask, pFolder); })) return true;
  const std::u16string beginning = std::u16string(pFolder) + PathDelimiter();
  return AnyMask(fFoldedMatchText,
                 [&](std::u16string_view pMask) { return CanMatchSomethingBeginningWith(pMask, beginning); });
}

bool TWildcardPattern::AlternativeMayLieBeneath(std::u16string_view pText, std::u16string_view pFolder) const {
  const char16_t delimiter = PathDelimiter();
  if (!IsRootedPath(pText, delimiter) || IsSameOrInside(pFolder, pText, delimiter)) return true;
  // In a list that holds wildcards, a mask without them is matched exactly, so "/a" does not lead to "/ab".
  const size_t star = pText.find(u'*');
  if ((star != std::u16string_view::npos || !HasWildcards(FoldedPattern())) &&
      pFolder.starts_with(pText.substr(0, star)))
    return true;
  if (IsSameOrInside(pFolder, FolderOfPath(pText, delimiter), delimiter) &&
      MatchesWildcardsStripped(FileNameOfPath(pFolder, delimiter), FileNameOfPath(pText, delimiter)))
    return true;
  // Takes as many parts of the pattern as the folder has.
  auto parts = std::count(pFolder.begin(), pFolder.end(), delimiter) + 1;
  size_t end = 0;
  for (; end < pText.size(); ++end)
    if (pText[end] == delimiter && --parts == 0) break;
  return MatchesWildcardsStripped(pFolder, pText.substr(0, end));
}

std::u16string TWildcardPattern::ToExpression() const {
  const bool isExclude = GetPatternType() == TPatternType::ptyExclude;
  std::u16string values;
  AnyMask(ShownText(), [&](std::u16string_view pMask) {
    values += (values.empty() ? u"" : u";") + ExpressionValue(pMask);
    return false;
  });
  return ExpressionKeyword() + (isExclude ? u"!=" : u"") + values;
}

}  // namespace Vantrel::PatternMatching

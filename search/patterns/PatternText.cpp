#include "search/patterns/PatternText.h"

#include "platform/text/Text.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/FileGroupPattern.h"
#include "search/patterns/PatternTargets.h"
#include "search/patterns/RegExPattern.h"
#include "search/patterns/WildcardPattern.h"

namespace Vantrel::PatternMatching {

namespace {

constexpr std::u16string_view kInactive = u"<||";
constexpr std::u16string_view kInclude = u"(+)";
constexpr std::u16string_view kExclude = u"(-)";
constexpr std::u16string_view kGroup = u"(Group)";

std::u16string_view Trimmed(std::u16string_view pText) {
  while (!pText.empty() && pText.front() <= u' ') pText.remove_prefix(1);
  while (!pText.empty() && pText.back() <= u' ') pText.remove_suffix(1);
  return pText;
}

// Takes a column such as "(Owner)" from the front, if patterns can be matched against it. Any other word in parentheses
// belongs to the body.
const TColumnInfo* TakeColumn(std::u16string_view& pText) {
  const size_t end = pText.find(u')');
  if (!pText.starts_with(u'(') || end == std::u16string_view::npos) return nullptr;
  const TColumnInfo* column = FindColumn(pText.substr(1, end - 1));
  if (column == nullptr) return nullptr;
  try {
    TargetOfColumn(column->fColumn);
  } catch (const EInvalidArgumentValue&) {
    return nullptr;
  }
  pText.remove_prefix(end + 1);
  return column;
}

// A body between slashes, with or without "i" after it.
struct TSlashes {
  bool fAreThere = false;
  bool fCaseSensitive = true;
  std::u16string_view fExpression;
};

TSlashes FindSlashes(std::u16string_view pBody) {
  const bool ignoresCase = pBody.ends_with(u"/i");
  const size_t closing = ignoresCase ? 2 : 1;
  if (!pBody.starts_with(u'/') || pBody.size() < 1 + closing || (!ignoresCase && !pBody.ends_with(u'/'))) return {};
  return {true, !ignoresCase, pBody.substr(1, pBody.size() - 1 - closing)};
}

void RefuseEmpty(std::u16string_view pText) {
  if (pText.empty()) throw EPatternError("The pattern is empty (argument \"pPattern\")");
}

TRef<IPattern> ParseBody(std::u16string_view pBody, const TColumnInfo* pColumn, TPatternType pType,
                         char16_t pDelimiter) {
  auto target = [&](std::u16string_view pText) {
    return pColumn ? pColumn->fKey : GuessPatternTarget(pText, pDelimiter);
  };
  if (const TSlashes slashes = FindSlashes(pBody); slashes.fAreThere) {
    RefuseEmpty(slashes.fExpression);
    return MakeRef<TRegExPattern>(slashes.fExpression, target(slashes.fExpression), pType, pDelimiter,
                                  slashes.fCaseSensitive);
  }
  if (pBody.starts_with(u'"')) {
    const std::u16string text = Unquoted(pBody);
    RefuseEmpty(text);
    return MakeRef<TExactPattern>(text, target(text), pType, pDelimiter);
  }
  RefuseEmpty(pBody);
  return MakeRef<TWildcardPattern>(pBody, target(pBody), pType, pDelimiter);
}

}  // namespace

bool TakePrefix(std::u16string_view& pText, std::u16string_view pPrefix) {
  if (!SameTextAscii(pText.substr(0, pPrefix.size()), pPrefix)) return false;
  pText.remove_prefix(pPrefix.size());
  return true;
}

TRef<IPattern> ParsePattern(std::u16string_view pPattern, TPatternType pDefaultType, char16_t pPathDelimiter) {
  std::u16string_view text = Trimmed(pPattern);
  RefuseEmpty(text);
  const bool inactive = TakePrefix(text, kInactive);
  TPatternType type = pDefaultType;
  if (TakePrefix(text, kInclude))
    type = TPatternType::ptyInclude;
  else if (TakePrefix(text, kExclude))
    type = TPatternType::ptyExclude;
  TRef<IPattern> pattern;
  if (TakePrefix(text, kGroup)) {
    RefuseEmpty(text);
    pattern = MakeRef<TFileGroupPattern>(text, type, pPathDelimiter);
  } else {
    const TColumnInfo* column = TakeColumn(text);
    pattern = ParseBody(text, column, type, pPathDelimiter);
  }
  pattern->SetActive(!inactive);
  return pattern;
}

std::u16string PatternToText(const IPattern& pPattern, TPatternTextPrefixes pPrefixes) {
  const auto& pattern = dynamic_cast<const TCustomPattern&>(pPattern);
  std::u16string prefix;
  if (pPrefixes.fInactive && !pattern.GetActive()) prefix += kInactive;
  if (pPrefixes.fType) prefix += pattern.GetPatternType() == TPatternType::ptyInclude ? kInclude : kExclude;
  const std::u16string body = pattern.ToString();
  if (dynamic_cast<const TFileGroupPattern*>(&pattern) != nullptr) return prefix + std::u16string(kGroup) + body;

  const TColumnInfo* column = ColumnOfTarget(pattern.GetTarget());
  const std::u16string named = column ? u"(" + std::u16string(column->fName) + u")" : std::u16string();
  // The plain form is used unless it would be read as another pattern. A mask may look like a prefix or an expression,
  // or have a blank at either end. The column may not be the one that the reader guesses. A column in front separates
  // the body from the prefixes. An empty mask at the end changes no match, but hides a slash or a blank.
  const std::u16string plain = prefix + body;
  for (const std::u16string& text : {plain, prefix + named + body, plain + u";", prefix + named + body + u";"}) {
    const TRef<IPattern> read = ParsePattern(text, pattern.GetPatternType(), pattern.PathDelimiter());
    if (!pPrefixes.fInactive) read->SetActive(pattern.GetActive());
    if (read->Equals(pattern)) return text;
  }
  return plain;
}

TRef<IPattern> CreateForXML(const TElementAttributes& pAttributes, char16_t pPathDelimiter) {
  const std::u16string_view name = FindAttribute(pAttributes, u"Class");
  // The attributes give the real text and target.
  constexpr std::u16string_view kAny = u"*";
  constexpr TPatternType kType = TPatternType::ptyInclude;
  TRef<TCustomPattern> pattern;
  if (name == u"TWildcardPattern")
    pattern = MakeRef<TWildcardPattern>(kAny, NameTarget(), kType, pPathDelimiter);
  else if (name == u"TRegExPattern")
    pattern = MakeRef<TRegExPattern>(kAny, NameTarget(), kType, pPathDelimiter, true);
  else if (name == u"TExactPattern")
    pattern = MakeRef<TExactPattern>(kAny, NameTarget(), kType, pPathDelimiter);
  else if (name == u"TFileGroupPattern")
    pattern = MakeRef<TFileGroupPattern>(kAny, kType, pPathDelimiter);
  else
    throw EInvalidArgumentValue("Class " + ToQuotedDisplay(name) + " is no knonw class derived by TCustomPattern.");
  pattern->ReadFromXML(pAttributes);
  return pattern;
}

}  // namespace Vantrel::PatternMatching

#include "search/query/TextTest.h"

#include <algorithm>

#include "platform/text/Normalization.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "search/patterns/PatternTargets.h"
#include "search/query/Expressions.h"

namespace Vantrel::Search {

using PatternMatching::TMatchText;
using PatternMatching::TPatternType;
using PatternMatching::TRegExPattern;

namespace {

// Stands for a ";" of the value, which wildcard masks could not hold.
constexpr char16_t kSemicolon = u'\uFFFF';

bool Is(TStringOperatorOptions pOptions, TStringOperatorOption pOption) {
  return (pOptions & static_cast<uint8_t>(pOption)) != 0;
}

bool IsAscii(std::u16string_view pText) {
  return std::all_of(pText.begin(), pText.end(), [](char16_t pUnit) { return pUnit < 0x80; });
}

bool IsWordUnit(char16_t pUnit) {
  return pUnit >= 0x80 || pUnit == u'_' || (pUnit >= u'0' && pUnit <= u'9') ||
         (FoldAscii(pUnit) >= u'a' && FoldAscii(pUnit) <= u'z');
}

bool IsWholeWord(std::u16string_view pText, size_t pBegin, size_t pLength) {
  const size_t end = pBegin + pLength;
  return (pBegin == 0 || !IsWordUnit(pText[pBegin - 1])) && (end == pText.size() || !IsWordUnit(pText[end]));
}

}  // namespace

// --- plain texts -----------------------------------------------------------------------------------------------------

bool TAsciiText::Fits(std::u16string_view pText) {
  return IsAscii(pText);
}

TAsciiText::TAsciiText(std::u16string_view pText) {
  for (const char16_t unit : pText) {
    const bool isLetter = FoldAscii(unit) >= u'a' && FoldAscii(unit) <= u'z';
    fCaseBits += isLetter ? u'\x20' : u'\0';
    fLower += FoldAscii(unit);
  }
}

// Most texts do not hold it, and comparing the first and the last unit at all places shows that. The loop over a
// stretch has a fixed length and no early exit, so the compiler compares eight units at a time.
size_t TAsciiText::FindIn(std::u16string_view pText, size_t pFrom) const {
  constexpr size_t kStretch = 16;
  if (fLower.empty()) return pFrom;
  if (pText.size() < fLower.size()) return kNone;
  const size_t last = fLower.size() - 1;
  const size_t places = pText.size() - last;
  const char16_t* const begins = pText.data();
  const char16_t* const ends = begins + last;
  const char16_t firstUnit = fLower.front(), firstBit = fCaseBits.front();
  const char16_t lastUnit = fLower.back(), lastBit = fCaseBits.back();
  const auto mayBeAt = [&](size_t pPlace) {
    return ((begins[pPlace] | firstBit) == firstUnit) & ((ends[pPlace] | lastBit) == lastUnit);
  };
  for (size_t at = pFrom; at < places;) {
    const size_t end = std::min(at + kStretch, places);
    if (end - at == kStretch) {
      uint16_t found = 0;
      for (size_t i = 0; i < kStretch; ++i) found |= static_cast<uint16_t>(mayBeAt(at + i));
      if (found == 0) at = end;
    }
    for (; at < end; ++at)
      if (mayBeAt(at) && IsAt(begins + at)) return at;
  }
  return kNone;
}

struct TTextTest::TPlainParts {
  TAsciiText fBegin, fMiddle, fEnd;
  bool fIsOpen;  // false: the text must equal fBegin
};

void TTextTest::PreparePlain() {
  if (fOptions != 0 || fNormalizes || !TAsciiText::Fits(fValue)) return;
  const std::u16string_view value = fValue;
  const auto use = [&](std::u16string_view pBegin, std::u16string_view pMiddle, std::u16string_view pEnd,
                       bool pIsOpen) {
    fPlain.reset(new TPlainParts{TAsciiText(pBegin), TAsciiText(pMiddle), TAsciiText(pEnd), pIsOpen});
  };
  switch (fPositive) {
    case TStringOperator::Equals:
      return use(value, {}, {}, false);
    case TStringOperator::StartsWith:
      return use(value, {}, {}, true);
    case TStringOperator::Contains:
      return use({}, value, {}, true);
    case TStringOperator::EndsWith:
      return use({}, {}, value, true);
    case TStringOperator::Matches:
      break;
    default:
      return;
  }
  // "*.*" matches every name, and no mask at all matches none.
  if (value.empty() || value.find_first_of(u"?;") != kNone || value == u"*.*") return;
  std::u16string fixed = fFoldedValue;
  std::erase(fixed, u'*');
  fUnits = PatternMatching::UnitsOf(fixed);
  const size_t first = value.find(u'*'), last = value.rfind(u'*');
  if (first == kNone) return use(value, {}, {}, false);
  std::u16string_view middle = value.substr(first, last + 1 - first);
  const size_t begin = middle.find_first_not_of(u'*');
  middle = begin == kNone ? std::u16string_view() : middle.substr(begin, middle.find_last_not_of(u'*') + 1 - begin);
  if (middle.find(u'*') == kNone) use(value.substr(0, first), middle, value.substr(last + 1), true);
}

bool TTextTest::MatchesPlain(std::u16string_view pText) const {
  const TPlainParts& parts = *fPlain;
  bool found = false;
  if (!parts.fIsOpen) {
    found = parts.fBegin.Equals(pText);
  } else if (pText.size() >= parts.fBegin.Length() + parts.fMiddle.Length() + parts.fEnd.Length()) {
    found = parts.fBegin.Begins(pText) && parts.fEnd.Ends(pText);
    if (found && parts.fMiddle.Length() > 0) {
      pText.remove_prefix(parts.fBegin.Length());
      pText.remove_suffix(parts.fEnd.Length());
      found = parts.fMiddle.IsIn(pText);
    }
  }
  return found != IsNegated(fOperator);
}

// The longest part is the rarest one.
const TAsciiText* TTextTest::FixedPart() const {
  const TAsciiText* longest = &fPlain->fBegin;
  for (const TAsciiText* part : {&fPlain->fMiddle, &fPlain->fEnd})
    if (part->Length() > longest->Length()) longest = part;
  return longest->Length() > 0 ? longest : nullptr;
}

// --- all texts -------------------------------------------------------------------------------------------------------

TTextTest::TTextTest(TStringOperator pOperator, std::u16string_view pValue, TStringOperatorOptions pOptions,
                     bool pNormalizes)
    : fOperator(pOperator),
      fPositive(IsNegated(pOperator) ? Negated(pOperator) : pOperator),
      fOptions(pOptions),
      fNormalizes(pNormalizes),
      fValue(pValue),
      fFoldedValue(TMatchText(pValue).Folded()) {
  Prepare();
}

void TTextTest::Prepare() {
  if (fPositive == TStringOperator::MatchesRegEx) {
    // A pattern must not be empty. Both expressions match every text.
    fRegEx = MakeRef<TRegExPattern>(fValue.empty() ? u"^" : std::u16string_view(fValue), PatternMatching::NameTarget(),
                                    TPatternType::ptyInclude, u'/', true);
    return;
  }
  if (fPositive == TStringOperator::Matches) {
    std::u16string mask = fValue;
    fHasSemicolon = mask.find(u';') != kNone;
    std::replace(mask.begin(), mask.end(), u';', kSemicolon);
    fWildcards = PatternMatching::CreateWildcardMatcher(mask);
  } else {
    fUnits = PatternMatching::UnitsOf(fFoldedValue);
  }
  PreparePlain();
}

bool TTextTest::Matches(std::u16string_view pText) const {
  TMatchText text(pText);
  return Matches(text);
}

bool TTextTest::Matches(TMatchText& pText) const {
  if (fNormalizes && !IsAscii(pText.Text())) {
    const std::u16string normalized = NormalizedFormD(pText.Text());
    TMatchText text(normalized);
    return Found(text) != IsNegated(fOperator);
  }
  return Found(pText) != IsNegated(fOperator);
}

bool TTextTest::Found(TMatchText& pText) const {
  if (fRegEx) return fRegEx->MatchesString(pText.Text());
  if (fWildcards) return MatchesWildcards(pText);
  if (Is(fOptions, TStringOperatorOption::CaseSensitive)) return FoundIn(pText.Text(), fValue);
  return (fUnits & ~pText.Units()) == 0 && FoundIn(pText.Folded(), fFoldedValue);
}

bool TTextTest::MatchesWildcards(TMatchText& pText) const {
  if (!fHasSemicolon) return fWildcards->Matches(pText);
  std::u16string text(pText.Text());
  std::replace(text.begin(), text.end(), u';', kSemicolon);
  TMatchText replaced(text);
  return fWildcards->Matches(replaced);
}

bool TTextTest::FoundIn(std::u16string_view pText, std::u16string_view pValue) const {
  switch (fPositive) {
    case TStringOperator::Equals:
      return pText == pValue;
    case TStringOperator::StartsWith:
      return pText.starts_with(pValue);
    case TStringOperator::EndsWith:
      return pText.ends_with(pValue);
    default:
      break;
  }
  if (!Is(fOptions, TStringOperatorOption::WholeWord)) return pText.find(pValue) != kNone;
  for (size_t at = pText.find(pValue); at != kNone; at = pText.find(pValue, at + 1))
    if (IsWholeWord(pText, at, pValue.size())) return true;
  return false;
}

int64_t TTextTest::Cost() const {
  if (fRegEx) return 60;
  return fPlain ? 5 : 20;
}

std::u16string TTextTest::ErrorText() const {
  return fRegEx ? fRegEx->GetErrorText() : std::u16string();
}

std::u16string TTextTest::Warning() const {
  return fRegEx ? fRegEx->GetWarning() : std::u16string();
}

// --- writing ---------------------------------------------------------------------------------------------------------

void TTextTest::AppendOperator(std::u16string& pText) const {
  switch (fOperator) {
    case TStringOperator::Equals:
      pText += u"=";
      return;
    case TStringOperator::MatchesRegEx:
      pText += u"~";
      return;
    case TStringOperator::NotMatchesRegEx:
      pText += u"!~";
      return;
    default:
      if (IsNegated(fOperator)) pText += u"!=";
  }
}

// The language has no signs of its own for the beginning and the end of a text: wildcards say it.
void TTextTest::AppendValue(std::u16string& pText) const {
  std::u16string value = fValue;
  const bool isNotContains = fOperator == TStringOperator::NotContains;
  if (isNotContains || fPositive == TStringOperator::EndsWith) value.insert(0, u"*");
  if (isNotContains || fPositive == TStringOperator::StartsWith) value += u'*';
  AppendQueryValue(pText, value);
}

void AppendQueryValue(std::u16string& pText, std::u16string_view pValue) {
  const bool isPlain = !pValue.empty() && pValue.find_first_of(u" ,;()") == kNone &&
                       std::u16string_view(u"\"=!<>~").find(pValue.front()) == kNone;
  if (isPlain)
    pText += pValue;
  else
    pText += PatternMatching::Quoted(pValue);
}

}  // namespace Vantrel::Search

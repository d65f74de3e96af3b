#include "search/RegExPattern.h"

#include <fmt/format.h>

#include "platform/Text.h"

namespace Kiv::PatternMatching {

namespace {

constexpr std::u16string_view kCaseSensitiveAttribute = u"CaseSensitive";

}  // namespace

TRegularExpression& TRegExPattern::Compiled(TSlot& pSlot) const {
  if (!pSlot.fExpression) pSlot.fExpression = std::make_unique<TRegularExpression>(GetPattern(), fCaseSensitive);
  return *pSlot.fExpression;
}

bool TRegExPattern::MatchesText(TMatchText& pText) {
  for (TSlot& slot : fSlots) {
    if (!slot.fLock.TryEnter()) continue;
    const bool matches = Compiled(slot).Matches(pText.Text());
    slot.fLock.Leave();
    return matches;
  }
  TSlot& last = fSlots.back();  // more threads than anybody has: they take turns
  TCriticalSectionLock lock(last.fLock);
  return Compiled(last).Matches(pText.Text());
}

void TRegExPattern::Prepare() {
  for (TSlot& slot : fSlots) {
    TCriticalSectionLock lock(slot.fLock);
    slot.fExpression = nullptr;
  }
}

bool TRegExPattern::SameMatches(const TCustomPattern& pOther) const {
  return pOther.GetPattern() == GetPattern() &&
         static_cast<const TRegExPattern&>(pOther).fCaseSensitive == fCaseSensitive;
}

std::u16string TRegExPattern::GetErrorText() const {
  TCriticalSectionLock lock(fSlots[0].fLock);
  return FromUtf8(Compiled(fSlots[0]).ErrorText());
}

std::u16string TRegExPattern::GetWarning() const {
  int64_t givenUp = 0;
  bool isOff = false;
  for (TSlot& slot : fSlots) {
    TCriticalSectionLock lock(slot.fLock);
    if (!slot.fExpression) continue;
    givenUp += slot.fExpression->GivenUp();
    isOff = isOff || slot.fExpression->GivenUp() >= TRegularExpression::kMostGivenUp;
  }
  if (givenUp == 0) return {};
  return ToString() + FromUtf8(fmt::format(" takes too many steps on {} {}, which {} as not matching{}", givenUp,
                                           givenUp == 1 ? "text" : "texts", givenUp == 1 ? "counts" : "count",
                                           isOff ? "; after so many it was not tried on any other" : ""));
}

void TRegExPattern::WriteMore(TElementAttributes& pAttributes) const {
  pAttributes.emplace_back(kCaseSensitiveAttribute, BooleanText(fCaseSensitive));
}

void TRegExPattern::ReadMore(const TElementAttributes& pAttributes) {
  fCaseSensitive = BooleanOf(FindAttribute(pAttributes, kCaseSensitiveAttribute));
}

void TRegExPattern::AssignMore(const TCustomPattern& pSource) {
  fCaseSensitive = static_cast<const TRegExPattern&>(pSource).fCaseSensitive;
}

std::u16string TRegExPattern::ToExpression() const {
  const bool isExclude = GetPatternType() == TPatternType::ptyExclude;
  const std::u16string expression = fCaseSensitive ? GetPattern() : u"(?i)" + GetPattern();
  return ExpressionKeyword() + (isExclude ? u"!~" : u"~") + ExpressionValue(expression);
}

}  // namespace Kiv::PatternMatching

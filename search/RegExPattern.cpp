#include "search/RegExPattern.h"

#include <fmt/format.h>

#include "platform/Text.h"

namespace Kiv::PatternMatching {

namespace {

constexpr std::u16string_view kCaseSensitiveAttribute = u"CaseSensitive";

}  // namespace

TRegularExpression& TRegExPattern::Compiled() const {
  if (!fExpression) fExpression = std::make_unique<TRegularExpression>(GetPattern(), fCaseSensitive);
  return *fExpression;
}

bool TRegExPattern::MatchesText(TMatchText& pText) {
  TCriticalSectionLock lock(fLock);
  return Compiled().Matches(pText.Text());
}

void TRegExPattern::Prepare() {
  TCriticalSectionLock lock(fLock);
  fExpression = nullptr;
}

bool TRegExPattern::SameMatches(const TCustomPattern& pOther) const {
  return pOther.GetPattern() == GetPattern() &&
         static_cast<const TRegExPattern&>(pOther).fCaseSensitive == fCaseSensitive;
}

std::u16string TRegExPattern::GetErrorText() const {
  TCriticalSectionLock lock(fLock);
  return FromUtf8(Compiled().ErrorText());
}

std::u16string TRegExPattern::GetWarning() const {
  TCriticalSectionLock lock(fLock);
  const int64_t givenUp = fExpression ? fExpression->GivenUp() : 0;
  if (givenUp == 0) return {};
  const bool isOff = givenUp >= TRegularExpression::kMostGivenUp;
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

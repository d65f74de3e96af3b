#include "search/patterns/RegExPattern.h"

#include <fmt/format.h>

#include <thread>

#include "platform/text/Text.h"

namespace Vantrel::PatternMatching {

namespace {

constexpr std::u16string_view kCaseSensitiveAttribute = u"CaseSensitive";

// A small number that identifies a thread that matches.
size_t NumberOfThread() {
  static std::atomic<size_t> threads{0};
  static constinit thread_local size_t number = 0;  // 0 means none yet
  if (number == 0) number = threads.fetch_add(1, std::memory_order_relaxed) + 1;
  return number;
}

}  // namespace

// Holds a slot in use for a scope.
class TRegExPattern::TSlotInUse {
 public:
  // Takes this slot, waiting until it is free.
  explicit TSlotInUse(TSlot& pSlot) : fSlot(pSlot) {
    while (!TryTake(fSlot)) std::this_thread::yield();
  }
  // Takes any slot, and the calling thread's own if it is free. If there are more threads than slots, they take turns.
  explicit TSlotInUse(const TRegExPattern& pPattern) : fSlot(AnyOf(pPattern)) {}
  ~TSlotInUse() { fSlot.fInUse.store(false, std::memory_order_release); }
  TSlotInUse(const TSlotInUse&) = delete;
  TSlotInUse& operator=(const TSlotInUse&) = delete;

  TRegularExpression& Compiled(const TRegExPattern& pPattern) {
    if (!fSlot.fExpression)
      fSlot.fExpression = std::make_unique<TRegularExpression>(pPattern.GetPattern(), pPattern.fCaseSensitive);
    return *fSlot.fExpression;
  }
  std::unique_ptr<TRegularExpression>& Expression() { return fSlot.fExpression; }

 private:
  static bool TryTake(TSlot& pSlot) { return !pSlot.fInUse.exchange(true, std::memory_order_acquire); }
  static TSlot& AnyOf(const TRegExPattern& pPattern) {
    for (size_t i = NumberOfThread();; ++i) {
      TSlot& slot = pPattern.fSlots[i % kSlots];
      if (TryTake(slot)) return slot;
      if (i % kSlots == 0) std::this_thread::yield();
    }
  }

  TSlot& fSlot;
};

bool TRegExPattern::MatchesText(TMatchText& pText) {
  return TSlotInUse(*this).Compiled(*this).Matches(pText.Text());
}

void TRegExPattern::Prepare() {
  for (TSlot& slot : fSlots) TSlotInUse(slot).Expression() = nullptr;
}

bool TRegExPattern::SameMatches(const TCustomPattern& pOther) const {
  return pOther.GetPattern() == GetPattern() &&
         static_cast<const TRegExPattern&>(pOther).fCaseSensitive == fCaseSensitive;
}

std::u16string TRegExPattern::GetErrorText() const {
  return FromUtf8(TSlotInUse(*this).Compiled(*this).ErrorText());
}

std::u16string TRegExPattern::GetWarning() const {
  int64_t givenUp = 0;
  bool isOff = false;
  for (TSlot& slot : fSlots) {
    TSlotInUse inUse(slot);
    if (!inUse.Expression()) continue;
    givenUp += inUse.Expression()->GivenUp();
    isOff = isOff || inUse.Expression()->GivenUp() >= TRegularExpression::kMostGivenUp;
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

}  // namespace Vantrel::PatternMatching

#pragma once

// A pattern that is a regular expression.

#include <array>
#include <atomic>
#include <memory>

#include "search/patterns/CustomPattern.h"
#include "search/patterns/RegularExpression.h"

namespace Vantrel::PatternMatching {

// A regular expression that must match somewhere in the value. It is compiled on first use. An invalid expression
// matches nothing.
class TRegExPattern : public TCustomPattern {
 public:
  TRegExPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType, char16_t pPathDelimiter,
                bool pCaseSensitive)
      : TCustomPattern(pText, pTarget, pType, pPathDelimiter), fCaseSensitive(pCaseSensitive) {}

  // Part of a path does not tell what an expression could match.
  bool FullPathCanBeReached(std::u16string_view) const override { return true; }
  TPatternClass PatternClass() const override { return TPatternClass::pcRegEx; }
  std::u16string ToString() const override { return u"/" + GetPattern() + (fCaseSensitive ? u"/" : u"/i"); }
  std::u16string ToExpression() const override;
  std::u16string_view ClassName() const override { return u"TRegExPattern"; }
  std::u16string GetErrorText() const override;
  std::u16string GetWarning() const override;
  bool GetCaseSensitive() const { return fCaseSensitive; }

 protected:
  bool MatchesText(TMatchText& pText) override;
  void Prepare() override;
  bool SameMatches(const TCustomPattern& pOther) const override;
  bool MayLieBeneath(std::u16string_view) const override { return true; }
  void WriteMore(TElementAttributes& pAttributes) const override;
  void ReadMore(const TElementAttributes& pAttributes) override;
  void AssignMore(const TCustomPattern& pSource) override;

 private:
  // A compiled expression has a work space that only one match at a time can use. So each thread has its own slot, as
  // long as there are enough. It takes another slot if its own is in use, since waiting for a lock is a system call.
  // Even moving a slot between processors takes longer than most matches.
  struct alignas(64) TSlot {
    std::atomic<bool> fInUse{false};
    std::unique_ptr<TRegularExpression> fExpression;  // compiled on first use, by the thread that has the slot in use
  };
  static constexpr size_t kSlots = 16;
  class TSlotInUse;

  bool fCaseSensitive;
  mutable std::array<TSlot, kSlots> fSlots;
};

}  // namespace Vantrel::PatternMatching

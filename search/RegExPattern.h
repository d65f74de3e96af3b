#pragma once

#include <memory>

#include "platform/CriticalSection.h"
#include "search/CustomPattern.h"
#include "search/RegularExpression.h"

namespace Kiv::PatternMatching {

// A regular expression that must match somewhere in the value. Compiled on first use; an invalid one matches nothing.
class TRegExPattern : public TCustomPattern {
 public:
  TRegExPattern(std::u16string_view pText, const TPatternTarget& pTarget, TPatternType pType, char16_t pPathDelimiter,
                bool pCaseSensitive)
      : TCustomPattern(pText, pTarget, pType, pPathDelimiter), fCaseSensitive(pCaseSensitive) {}

  // What an expression could match cannot be told from a part of a path.
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
  TRegularExpression& Compiled() const REQUIRES(fLock);

  bool fCaseSensitive;
  // The compiled expression has work space of its own, which one match at a time can use.
  mutable TCriticalSection fLock;
  mutable std::unique_ptr<TRegularExpression> fExpression GUARDED_BY(fLock);
};

}  // namespace Kiv::PatternMatching

#pragma once

// The older kind of list, plain masks with check marks.

#include <string>
#include <string_view>
#include <vector>

namespace Vantrel::PatternMatching {

// The older kind of list: plain wildcard masks for names, each of which can be unchecked. Kept in settings as one
// string. One thread at a time.
class TCustomPatterns {
 public:
  static constexpr std::u16string_view kUncheckedPrefix = u"<||";
  static bool PatternIsUnchecked(std::u16string_view pPattern) { return pPattern.starts_with(kUncheckedPrefix); }

  virtual ~TCustomPatterns() = default;
  // The masks, joined with tab characters; empty ones are left out. An unchecked one begins with "<||".
  void AssignFromString(std::u16string_view pText);
  std::u16string ToString() const;
  void Assign(const TCustomPatterns& pSource);
  // The checked ones only.
  void AssignWithoutUnchecked(const TCustomPatterns& pSource);
  const std::vector<std::u16string>& Items() const { return fItems; }  // with their prefixes

 protected:
  virtual void Changed() {}

 private:
  std::vector<std::u16string> fItems;
};

class TPatterns : public TCustomPatterns {
 public:
  // Whether the name matches a checked mask, or everything is to match. The blanks that a mask begins with do not
  // count.
  bool Matches(std::u16string_view pName) const;
  // The first checked mask that matches; empty when none does.
  std::u16string GetMatchingPattern(std::u16string_view pName) const;
  bool GetMatchAll() const { return fMatchAll; }
  void SetMatchAll(bool pMatchAll) { fMatchAll = pMatchAll; }

 protected:
  void Changed() override;

 private:
  bool fMatchAll = false;
  std::u16string fJoined;  // the checked masks with ";" between
};

}  // namespace Vantrel::PatternMatching

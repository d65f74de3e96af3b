#pragma once

// The older kind of list: plain masks with check marks.

#include <string>
#include <string_view>
#include <vector>

namespace Vantrel::PatternMatching {

// The older kind of list. It holds plain wildcard masks for names, and each can be unchecked. Settings store it as one
// string. One thread at a time.
class TCustomPatterns {
 public:
  static constexpr std::u16string_view kUncheckedPrefix = u"<||";
  static bool PatternIsUnchecked(std::u16string_view pPattern) { return pPattern.starts_with(kUncheckedPrefix); }

  virtual ~TCustomPatterns() = default;
  // pText holds the masks, joined with tab characters. Empty masks are skipped. An unchecked mask begins with "<
  //
  // ".
  void AssignFromString(std::u16string_view pText);
  std::u16string ToString() const;
  void Assign(const TCustomPatterns& pSource);
  // Takes over only the checked masks.
  void AssignWithoutUnchecked(const TCustomPatterns& pSource);
  const std::vector<std::u16string>& Items() const { return fItems; }  // with their prefixes

 protected:
  virtual void Changed() {}

 private:
  std::vector<std::u16string> fItems;
};

class TPatterns : public TCustomPatterns {
 public:
  // Whether the name matches a checked mask, or all names match. Leading blanks of a mask do not count.
  bool Matches(std::u16string_view pName) const;
  // The first checked mask that matches, or an empty text.
  std::u16string GetMatchingPattern(std::u16string_view pName) const;
  bool GetMatchAll() const { return fMatchAll; }
  void SetMatchAll(bool pMatchAll) { fMatchAll = pMatchAll; }

 protected:
  void Changed() override;

 private:
  bool fMatchAll = false;
  std::u16string fJoined;  // the checked masks, joined with ";"
};

}  // namespace Vantrel::PatternMatching

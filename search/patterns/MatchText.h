#pragma once

// A text that many patterns are matched against, folded once.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel::PatternMatching {

// Which units a text has, by their last six bits. A text that lacks a unit of a mask's fixed parts cannot match it, and
// most texts of a scan lack one: the set says so without a look at the text. Of capitals, digits and signs, which is
// what folded names are made of, no two share a bit.
using TUnitSet = uint64_t;
inline TUnitSet UnitsOf(std::u16string_view pText) {
  TUnitSet units = 0;
  for (const char16_t unit : pText) units |= TUnitSet{1} << (unit & 63);
  return units;
}

// A text that many patterns are matched against. What letter case hides is taken away once, on first use, so that ten
// patterns fold a name once. Keeps its memory from text to text. One thread.
class TMatchText {
 public:
  TMatchText() = default;
  explicit TMatchText(std::u16string_view pText) : fText(pText) {}

  // The text must stay where it is until the next one is set.
  void Set(std::u16string_view pText) {
    fText = pText;
    fIsFolded = false;
  }
  // The same for a text that differs from the last one behind its first pBegin units only. The last one must have been
  // folded; what is new comes as folded text, pUnits is the sum of both parts' sets.
  void SetBehind(size_t pBegin, std::u16string_view pText, std::u16string_view pFoldedEnd, TUnitSet pUnits) {
    fText = pText;
    fFolded.resize(pBegin);
    fFolded += pFoldedEnd;
    fUnits = pUnits;
  }
  std::u16string_view Text() const { return fText; }
  // Every unit in upper case, as UpcaseUnit gives it; as long as the text.
  std::u16string_view Folded() {
    if (!fIsFolded) Fold();
    return fFolded;
  }
  // Of the folded text.
  TUnitSet Units() {
    if (!fIsFolded) Fold();
    return fUnits;
  }

 private:
  void Fold();

  std::u16string_view fText;
  std::u16string fFolded;
  TUnitSet fUnits = 0;
  bool fIsFolded = false;
};

}  // namespace Vantrel::PatternMatching

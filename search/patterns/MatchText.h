#pragma once

// A text that many patterns are matched against and that is folded once.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel::PatternMatching {

// The set of units in a text, by their last six bits. A text that lacks a unit of a mask's fixed parts cannot match the
// mask. Most texts of a scan lack one, so the set rejects them without reading the text. Folded names mostly hold
// capitals, digits and signs, and no two of these share a bit.
using TUnitSet = uint64_t;
inline TUnitSet UnitsOf(std::u16string_view pText) {
  TUnitSet units = 0;
  for (const char16_t unit : pText) units |= TUnitSet{1} << (unit & 63);
  return units;
}

// A text that many patterns are matched against. It is folded to one letter case on first use, so ten patterns fold a
// name once. The object keeps its memory from text to text. One thread.
class TMatchText {
 public:
  TMatchText() = default;
  explicit TMatchText(std::u16string_view pText) : fText(pText) {}

  // The caller keeps the text in place until the next one is set.
  void Set(std::u16string_view pText) {
    fText = pText;
    fIsFolded = false;
  }
  // Sets a text that shares its first pBegin units with the last one. The last text must have been folded. pFoldedEnd
  // is the new end in folded form, and pUnits is the union of both parts' sets.
  void SetBehind(size_t pBegin, std::u16string_view pText, std::u16string_view pFoldedEnd, TUnitSet pUnits) {
    fText = pText;
    fFolded.resize(pBegin);
    fFolded += pFoldedEnd;
    fUnits = pUnits;
  }
  std::u16string_view Text() const { return fText; }
  // The text with every unit in upper case, as by UpcaseUnit. It has the text's length.
  std::u16string_view Folded() {
    if (!fIsFolded) Fold();
    return fFolded;
  }
  // The units of the folded text.
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

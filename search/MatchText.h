#pragma once

#include <string>
#include <string_view>

namespace Kiv::PatternMatching {

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
  // The same for a text whose folded form is the two together.
  void Set(std::u16string_view pText, std::u16string_view pFoldedBegin, std::u16string_view pFoldedEnd) {
    fText = pText;
    (fFolded = pFoldedBegin) += pFoldedEnd;
    fIsFolded = true;
  }
  std::u16string_view Text() const { return fText; }
  // Every unit in upper case, as UpcaseUnit gives it; as long as the text.
  std::u16string_view Folded() {
    if (!fIsFolded) Fold();
    return fFolded;
  }

 private:
  void Fold();

  std::u16string_view fText;
  std::u16string fFolded;
  bool fIsFolded = false;
};

}  // namespace Kiv::PatternMatching

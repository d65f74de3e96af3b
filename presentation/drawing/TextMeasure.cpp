#include "presentation/drawing/TextMeasure.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::Drawing {

namespace {

// The advance of each character from blank to "~" in thousandths of the font size. Each is the largest of two
// widespread fonts, a wide one and one with the metrics that most systems share.
constexpr std::array<uint16_t, 95> kAdvances = {
    317, 400, 459, 837, 636, 950, 779, 274, 390, 390, 500, 837, 317, 360,  317, 336, 636, 636, 636,
    636, 636, 636, 636, 636, 636, 636, 336, 336, 837, 837, 837, 556, 1015, 684, 686, 722, 770, 666,
    610, 777, 751, 294, 500, 666, 557, 862, 748, 787, 666, 787, 722, 666,  610, 731, 684, 988, 685,
    666, 685, 390, 336, 390, 837, 556, 500, 612, 634, 549, 634, 615, 352,  634, 633, 277, 277, 579,
    277, 974, 633, 611, 634, 634, 411, 520, 392, 633, 591, 817, 591, 591,  524, 636, 336, 636, 837};

constexpr char16_t kEllipsis = u'\u2026';

// The character at the start of the text and its number of units. A lone surrogate counts as U+FFFD.
struct TCharacter {
  char32_t fCode;
  size_t fUnits;
};

TCharacter FirstOf(std::u16string_view pText) {
  const char16_t first = pText[0];
  if (IsLeadSurrogate(first) && pText.size() > 1 && IsTrailSurrogate(pText[1]))
    return {0x10000 + ((char32_t{first} & 0x3FF) << 10) + (char32_t{pText[1]} & 0x3FF), 2};
  if (IsLeadSurrogate(first) || IsTrailSurrogate(first)) return {0xFFFD, 1};
  return {first, 1};
}

// Whether a unit is of a script that runs from right to left. Of characters beyond U+FFFF the first unit tells.
bool RunsRightToLeft(char16_t pUnit) {
  return (pUnit >= 0x0590 && pUnit <= 0x08FF) || (pUnit >= 0xFB1D && pUnit <= 0xFDFF) ||
         (pUnit >= 0xFE70 && pUnit <= 0xFEFC) || pUnit == 0xD802 || pUnit == 0xD803 || pUnit == 0xD83A ||
         pUnit == 0xD83B;
}

// In thousandths of the font size.
int AdvanceOf(char32_t pCode) {
  constexpr int kLetter = 800;  // scripts whose letters are about as wide as Latin ones
  constexpr int kWide = 1060;   // ideographs, symbols, and all that is unknown
  if (pCode >= U' ' && pCode <= U'~') return kAdvances[pCode - U' '];
  if (CodePointWidth(pCode) == 0) return 0;
  return pCode < 0x0600 ? kLetter : kWide;
}

}  // namespace

double TEstimatedTextMeasure::Width(std::u16string_view pText, double pFontSize) const {
  int64_t thousandths = 0;
  while (!pText.empty()) {
    const TCharacter character = FirstOf(pText);
    thousandths += AdvanceOf(character.fCode);
    pText.remove_prefix(character.fUnits);
  }
  return static_cast<double>(thousandths) * pFontSize / 1000;
}

std::u16string ShownText(std::u16string_view pText) {
  return FromUtf8(ToDisplay(pText));
}

std::u16string NameAndFigure(std::u16string_view pName, std::u16string_view pFigure) {
  constexpr char16_t kLeftToRightMark = 0x200E;
  std::u16string text(pName);
  if (std::any_of(pName.begin(), pName.end(), RunsRightToLeft)) text += kLeftToRightMark;
  return text.append(u"  ").append(pFigure);
}

std::u16string FitText(std::u16string_view pText, double pFontSize, double pWidth, const ITextMeasure& pMeasure) {
  if (pMeasure.Width(pText, pFontSize) <= pWidth) return std::u16string(pText);
  // Where the text may be cut: before each character that is not a combining mark.
  std::vector<size_t> cuts;
  for (size_t at = 0; at < pText.size();) {
    const TCharacter character = FirstOf(pText.substr(at));
    if (at > 0 && CodePointWidth(character.fCode) > 0) cuts.push_back(at);
    at += character.fUnits;
  }
  // Halving: a name has 255 characters, and a picture has thousands of captions.
  auto shortened = [&](size_t pCut) { return std::u16string(pText.substr(0, pCut)) + kEllipsis; };
  size_t fits = 0;
  for (size_t begin = 0, end = cuts.size(); begin < end;) {
    const size_t middle = begin + (end - begin) / 2;
    if (pMeasure.Width(shortened(cuts[middle]), pFontSize) <= pWidth) {
      fits = cuts[middle];
      begin = middle + 1;
    } else {
      end = middle;
    }
  }
  if (fits == 0) return {};
  while (fits > 1 && pText[fits - 1] == u' ') --fits;
  return shortened(fits);
}

}  // namespace Vantrel::Drawing

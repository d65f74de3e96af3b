#include "search/files/AnyEncodingNeedle.h"

#include <algorithm>

namespace Vantrel::Search {

namespace {

// Where the lower byte of a character stands in UTF-16; npos if it has no fixed place.
size_t OffsetOf(const TTextNeedle& pNeedle, size_t pCharacter) {
  size_t offset = std::string_view::npos;
  for (const TTextNeedle::TAnchor& anchor : pNeedle.Anchors())
    if (anchor.fCharacter == pCharacter) offset = std::min(offset, anchor.fOffset);
  return offset;
}

ptrdiff_t Distance(size_t pFrom, size_t pTo) {
  return static_cast<ptrdiff_t>(pTo) - static_cast<ptrdiff_t>(pFrom);
}

}  // namespace

TAnyEncodingNeedle::TAnyEncodingNeedle(std::u16string_view pText, bool pCaseSensitive) {
  for (const TTextEncoding encoding :
       {TTextEncoding::teUtf8, TTextEncoding::teUtf16LittleEndian, TTextEncoding::teUtf16BigEndian}) {
    fEncoded.push_back({TTextNeedle(pText, encoding, pCaseSensitive)});
    fLongest = std::max(fLongest, fEncoded.back().fNeedle.LongestMatch());
  }
  ChoosePair();
}

void TAnyEncodingNeedle::ChoosePair() {
  const TTextNeedle& utf16 = fEncoded[1].fNeedle;
  const TTextNeedle::TAnchor* first = nullptr;
  size_t firstOffset = 0;
  for (const TTextNeedle::TAnchor& anchor : fEncoded[0].fNeedle.Anchors()) {
    if (anchor.fBytes.fValue >= 0x80) continue;
    const size_t offset = OffsetOf(utf16, anchor.fCharacter);
    if (offset == std::string_view::npos) continue;
    if (!first) {
      first = &anchor;
      firstOffset = offset;
      continue;
    }
    fPair = {first->fBytes, anchor.fBytes, Distance(first->fOffset, anchor.fOffset), Distance(firstOffset, offset)};
    fEncoded[0].fOffset = first->fOffset;
    fEncoded[1].fOffset = firstOffset;
    fEncoded[2].fOffset = firstOffset + 1;
    return;
  }
}

bool TAnyEncodingNeedle::IsIn(std::string_view pBytes) const {
  if (fPair) {
    const auto isMatch = [&](size_t pPlace) {
      return std::any_of(fEncoded.begin(), fEncoded.end(), [&](const TEncoded& pEncoded) {
        return pPlace >= pEncoded.fOffset && pEncoded.fNeedle.IsAt(pBytes, pPlace - pEncoded.fOffset);
      });
    };
    return FindWhere(*fPair, pBytes, 0, isMatch) != std::string_view::npos;
  }
  return std::any_of(fEncoded.begin(), fEncoded.end(), [&](const TEncoded& pEncoded) {
    return pEncoded.fNeedle.FindIn(pBytes) != std::string_view::npos;
  });
}

}  // namespace Vantrel::Search

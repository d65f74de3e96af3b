#include "model/statistics/ColorPalette.h"

#include <array>
#include <utility>

namespace Vantrel {

namespace {

// Twenty hues that users can tell apart in a chart, on light and dark backgrounds.
constexpr std::array<TColor, 20> kPalette = {0x4E79A7, 0xF28E2B, 0xE15759, 0x76B7B2, 0x59A14F, 0xEDC948, 0xB07AA1,
                                             0xFF9DA7, 0x9C755F, 0x8C8C8C, 0x2F6DB5, 0xC4622D, 0x3A9E92, 0xA8324A,
                                             0x7A9A01, 0x6A5ACD, 0xD37295, 0x499894, 0xB6992D, 0x5C6BC0};

}  // namespace

uint32_t HashOfKeyText(std::u16string_view pText) {
  constexpr uint32_t prime = 16777619;
  uint32_t hash = 2166136261;
  for (char16_t unit : pText) {
    hash = (hash ^ (unit & 0xFFu)) * prime;
    hash = (hash ^ (unit >> 8u)) * prime;
  }
  return hash;
}

TColor TColorPalette::GetColorForHash(uint32_t pHash) const {
  return kPalette[pHash % kPalette.size()];
}

TColor TColorPalette::GetColorForKey(std::u16string_view pKey) const {
  {
    TSharedLock lock(fLock);
    auto found = fUserColors.find(pKey);
    if (found != fUserColors.end()) return found->second;
  }
  return GetColorForHash(HashOfKeyText(pKey));
}

void TColorPalette::SetUserColors(TUserColors pColors) {
  TExclusiveLock lock(fLock);
  fUserColors = std::move(pColors);
}

TColorPalette& CommonColorPalette() {
  static TColorPalette palette;
  return palette;
}

}  // namespace Vantrel

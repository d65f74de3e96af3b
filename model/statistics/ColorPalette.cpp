#include "model/statistics/ColorPalette.h"

#include <array>
#include <utility>

namespace Vantrel {

namespace {

// Twenty colours, searched for the largest difference between the two most alike. They differ for people with normal
// sight and for those who do not see red, green or blue, and each stands out on a light and on a dark ground.
// tests/model/statistics/AssocSizeArrayTest.cpp measures all that.
constexpr std::array<TColor, 20> kPalette = {0xECD824, 0x384C74, 0x609CEC, 0xC47410, 0x10ECEC, 0x9C1010, 0x9C10D8,
                                             0xEC9C74, 0x74749C, 0xC4384C, 0x4CC4EC, 0xC488B0, 0xB0D8B0, 0x7410B0,
                                             0xEC6074, 0xB04CEC, 0x4C609C, 0x9CB010, 0xC4C410, 0x389C74};

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

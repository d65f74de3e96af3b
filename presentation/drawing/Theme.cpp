#include "presentation/drawing/Theme.h"

#include <algorithm>
#include <cmath>

namespace Vantrel::Drawing {

namespace {

constexpr TTheme kLight;
constexpr TTheme kDark = {0x1B1F24, 0xE6EDF3, 0x9DA7B1, 0x343B43, 0x6E7681, 0x6B737B, 0x58A6FF, 0xF0883E};

double LinearOf(TColor pColor, int pShift) {
  const double value = static_cast<double>((pColor >> pShift) & 0xFF) / 255;
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double Luminance(TColor pColor) {
  return 0.2126 * LinearOf(pColor, 16) + 0.7152 * LinearOf(pColor, 8) + 0.0722 * LinearOf(pColor, 0);
}

}  // namespace

const TTheme& LightTheme() {
  return kLight;
}

const TTheme& DarkTheme() {
  return kDark;
}

double Contrast(TColor pA, TColor pB) {
  const auto [darker, lighter] = std::minmax({Luminance(pA), Luminance(pB)});
  return (lighter + 0.05) / (darker + 0.05);
}

TColor ReadableOn(TColor pGround) {
  constexpr TColor kBlack = 0x000000;
  constexpr TColor kWhite = 0xFFFFFF;
  return Contrast(pGround, kWhite) >= Contrast(pGround, kBlack) ? kWhite : kBlack;
}

}  // namespace Vantrel::Drawing

#pragma once

// The colours of pictures on a light and on a dark ground.

#include "model/statistics/ColorPalette.h"

namespace Vantrel::Drawing {

struct TTheme {
  TColor fBackground = 0xFFFFFF;
  TColor fText = 0x1F2328;
  TColor fFaintText = 0x57606A;
  TColor fGrid = 0xD8DEE4;
  TColor fAxis = 0x8C959F;
  TColor fRest = 0xA5ABB2;   // "others"
  TColor fLine = 0x0A5FA8;   // the curve of a history
  TColor fAlarm = 0xC2410C;  // values that are not to be relied on
};

const TTheme& LightTheme();
const TTheme& DarkTheme();
inline const TTheme& ThemeOf(bool pDark) {
  return pDark ? DarkTheme() : LightTheme();
}

// Black or white, whichever stands out more on the ground.
TColor ReadableOn(TColor pGround);
// How well two colours can be told apart, from 1 for equal ones to 21 for black and white.
double Contrast(TColor pA, TColor pB);

}  // namespace Vantrel::Drawing

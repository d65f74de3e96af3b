#pragma once

// Shades tiles as cushions: each level adds a ridge to the surface above it, and the surface is lit.

#include <array>
#include <cstddef>
#include <cstdint>

#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// The surface of a tile: z = fX1 x + fX2 x² + fY1 y + fY2 y².
struct TCushion {
  double fX1 = 0;
  double fX2 = 0;
  double fY1 = 0;
  double fY2 = 0;
};

// Adds a ridge over a rectangle that is not empty. At the rectangle's edges its slope is pHeight.
void AddRidge(TCushion& pCushion, const TTreemapRect& pRect, double pHeight);
// The slope of a level's ridges: the first level below the top has 1.
double RidgeHeight(const TTreemapSettings& pSettings, int32_t pLayer);

// Computes the colours of lit surfaces. Any thread.
class TCushionShader {
 public:
  explicit TCushionShader(const TPhongProperties& pPhong);

  // Fills a part of a tile with its lit surface. pPixels is the picture's first pixel, pStride its width.
  void Shade(uint32_t* pPixels, size_t pStride, const TTreemapRect& pPart, const TCushion& pCushion,
             TColor pColor) const;

 private:
  using TChannels = std::array<float, 3>;
  float PowerOf(float pCosine) const;

  std::array<float, 3> fLight;  // of length 1
  std::array<float, 3> fView;
  float fLightToView;  // the cosine between the two
  float fAmbientPart;
  float fDiffusePart;
  TChannels fAmbient;   // 0 to 255; used where tiles have no colours of their own
  TChannels fDiffuse;   // the same
  TChannels fSpecular;  // 0 to 255
  int32_t fShininess;
  bool fTilesHaveColors;
};

}  // namespace Vantrel::Treemap

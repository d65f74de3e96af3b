#include "presentation/treemap/CushionShading.h"

#include <algorithm>
#include <cmath>

namespace Vantrel::Treemap {

namespace {

std::array<float, 3> Normalised(float pX, float pY, float pZ) {
  const float length = std::sqrt(pX * pX + pY * pY + pZ * pZ);
  return length > 0 ? std::array<float, 3>{pX / length, pY / length, pZ / length} : std::array<float, 3>{};
}

float PartOf(int32_t pPercent) {
  return static_cast<float>(pPercent) / 100;
}

uint32_t Channel(float pValue) {
  return static_cast<uint32_t>(std::clamp(pValue, 0.0f, 255.0f) + 0.5f);
}

}  // namespace

void AddRidge(TCushion& pCushion, const TTreemapRect& pRect, double pHeight) {
  const double width = pRect.Width();
  const double height = pRect.Height();
  if (width > 0) {
    pCushion.fX1 += pHeight * (pRect.fLeft + pRect.fRight) / width;
    pCushion.fX2 -= pHeight / width;
  }
  if (height > 0) {
    pCushion.fY1 += pHeight * (pRect.fTop + pRect.fBottom) / height;
    pCushion.fY2 -= pHeight / height;
  }
}

double RidgeHeight(const TTreemapSettings& pSettings, int32_t pLayer) {
  constexpr double kMost = 1000;  // steeper ones cannot be told apart
  return std::min(pSettings.fCushionHeight / 100.0 * 4 * std::pow(pSettings.fCushionHeightScale / 100.0, pLayer - 1),
                  kMost);
}

TCushionShader::TCushionShader(const TPhongProperties& pPhong)
    : fLight(Normalised(pPhong.PhongLightVectorX, pPhong.PhongLightVectorY, pPhong.PhongLightVectorZ)),
      fView(Normalised(pPhong.PhongViewVectorX, pPhong.PhongViewVectorY, pPhong.PhongViewVectorZ)),
      fLightToView(fLight[0] * fView[0] + fLight[1] * fView[1] + fLight[2] * fView[2]),
      fAmbientPart(PartOf(pPhong.PhongAmbientCoeff)),
      fDiffusePart(PartOf(pPhong.PhongDiffuseCoeff)),
      fShininess(std::max(pPhong.PhongShininess, 0)),
      fTilesHaveColors(pPhong.PhongDifferentLayerColors) {
  const auto channels = [](float pPart, int32_t pR, int32_t pG, int32_t pB) {
    const float full = 255 * pPart;
    return TChannels{full * static_cast<float>(pR), full * static_cast<float>(pG), full * static_cast<float>(pB)};
  };
  fAmbient = channels(fAmbientPart, pPhong.PhongAmbientColorR, pPhong.PhongAmbientColorG, pPhong.PhongAmbientColorB);
  fDiffuse = channels(fDiffusePart, pPhong.PhongDiffuseColorR, pPhong.PhongDiffuseColorG, pPhong.PhongDiffuseColorB);
  fSpecular = channels(PartOf(pPhong.PhongSpecularCoeff), pPhong.PhongSpecularColorR, pPhong.PhongSpecularColorG,
                       pPhong.PhongSpecularColorB);
}

float TCushionShader::PowerOf(float pCosine) const {
  float result = 1;
  for (int32_t exponent = fShininess; exponent > 0; exponent >>= 1, pCosine *= pCosine)
    if (exponent & 1) result *= pCosine;
  return result;
}

// The slopes are computed in double at the left of each line. The terms of a deep surface are large and nearly cancel
// each other. From there on they grow by a small step per pixel.
void TCushionShader::Shade(uint32_t* pPixels, size_t pStride, const TTreemapRect& pPart, const TCushion& pCushion,
                           TColor pColor) const {
  TChannels ambient = fAmbient;
  TChannels diffuse = fDiffuse;
  if (fTilesHaveColors) {
    for (size_t i = 0; i < 3; ++i) {
      const auto channel = static_cast<float>((pColor >> (16 - 8 * i)) & 0xFF);
      ambient[i] = fAmbientPart * channel;
      diffuse[i] = fDiffusePart * channel;
    }
  }
  const auto slope = static_cast<float>(-(pCushion.fX1 + 2 * pCushion.fX2 * (pPart.fLeft + 0.5)));
  const auto step = static_cast<float>(-2 * pCushion.fX2);
  for (int32_t y = pPart.fTop; y < pPart.fBottom; ++y) {
    uint32_t* line = pPixels + static_cast<size_t>(y) * pStride + static_cast<size_t>(pPart.fLeft);
    const auto ny = static_cast<float>(-(pCushion.fY1 + 2 * pCushion.fY2 * (y + 0.5)));
    const float yy = ny * ny + 1;
    const float yLight = ny * fLight[1] + fLight[2];
    const float yView = ny * fView[1] + fView[2];
    for (int32_t i = 0; i < pPart.Width(); ++i) {
      const float nx = slope + step * static_cast<float>(i);
      const float scale = 1 / std::sqrt(nx * nx + yy);
      const float toLight = (nx * fLight[0] + yLight) * scale;
      float cosine = 0;
      float shine = 0;
      if (toLight > 0) {
        // The reflected light is 2 (normal . light) normal - light.
        const float toView = 2 * toLight * (nx * fView[0] + yView) * scale - fLightToView;
        cosine = toLight;
        shine = toView > 0 ? PowerOf(toView) : 0;
      }
      const auto channel = [&](size_t pIndex) {
        return Channel(ambient[pIndex] + diffuse[pIndex] * cosine + fSpecular[pIndex] * shine);
      };
      line[i] = 0xFF000000 | channel(0) << 16 | channel(1) << 8 | channel(2);
    }
  }
}

}  // namespace Vantrel::Treemap

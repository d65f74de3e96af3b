// Lit surfaces against a slow reference in double precision.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "presentation/treemap/CushionShading.h"

namespace Vantrel::Treemap {
namespace {

using TVector = std::array<double, 3>;

double Dot(const TVector& pA, const TVector& pB) {
  return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2];
}

TVector Unit(TVector pVector) {
  const double length = std::sqrt(Dot(pVector, pVector));
  for (double& part : pVector) part /= length;
  return pVector;
}

// The slope of all ridges above a pixel: each rises by the height at its near edge and falls by it at its far edge.
double SlopeAt(const std::vector<std::pair<TTreemapRect, double>>& pRidges, double pPosition, bool pIsX) {
  double slope = 0;
  for (const auto& [rect, height] : pRidges) {
    const double begin = pIsX ? rect.fLeft : rect.fTop;
    const double end = pIsX ? rect.fRight : rect.fBottom;
    slope += height * (1 - 2 * (pPosition - begin) / (end - begin));
  }
  return slope;
}

std::array<int, 3> ReferenceColor(const TPhongProperties& p, const TVector& pNormal, TColor pColor) {
  const TVector light = Unit({p.PhongLightVectorX, p.PhongLightVectorY, p.PhongLightVectorZ});
  const TVector view = Unit({p.PhongViewVectorX, p.PhongViewVectorY, p.PhongViewVectorZ});
  const double cosine = Dot(pNormal, light);
  double shine = 0;
  if (cosine > 0) {
    TVector reflected;
    for (size_t i = 0; i < 3; ++i) reflected[i] = 2 * cosine * pNormal[i] - light[i];
    const double toView = Dot(reflected, view);
    if (toView > 0) shine = std::pow(toView, p.PhongShininess);
  }
  const int32_t ambient[] = {p.PhongAmbientColorR, p.PhongAmbientColorG, p.PhongAmbientColorB};
  const int32_t diffuse[] = {p.PhongDiffuseColorR, p.PhongDiffuseColorG, p.PhongDiffuseColorB};
  const int32_t specular[] = {p.PhongSpecularColorR, p.PhongSpecularColorG, p.PhongSpecularColorB};
  std::array<int, 3> color{};
  for (size_t i = 0; i < 3; ++i) {
    const double own = static_cast<double>((pColor >> (16 - 8 * i)) & 0xFF);
    const double base = p.PhongDifferentLayerColors ? own : 255.0 * ambient[i];
    const double matt = p.PhongDifferentLayerColors ? own : 255.0 * diffuse[i];
    const double value = p.PhongAmbientCoeff / 100.0 * base +
                         p.PhongDiffuseCoeff / 100.0 * matt * std::max(cosine, 0.0) +
                         p.PhongSpecularCoeff / 100.0 * 255 * specular[i] * shine;
    color[i] = static_cast<int>(std::lround(std::clamp(value, 0.0, 255.0)));
  }
  return color;
}

// Up to twelve levels of ridges, each within the one above, at the far end of a large picture.
TEST(CushionShading, IsWithinOneStepOfTheReference) {
  for (uint32_t seed = 0; seed < 40; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&](uint32_t pBound) { return static_cast<int32_t>(random() % pBound); };
    TPhongProperties phong;
    if (seed % 3 != 0) {
      phong.PhongLightVectorX = static_cast<float>(below(200) - 100) / 100;
      phong.PhongViewVectorY = static_cast<float>(below(200) - 100) / 100;
      phong.PhongLightVectorZ = static_cast<float>(1 + below(300)) / 100;
      phong.PhongShininess = below(12);
      phong.PhongAmbientCoeff = below(101);
      phong.PhongDiffuseCoeff = below(101);
      phong.PhongSpecularCoeff = below(101);
      phong.PhongDiffuseColorG = below(2);
      phong.PhongSpecularColorB = below(2);
      phong.PhongDifferentLayerColors = seed % 2 == 0;
    }
    TTreemapRect rect{below(3000), below(1500), 0, 0};
    rect.fRight = rect.fLeft + 20 + below(300);
    rect.fBottom = rect.fTop + 20 + below(200);
    TCushion cushion;
    std::vector<std::pair<TTreemapRect, double>> ridges;
    for (int32_t level = below(12); level >= 0; --level) {
      ridges.push_back({rect, static_cast<double>(below(200)) / 100});
      AddRidge(cushion, rect, ridges.back().second);
      if (level == 0) break;
      rect.fLeft += below(static_cast<uint32_t>(rect.Width()) / 3 + 1);
      rect.fBottom -= below(static_cast<uint32_t>(rect.Height()) / 3 + 1);
    }
    const TColor color = random() & 0xFFFFFF;
    constexpr size_t kStride = 4000;
    std::vector<uint32_t> pixels(kStride * 1800);
    TCushionShader(phong).Shade(pixels.data(), kStride, rect, cushion, color);
    for (int32_t y = rect.fTop; y < rect.fBottom; y += 1 + below(5)) {
      for (int32_t x = rect.fLeft; x < rect.fRight; x += 1 + below(5)) {
        const TVector normal = Unit({-SlopeAt(ridges, x + 0.5, true), -SlopeAt(ridges, y + 0.5, false), 1});
        const uint32_t pixel = pixels[static_cast<size_t>(y) * kStride + static_cast<size_t>(x)];
        ASSERT_EQ(pixel >> 24, 0xFFu);
        const std::array<int, 3> expected = ReferenceColor(phong, normal, color);
        for (size_t i = 0; i < 3; ++i)
          ASSERT_NEAR(static_cast<int>((pixel >> (16 - 8 * i)) & 0xFF), expected[i], 1)
              << "seed " << seed << ", channel " << i << " at " << x << ", " << y;
      }
    }
  }
}

// What cannot be normalised or is too steep for a float must give some colour and no undefined behaviour.
TEST(CushionShading, EndsForExtremeSettings) {
  TTreemapSettings settings;
  settings.fCushionHeight = 100;
  settings.fCushionHeightScale = 1000;
  settings.fPhong.PhongLightVectorZ = 0;
  settings.fPhong.PhongViewVectorZ = 0;
  TCushion cushion;
  for (int32_t layer = 1; layer < 400; ++layer) AddRidge(cushion, {3, 5, 7, 6}, RidgeHeight(settings, layer));
  std::vector<uint32_t> pixels(10 * 10);
  TCushionShader(settings.fPhong).Shade(pixels.data(), 10, {3, 5, 7, 6}, cushion, 0x40'80'C0);
  EXPECT_EQ(pixels[53], 0xFF'16'2D'43u) << "without light, 35 % of the colour";
}

}  // namespace
}  // namespace Vantrel::Treemap

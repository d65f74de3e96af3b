#include "presentation/treemap/TreemapTypes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>

namespace Vantrel::Treemap {

namespace {

__extension__ using TWide = unsigned __int128;

// Multiplies to 128 bits and folds the halves, so that each bit of the result depends on all bits of both.
uint64_t Mix(uint64_t pA, uint64_t pB) {
  const TWide product = static_cast<TWide>(pA) * pB;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

}  // namespace

// Four units at a time, since this runs once for each of a million tiles.
TTreemapElementID ChildID(TTreemapElementID pParent, std::u16string_view pName) {
  constexpr uint64_t kOdd1 = 0x9E3779B97F4A7C15;
  constexpr uint64_t kOdd2 = 0xD1B54A32D192ED03;
  constexpr size_t kUnits = sizeof(uint64_t) / sizeof(char16_t);
  uint64_t hash = Mix(static_cast<uint64_t>(pParent) ^ kOdd1, pName.size() ^ kOdd2);
  for (; !pName.empty(); pName.remove_prefix(std::min(kUnits, pName.size()))) {
    uint64_t units = 0;
    std::memcpy(&units, pName.data(), std::min(kUnits, pName.size()) * sizeof(char16_t));
    hash = Mix(hash ^ units, kOdd1) + kOdd2;
  }
  hash = Mix(hash, kOdd2);
  return static_cast<TTreemapElementID>(hash == 0 ? 1 : hash);
}

bool TPhongProperties::SameAs(const TPhongProperties& pOther) const {
  const auto values = [](const TPhongProperties& pOf) {
    return std::tie(pOf.PhongLightVectorX, pOf.PhongLightVectorY, pOf.PhongLightVectorZ, pOf.PhongViewVectorX,
                    pOf.PhongViewVectorY, pOf.PhongViewVectorZ, pOf.PhongDiffuseCoeff, pOf.PhongAmbientCoeff,
                    pOf.PhongSpecularCoeff, pOf.PhongShininess, pOf.PhongDiffuseColorR, pOf.PhongDiffuseColorG,
                    pOf.PhongDiffuseColorB, pOf.PhongAmbientColorR, pOf.PhongAmbientColorG, pOf.PhongAmbientColorB,
                    pOf.PhongSpecularColorR, pOf.PhongSpecularColorG, pOf.PhongSpecularColorB,
                    pOf.PhongDifferentLayerColors);
  };
  return values(*this) == values(pOther);
}

void TPhongProperties::Assign(const TPhongProperties& pSource) {
  if (SameAs(pSource)) return;
  std::function<void()> onChange = std::move(OnChange);
  *this = pSource;
  OnChange = std::move(onChange);
  if (OnChange) OnChange();
}

int32_t TextSizeOf(const TTreemapSettings& pSettings) {
  if (pSettings.fTextSize > 0) return pSettings.fTextSize;
  const double side = std::sqrt(static_cast<double>(pSettings.fWidth) * pSettings.fHeight);
  return std::max(12, static_cast<int32_t>(side / 120));
}

}  // namespace Vantrel::Treemap

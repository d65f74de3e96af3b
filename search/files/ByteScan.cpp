#include "search/files/ByteScan.h"

#include <algorithm>
#include <cstring>

namespace Vantrel::Search {

namespace {

// Lanes of the compiler's own vectors: as wide as the processor of the function that uses them.
template <size_t tWidth>
struct TVector {
  using TLanes __attribute__((vector_size(tWidth))) = uint8_t;
  using TWords __attribute__((vector_size(tWidth))) = uint64_t;
};

// The place of the first block with a hit, from pAt on; pEnd when there is none. All places that it reads must exist.
template <size_t tWidth>
inline __attribute__((always_inline)) size_t ScanBlocks(const TBytePair& pPair, const char* pBytes, size_t pAt,
                                                        size_t pEnd) {
  using TLanes = typename TVector<tWidth>::TLanes;
  using TWords = typename TVector<tWidth>::TWords;
  const TLanes firstMask = TLanes{} | pPair.fFirst.fMask, firstValue = TLanes{} | pPair.fFirst.fValue;
  const TLanes secondMask = TLanes{} | pPair.fSecond.fMask, secondValue = TLanes{} | pPair.fSecond.fValue;
  for (; pAt < pEnd; pAt += kScanWidth) {
    TLanes any{};
    for (size_t i = 0; i < kScanWidth; i += tWidth) {
      const char* place = pBytes + pAt + i;
      TLanes first, second, other;
      std::memcpy(&first, place, tWidth);
      std::memcpy(&second, place + pPair.fDistance, tWidth);
      std::memcpy(&other, place + pPair.fOtherDistance, tWidth);
      any |= reinterpret_cast<TLanes>(((first | firstMask) == firstValue) &
                                      (((second | secondMask) == secondValue) | ((other | secondMask) == secondValue)));
    }
    const auto words = reinterpret_cast<TWords>(any);
    uint64_t bits = 0;
    for (size_t i = 0; i < tWidth / sizeof(uint64_t); ++i) bits |= words[i];
    if (bits != 0) return pAt;
  }
  return pEnd;
}

size_t ScanNarrow(const TBytePair& pPair, const char* pBytes, size_t pAt, size_t pEnd) {
  return ScanBlocks<16>(pPair, pBytes, pAt, pEnd);
}

#ifdef __x86_64__
// Half the time of the narrow one.
__attribute__((target("avx2"))) size_t ScanWide(const TBytePair& pPair, const char* pBytes, size_t pAt, size_t pEnd) {
  return ScanBlocks<32>(pPair, pBytes, pAt, pEnd);
}

const auto kScan = __builtin_cpu_supports("avx2") ? ScanWide : ScanNarrow;
#else
const auto kScan = ScanNarrow;
#endif

// The hits among at most kScanWidth bytes, one by one.
uint64_t HitsAt(const TBytePair& pPair, std::string_view pBytes, size_t pAt) {
  const auto size = static_cast<ptrdiff_t>(pBytes.size());
  const auto end = std::min(static_cast<ptrdiff_t>(pAt + kScanWidth), size);
  const auto hasSecond = [&](ptrdiff_t pPlace) {
    return pPlace < 0 || pPlace >= size || pPair.fSecond.Has(pBytes[static_cast<size_t>(pPlace)]);
  };
  uint64_t hits = 0;
  for (auto place = static_cast<ptrdiff_t>(pAt); place < end; ++place) {
    const bool isHit = pPair.fFirst.Has(pBytes[static_cast<size_t>(place)]) &&
                       (hasSecond(place + pPair.fDistance) || hasSecond(place + pPair.fOtherDistance));
    hits |= static_cast<uint64_t>(isHit) << (place - static_cast<ptrdiff_t>(pAt));
  }
  return hits;
}

}  // namespace

size_t FindPair(const TBytePair& pPair, std::string_view pBytes, size_t pFrom, uint64_t& pHits) {
  const auto [nearest, farthest] = std::minmax({ptrdiff_t{0}, pPair.fDistance, pPair.fOtherDistance});
  const auto before = static_cast<size_t>(-nearest);
  const size_t behind = static_cast<size_t>(farthest) + kScanWidth;
  for (size_t at = pFrom; at < pBytes.size(); at += kScanWidth) {
    if (at >= before && at + behind <= pBytes.size()) {
      // Whole blocks only.
      const size_t blocks = (pBytes.size() - at - behind) / kScanWidth + 1;
      const size_t end = at + blocks * kScanWidth;
      at = kScan(pPair, pBytes.data(), at, end);
      if (at >= pBytes.size()) break;
    }
    pHits = HitsAt(pPair, pBytes, at);
    if (pHits != 0) return at;
  }
  return std::string_view::npos;
}

}  // namespace Vantrel::Search

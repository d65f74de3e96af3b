#pragma once

// Finds places in raw bytes where two certain bytes stand at a certain distance.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vantrel::Search {

// Stands for all bytes with (byte | fMask) == fValue: a letter in both cases, for one.
struct TByteSet {
  uint8_t fMask = 0;
  uint8_t fValue = 0;
  bool Has(char pByte) const { return (static_cast<uint8_t>(pByte) | fMask) == fValue; }
};

// A first byte, and a second one that stands at one of two distances from it. A distance may be negative.
struct TBytePair {
  TByteSet fFirst;
  TByteSet fSecond;
  ptrdiff_t fDistance = 0;
  ptrdiff_t fOtherDistance = 0;
};

constexpr size_t kScanWidth = 64;

// The start of the first kScanWidth bytes, at or after pFrom, with a first byte that has its second. pHits gets a bit
// for each of these places. Where the bytes end or begin too near to look for second bytes, a first byte counts alone.
// At the end of the bytes it returns npos. It may return bytes of which no bit is set.
size_t FindPair(const TBytePair& pPair, std::string_view pBytes, size_t pFrom, uint64_t& pHits);

// The first place at or after pFrom of a first byte that pIsMatch accepts; npos when there is none.
template <typename TIsMatch>
size_t FindWhere(const TBytePair& pPair, std::string_view pBytes, size_t pFrom, const TIsMatch& pIsMatch) {
  uint64_t hits = 0;
  for (size_t at = FindPair(pPair, pBytes, pFrom, hits); at != std::string_view::npos;
       at = FindPair(pPair, pBytes, at + kScanWidth, hits)) {
    for (; hits != 0; hits &= hits - 1) {
      const size_t place = at + static_cast<size_t>(__builtin_ctzll(hits));
      if (pIsMatch(place)) return place;
    }
  }
  return std::string_view::npos;
}

}  // namespace Vantrel::Search

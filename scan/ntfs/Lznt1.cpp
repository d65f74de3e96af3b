#include "scan/ntfs/Lznt1.h"

#include <algorithm>

namespace Vantrel::Ntfs {

namespace {

// A unit is a row of chunks, each of which stands for 4,096 bytes. A chunk begins with a number of two bytes: its
// length less one in the lowest 12 bits, and in the highest bit whether it is packed. The number 0 ends the row. A
// packed chunk is a row of groups: one byte whose bits tell, from the lowest one, which of the next eight elements are
// byte pairs. The others are single bytes. A pair means an earlier place of the chunk and how many bytes are repeated
// from there. The further the chunk is, the more bits of the pair tell the place, and the fewer the length.
constexpr size_t kChunk = 4096;
constexpr uint16_t kIsPacked = 0x8000;
constexpr uint16_t kLengthLessOne = 0x0FFF;
constexpr unsigned kPairBits = 16;
constexpr size_t kShortestRepeat = 3;

// The bits of a pair that tell the length, when so many bytes of the chunk are there.
unsigned LengthBits(size_t pDone) {
  unsigned placeBits = 4;
  while (pDone > size_t{1} << placeBits) ++placeBits;
  return kPairBits - placeBits;
}

bool UnpackPair(uint16_t pPair, std::span<std::byte> pChunk, size_t& pDone) {
  const unsigned lengthBits = LengthBits(pDone);
  const size_t distance = (size_t{pPair} >> lengthBits) + 1;
  const size_t length = (pPair & ((1u << lengthBits) - 1)) + kShortestRepeat;
  if (distance > pDone || length > pChunk.size() - pDone) return false;
  // The bytes may overlap those that they are copied from.
  for (size_t i = 0; i < length; ++i, ++pDone) pChunk[pDone] = pChunk[pDone - distance];
  return true;
}

bool UnpackChunk(TBytes pPacked, std::span<std::byte> pChunk) {
  size_t done = 0;
  for (size_t at = 0; at < pPacked.size();) {
    auto kinds = std::to_integer<unsigned>(pPacked[at++]);
    for (int i = 0; i < 8 && at < pPacked.size(); ++i, kinds >>= 1) {
      if ((kinds & 1) == 0) {
        if (done == pChunk.size()) return false;
        pChunk[done++] = pPacked[at++];
        continue;
      }
      if (pPacked.size() - at < 2 || !UnpackPair(NumberAt<uint16_t>(pPacked, at), pChunk, done)) return false;
      at += 2;
    }
  }
  return true;
}

}  // namespace

bool UnpackLznt1(TBytes pPacked, std::span<std::byte> pUnit) {
  std::fill(pUnit.begin(), pUnit.end(), std::byte{0});
  while (!pUnit.empty() && pPacked.size() >= 2) {
    const auto head = NumberAt<uint16_t>(pPacked, 0);
    if (head == 0) return true;
    const size_t length = size_t{head} % (kLengthLessOne + 1) + 1;
    pPacked = pPacked.subspan(2);
    if (length > pPacked.size()) return false;
    const std::span<std::byte> chunk = pUnit.first(std::min(kChunk, pUnit.size()));
    if ((head & kIsPacked) == 0) {
      if (length > chunk.size()) return false;
      std::copy_n(pPacked.begin(), length, chunk.begin());
    } else if (!UnpackChunk(pPacked.first(length), chunk)) {
      return false;
    }
    pPacked = pPacked.subspan(length);
    pUnit = pUnit.subspan(chunk.size());
  }
  return true;
}

}  // namespace Vantrel::Ntfs

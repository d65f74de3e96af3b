#pragma once

// What a search for duplicates asks of checksums that earlier searches computed.

#include <cstdint>
#include <optional>

#include "model/roots/Storage.h"
#include "search/duplicates/HashUtils.h"

namespace Vantrel::Search {

// Which checksum of a file it is: of all its bytes by a checksum's own number, of pieces so far from each other, or the
// small one that reads so many bytes at the beginning. Kept in files, so the numbers must not change.
enum class TCachedSumKind : int64_t {};
constexpr TCachedSumKind CachedSumOfAll(HashUtils::TChecksumKind pKind) {
  return TCachedSumKind{static_cast<int64_t>(pKind)};
}
constexpr TCachedSumKind CachedSumOfPieces(int64_t pBetween) {
  return TCachedSumKind{-pBetween};
}
constexpr TCachedSumKind CachedSmallSum(int64_t pSmallChecksumSize) {
  return TCachedSumKind{16 + pSmallChecksumSize};
}

// Any thread.
class IChecksumCache : public IInterface {
 public:
  // The checksum of the file that has these facts. Nothing if the file has changed since.
  virtual std::optional<HashUtils::TMD5Hash> Find(const TStoredFileFacts& pFacts, TCachedSumKind pKind) = 0;
  // The facts must hold an id and both dates of change.
  virtual void Add(const TStoredFileFacts& pFacts, TCachedSumKind pKind, const HashUtils::TMD5Hash& pHash) = 0;
};

}  // namespace Vantrel::Search

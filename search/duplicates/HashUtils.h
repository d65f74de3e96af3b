#pragma once

// Checksums: MD5 and SHA-256 by the system's library, a fast sum of 128 bits, and FNV-1a.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

#include "platform/system/Errors.h"

namespace Vantrel::HashUtils {

// The system's library refuses a checksum, as a system does that allows approved ones only.
class EHashNotAvailable : public EException {
 public:
  using EException::EException;
};

// The key of files with equal contents. Longer checksums are cut to these 128 bits.
struct TMD5Hash {
  std::array<uint8_t, 16> fBytes{};
  auto operator<=>(const TMD5Hash&) const = default;
};

// FNV-1a of 64 bits, for short keys.
constexpr uint64_t kFnvBasis = 0xcbf29ce484222325;
inline uint64_t Fnv1a(std::span<const uint8_t> pBytes, uint64_t pHash = kFnvBasis) {
  for (const uint8_t byte : pBytes) pHash = (pHash ^ byte) * 0x100000001b3;
  return pHash;
}

// A checksum's bytes are spread evenly already.
struct THashOfMD5Hash {
  size_t operator()(const TMD5Hash& pHash) const noexcept {
    size_t value = 0;
    std::memcpy(&value, pHash.fBytes.data(), sizeof value);
    return value;
  }
};

enum class TChecksumKind : uint8_t {
  ckFast,   // XXH3 of 128 bits: as fast as memory, but no defence against files that were made to collide
  ckMD5,    // no defence against that either
  ckSHA256  // no two different files with the same checksum are known
};

// Computes checksums, one after the other. For one thread at a time.
class IHashCalculator {
 public:
  virtual ~IHashCalculator() = default;
  virtual void Add(std::string_view pBytes) = 0;
  // The checksum of all bytes since the last call. The next one begins.
  virtual TMD5Hash Finish() = 0;
};

// EHashNotAvailable.
std::unique_ptr<IHashCalculator> CreateHashCalculator(TChecksumKind pKind);
// The same for checksums of the system's library.
std::unique_ptr<IHashCalculator> CreateSystemHashCalculator(TChecksumKind pKind);

}  // namespace Vantrel::HashUtils

#define XXH_INLINE_ALL
#include "search/duplicates/HashUtils.h"

#include <xxhash.h>

namespace Vantrel::HashUtils {

namespace {

class TFastCalculator final : public IHashCalculator {
 public:
  TFastCalculator() { XXH3_128bits_reset(&fState); }

  void Add(std::string_view pBytes) override { XXH3_128bits_update(&fState, pBytes.data(), pBytes.size()); }

  TMD5Hash Finish() override {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(&fState));
    XXH3_128bits_reset(&fState);
    TMD5Hash hash;
    std::memcpy(hash.fBytes.data(), canonical.digest, hash.fBytes.size());
    return hash;
  }

 private:
  XXH3_state_t fState;
};

}  // namespace

std::unique_ptr<IHashCalculator> CreateHashCalculator(TChecksumKind pKind) {
  if (pKind == TChecksumKind::ckFast) return std::make_unique<TFastCalculator>();
  return CreateSystemHashCalculator(pKind);
}

}  // namespace Vantrel::HashUtils

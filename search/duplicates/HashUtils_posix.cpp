#include <openssl/evp.h>

#include "search/duplicates/HashUtils.h"

namespace Vantrel::HashUtils {

namespace {

class TSystemCalculator final : public IHashCalculator {
 public:
  explicit TSystemCalculator(const EVP_MD* pDigest) : fContext(EVP_MD_CTX_new()) {
    if (!fContext || EVP_DigestInit_ex(fContext.get(), pDigest, nullptr) != 1)
      throw EHashNotAvailable("The system's library does not compute this checksum");
  }

  void Add(std::string_view pBytes) override { EVP_DigestUpdate(fContext.get(), pBytes.data(), pBytes.size()); }

  TMD5Hash Finish() override {
    std::array<uint8_t, EVP_MAX_MD_SIZE> bytes{};
    EVP_DigestFinal_ex(fContext.get(), bytes.data(), nullptr);
    // Begins anew with the same digest, without a search for it.
    EVP_DigestInit_ex(fContext.get(), nullptr, nullptr);
    TMD5Hash hash;
    std::memcpy(hash.fBytes.data(), bytes.data(), hash.fBytes.size());
    return hash;
  }

 private:
  struct TFree {
    void operator()(EVP_MD_CTX* pContext) const { EVP_MD_CTX_free(pContext); }
  };
  const std::unique_ptr<EVP_MD_CTX, TFree> fContext;
};

}  // namespace

std::unique_ptr<IHashCalculator> CreateSystemHashCalculator(TChecksumKind pKind) {
  return std::make_unique<TSystemCalculator>(pKind == TChecksumKind::ckMD5 ? EVP_md5() : EVP_sha256());
}

}  // namespace Vantrel::HashUtils

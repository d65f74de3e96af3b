// bcrypt.h takes its types from windows.h.
// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

#include "search/duplicates/HashUtils.h"

namespace Vantrel::HashUtils {

namespace {

class TSystemCalculator final : public IHashCalculator {
 public:
  TSystemCalculator(BCRYPT_ALG_HANDLE pAlgorithm, size_t pLength) : fAlgorithm(pAlgorithm), fLength(pLength) {
    Begin();
  }
  ~TSystemCalculator() override {
    if (fHash) BCryptDestroyHash(fHash);
    BCryptCloseAlgorithmProvider(fAlgorithm, 0);
  }
  TSystemCalculator(const TSystemCalculator&) = delete;
  TSystemCalculator& operator=(const TSystemCalculator&) = delete;

  void Add(std::string_view pBytes) override {
    Check(BCryptHashData(fHash, reinterpret_cast<UCHAR*>(const_cast<char*>(pBytes.data())),
                         static_cast<ULONG>(pBytes.size()), 0));
  }

  TMD5Hash Finish() override {
    std::array<UCHAR, 32> bytes{};
    Check(BCryptFinishHash(fHash, bytes.data(), static_cast<ULONG>(fLength), 0));
    BCryptDestroyHash(fHash);
    fHash = nullptr;
    Begin();
    TMD5Hash hash;
    std::memcpy(hash.fBytes.data(), bytes.data(), hash.fBytes.size());
    return hash;
  }

 private:
  static void Check(NTSTATUS pStatus) {
    if (pStatus < 0) throw EHashNotAvailable("The system's library does not compute this checksum");
  }
  void Begin() { Check(BCryptCreateHash(fAlgorithm, &fHash, nullptr, 0, nullptr, 0, 0)); }

  const BCRYPT_ALG_HANDLE fAlgorithm;
  const size_t fLength;
  BCRYPT_HASH_HANDLE fHash = nullptr;
};

}  // namespace

std::unique_ptr<IHashCalculator> CreateSystemHashCalculator(TChecksumKind pKind) {
  const bool isMD5 = pKind == TChecksumKind::ckMD5;
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  if (BCryptOpenAlgorithmProvider(&algorithm, isMD5 ? BCRYPT_MD5_ALGORITHM : BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0)
    throw EHashNotAvailable("The system's library does not compute this checksum");
  return std::make_unique<TSystemCalculator>(algorithm, isMD5 ? size_t{16} : size_t{32});
}

}  // namespace Vantrel::HashUtils

#pragma once

// Reads files for their checksums, and compares files byte by byte.

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "search/duplicates/DuplicatesRun.h"

namespace Vantrel::Search {

// A file is not what it was when it was listed or first opened.
class EFileChanged : public EException {
 public:
  using EException::EException;
};

// What is read of a file: at first some bytes of a large one and all of a small one, then pieces from everywhere in a
// large one, then all.
enum class TChecksumPass : uint8_t { cpFirst, cpPieces, cpWhole };

// A checksum of a file, of all its bytes or of some.
struct TFileSum {
  TMD5Hash fHash;
  bool fIsWhole = false;
  // For a checksum of some bytes: the one of all bytes as well, if the cache has it.
  std::optional<TMD5Hash> fKnownWhole{};
};

// For one thread at a time. All calls throw EOSError for a file that cannot be read, and EFileChanged.
class TChecksumReader final {
 public:
  // Called before each block. False ends the reading; the call then returns nothing.
  using TGoesOn = std::function<bool()>;

  explicit TChecksumReader(TDuplicatesRun& pRun);

  // In cpFirst, nothing for a further name of a file, which is not read.
  std::optional<TFileSum> Sum(TDuplicateFile& pFile, TChecksumPass pPass, const TGoesOn& pGoesOn);
  // Which of the files have the same bytes as the first one. As many values as files; the first one's is true. Another
  // file that cannot be read, or that has changed, leaves the search and is not equal.
  std::optional<std::vector<bool>> AreEqual(std::span<const TRef<TDuplicateFile>> pFiles, const TGoesOn& pGoesOn);

  // How many bytes a pass reads at most.
  static int64_t BytesOf(int64_t pSize, TChecksumPass pPass, const TDuplicateSearchSettings& pSettings);
  // Whether the file is so large that pieces are looked at before the whole.
  static bool HasPieces(int64_t pSize, const TDuplicateSearchSettings& pSettings);

 private:
  // Bytes that a checksum is made of.
  struct TPart {
    int64_t fOffset;
    int64_t fLength;
  };
  // Ascending.
  static std::vector<TPart> PartsOf(int64_t pSize, TChecksumPass pPass, const TDuplicateSearchSettings& pSettings);

  struct TOpened {
    std::unique_ptr<IStoredFile> fFile;
    TStoredFileFacts fFacts;
    // The last change lies so far back that the next one will have another date.
    bool fIsSettled = false;
  };
  TOpened Open(TDuplicateFile& pFile) const;
  // The file is the one that was listed, and opened before.
  static void CheckFacts(TDuplicateFile& pFile, const TStoredFileFacts& pFacts);
  void CheckUnchanged(TOpened& pOpened) const;
  bool IsWhole(int64_t pSize, TChecksumPass pPass) const;
  TCachedSumKind CachedKind(int64_t pSize, TChecksumPass pPass) const;
  // False if the cache does not have the checksum of the file. Otherwise pSum is what Sum returns.
  bool TryFind(TDuplicateFile& pFile, TChecksumPass pPass, std::optional<TFileSum>& pSum);
  bool ReadParts(IStoredFile& pFile, std::span<const TPart> pParts, HashUtils::IHashCalculator& pCalculator,
                 const TGoesOn& pGoesOn);
  bool CompareSome(TDuplicateFile& pFirst, std::span<const TRef<TDuplicateFile>> pOthers, std::vector<bool>& pAreEqual,
                   const TGoesOn& pGoesOn);
  // Fills the buffer as far as the file goes.
  size_t Fill(IStoredFile& pFile, char* pBuffer, size_t pLength) const;

  TDuplicatesRun& fRun;
  const int64_t fSmall;
  const bool fReadsContents;
  const std::unique_ptr<HashUtils::IHashCalculator> fSmallCalculator;
  const std::unique_ptr<HashUtils::IHashCalculator> fCalculator;
  std::vector<char> fBuffer;
};

// In an exception handler: why a file has left the search.
std::u16string ReasonOfCaughtException(const TDuplicateFile& pFile);

}  // namespace Vantrel::Search

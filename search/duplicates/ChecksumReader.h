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

  // The first look at a file. Reads some bytes of a large file and all of a small one. Nothing for a further name of a
  // file, which is not read.
  std::optional<TFileSum> First(TDuplicateFile& pFile, const TGoesOn& pGoesOn);
  std::optional<TFileSum> Whole(TDuplicateFile& pFile, const TGoesOn& pGoesOn);
  // Which of the files have the same bytes as the first one. As many values as files; the first one's is true. Another
  // file that cannot be read, or that has changed, leaves the search and is not equal.
  std::optional<std::vector<bool>> AreEqual(std::span<const TRef<TDuplicateFile>> pFiles, const TGoesOn& pGoesOn);

  // How many bytes First reads at most.
  static int64_t BytesOfFirst(int64_t pSize, int64_t pSmall);

 private:
  struct TOpened {
    std::unique_ptr<IStoredFile> fFile;
    TStoredFileFacts fFacts;
    // The last change lies so far back that the next one will have another date.
    bool fIsSettled = false;
  };
  TOpened Open(TDuplicateFile& pFile) const;
  // The file is the one that was listed, and opened before.
  static void CheckFacts(TDuplicateFile& pFile, const TStoredFileFacts& pFacts);
  // After reading: ends with an exception if the file has changed, else keeps the checksum.
  TFileSum FinishSum(TOpened& pOpened, bool pIsWhole);
  void CheckUnchanged(TOpened& pOpened) const;
  bool ReadsAllAtOnce(int64_t pSize) const;
  TCachedSumKind CachedKind(bool pIsWhole) const;
  // False if the cache does not have the first checksum of the file. Otherwise pSum is what First returns.
  bool TryFindFirst(TDuplicateFile& pFile, std::optional<TFileSum>& pSum);
  bool ReadWhole(IStoredFile& pFile, int64_t pSize, const TGoesOn& pGoesOn);
  bool ReadPieces(IStoredFile& pFile, int64_t pSize, const TGoesOn& pGoesOn);
  bool ReadPiece(IStoredFile& pFile, int64_t pLength, HashUtils::IHashCalculator& pCalculator, const TGoesOn& pGoesOn);
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

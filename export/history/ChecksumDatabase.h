#pragma once

// The checksums of a search for duplicates in an SQLite file, for the next search.

#include <boost/unordered/unordered_flat_map.hpp>
#include <chrono>
#include <string>
#include <unordered_set>
#include <vector>

#include "export/history/SQLiteDatabase.h"
#include "platform/threads/CriticalSection.h"
#include "search/duplicates/ChecksumCache.h"

namespace Vantrel::History {

// The table CHECKSUMS has one row for each file and kind of checksum, with the size and the dates of change that the
// file had. A file that changes gets another row in place of the first. Rows of files that are gone stay. Each row has
// a checksum of itself, so that a damaged one is never taken for a file's.
//
// The first failure ends the use of the file: from then on nothing is found and nothing is kept. Any thread and other
// programs may use the file at the same time.
class TChecksumDatabase final : public TInterfaced<Search::IChecksumCache> {
 public:
  // A search does not wait long for a file that other programs use.
  static constexpr int kBusyMilliseconds = 2000;

  // Creates the file if it is missing. Only an empty file is made a cache; files of other kinds are never changed.
  explicit TChecksumDatabase(const std::u16string& pFile, int pBusyMilliseconds = kBusyMilliseconds);

  std::optional<HashUtils::TMD5Hash> Find(const TStoredFileFacts& pFacts, Search::TCachedSumKind pKind) override;
  // Written to the file in a while.
  void Add(const TStoredFileFacts& pFacts, Search::TCachedSumKind pKind, const HashUtils::TMD5Hash& pHash) override;
  // Writes what is not in the file yet.
  void Flush();
  // Why the file is no longer used: one line for the user. Empty as long as it is.
  std::string Problem() const;

 private:
  using TClock = std::chrono::steady_clock;
  struct TRow {
    TStoredFileFacts fFacts;
    Search::TCachedSumKind fKind;
    HashUtils::TMD5Hash fHash;
  };

  void RequireCache() REQUIRES(fFileLock);
  std::optional<HashUtils::TMD5Hash> FindLoaded(const HashUtils::TMD5Hash& pKey) const REQUIRES(fLock);
  void LoadVolume(uint64_t pVolume) REQUIRES(fFileLock, fLock);
  void Write(const std::vector<TRow>& pRows) REQUIRES(fFileLock);
  // In an exception handler.
  void GiveUp() REQUIRES(fLock);

  // Taken before fLock.
  mutable TCriticalSection fFileLock;
  TKIVSQLiteDatabase fDatabase GUARDED_BY(fFileLock);
  mutable TCriticalSection fLock;
  // A file with many kept checksums has millions of rows. So the key is a checksum of all that a row is found by.
  boost::unordered_flat_map<HashUtils::TMD5Hash, HashUtils::TMD5Hash, HashUtils::THashOfMD5Hash> fSums
      GUARDED_BY(fLock);
  std::unordered_set<uint64_t> fLoadedVolumes GUARDED_BY(fLock);
  std::vector<TRow> fAdded GUARDED_BY(fLock);
  TClock::time_point fLastWrite GUARDED_BY(fLock);
  std::string fProblem GUARDED_BY(fLock);
};

}  // namespace Vantrel::History

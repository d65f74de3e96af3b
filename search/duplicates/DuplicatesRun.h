#pragma once

// What the workers of one search for duplicates share: whether it goes on, progress, notes, the names of each file.

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/tree/Tokens.h"
#include "platform/threads/CriticalSection.h"
#include "search/duplicates/DuplicateSettings.h"

namespace Vantrel::Search {

class TChecksumReader;

enum class TDuplicatesPhase : uint8_t { dpSmallChecksums, dpBigChecksums, dpFolderChecksums, dpIdentifying };

// Outlives the work items. Any thread.
class TDuplicatesRun final {
 public:
  TDuplicatesRun(TDuplicateSearchSettings pSettings, TRef<TCancellationToken> pToken);
  ~TDuplicatesRun();

  const TDuplicateSearchSettings& Settings() const { return fSettings; }
  const TRef<TCancellationToken>& Token() const { return fToken; }
  HashUtils::TChecksumKind ChecksumKind() const;

  void SetPaused(bool pPaused);
  bool IsPaused() const { return fIsPaused.load(std::memory_order_relaxed); }
  bool IsCanceled() const { return fToken->IsCancelled(); }
  // Waits for the next change after those counted so far, at most 100 ms.
  uint64_t CountChanges() const { return fChanges.load(); }
  void WaitForChange(uint64_t pSeen);
  void TellChange();

  // Whether no other name of the file was opened before. Otherwise the file becomes a further name of that one.
  bool IsFirstName(TDuplicateFile& pFile, const TStoredFileFacts& pFacts);

  // The file is in no group from now on.
  void Leave(TDuplicateFile& pFile, std::u16string pWhy);
  void AddNote(TDuplicateNote pNote);
  std::vector<TDuplicateNote> Notes() const;

  void BeginPhase(TDuplicatesPhase pPhase, int64_t pFiles, int64_t pBytes);
  void CountFile() { fFiles.fetch_add(1, std::memory_order_relaxed); }
  void CountBytes(size_t pBytes) { fBytes.fetch_add(static_cast<int64_t>(pBytes), std::memory_order_relaxed); }
  void CountDuplicate() { fDuplicates.fetch_add(1, std::memory_order_relaxed); }
  TDuplicateProgress GetProgress() const;

  // A reader that no other worker uses, with its buffers.
  std::unique_ptr<TChecksumReader> TakeReader();
  void GiveReader(std::unique_ptr<TChecksumReader> pReader);

 private:
  struct TNameKey {
    uint64_t fVolume;
    uint64_t fId;
    uint64_t fIdHigh;
    uint32_t fBucket;
    bool operator==(const TNameKey&) const = default;
  };
  struct THashOfNameKey {
    size_t operator()(const TNameKey& pKey) const noexcept {
      const std::array<uint64_t, 4> words{pKey.fVolume, pKey.fId, pKey.fIdHigh, pKey.fBucket};
      return HashUtils::Fnv1a({reinterpret_cast<const uint8_t*>(words.data()), sizeof words});
    }
  };

  const TDuplicateSearchSettings fSettings;
  const TRef<TCancellationToken> fToken;
  std::atomic<bool> fIsPaused{false};
  std::atomic<TDuplicatesPhase> fPhase{TDuplicatesPhase::dpIdentifying};
  std::atomic<int64_t> fFiles{0};
  std::atomic<int64_t> fAllFiles{0};
  std::atomic<int64_t> fBytes{0};
  std::atomic<int64_t> fAllBytes{0};
  std::atomic<int64_t> fDuplicates{0};
  mutable TCriticalSection fLock;
  std::condition_variable fChanged;
  std::atomic<uint64_t> fChanges{0};
  std::unordered_map<TNameKey, TDuplicateFile*, THashOfNameKey> fFirstNames GUARDED_BY(fLock);
  std::vector<TDuplicateNote> fNotes GUARDED_BY(fLock);
  std::vector<std::unique_ptr<TChecksumReader>> fReaders GUARDED_BY(fLock);
};

}  // namespace Vantrel::Search

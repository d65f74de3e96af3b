#include "search/duplicates/DuplicatesRun.h"

#include <algorithm>
#include <utility>

#include "search/duplicates/ChecksumReader.h"

namespace Vantrel::Search {

namespace {

constexpr int64_t kMillisecondsBetweenLooks = 100;

// In the order of TDuplicatesPhase.
constexpr std::string_view kPhaseTexts[] = {"Calculating small file checksums.", "Calculating big file checksums.",
                                            "Calculating folder checksums.", "Identifying duplicates."};

}  // namespace

TDuplicatesRun::TDuplicatesRun(TDuplicateSearchSettings pSettings, TRef<TCancellationToken> pToken)
    : fSettings(std::move(pSettings)), fToken(std::move(pToken)) {}

TDuplicatesRun::~TDuplicatesRun() = default;

HashUtils::TChecksumKind TDuplicatesRun::ChecksumKind() const {
  const TDuplicatesCompareTypes& types = fSettings.fDuplicatesCompareTypes;
  if (ComparesBy(types, TDuplicatesCompareType::ctSHA256)) return HashUtils::TChecksumKind::ckSHA256;
  if (ComparesBy(types, TDuplicatesCompareType::ctMD5)) return HashUtils::TChecksumKind::ckMD5;
  return HashUtils::TChecksumKind::ckFast;
}

void TDuplicatesRun::SetPaused(bool pPaused) {
  fIsPaused = pPaused;
  TellChange();
}

void TDuplicatesRun::WaitForChange(uint64_t pSeen) {
  TCriticalSectionLock lock(fLock);
  if (fChanges == pSeen) lock.WaitFor(fChanged, kMillisecondsBetweenLooks);
}

void TDuplicatesRun::TellChange() {
  TCriticalSectionLock lock(fLock);
  ++fChanges;
  fChanged.notify_all();
}

bool TDuplicatesRun::IsFirstName(TDuplicateFile& pFile, const TStoredFileFacts& pFacts) {
  if (!pFacts.HasId()) return true;
  TCriticalSectionLock lock(fLock);
  const TNameKey key{pFacts.fVolume, pFacts.fId, pFacts.fIdHigh, pFile.fBucket};
  const auto [entry, isNew] = fFirstNames.try_emplace(key, &pFile);
  if (isNew) return true;
  TDuplicateFile& first = *entry->second;
  pFile.fPrimary = &first;
  pFile.fNextLink = std::exchange(first.fNextLink, &pFile);
  return false;
}

void TDuplicatesRun::Leave(TDuplicateFile& pFile, std::u16string pWhy) {
  pFile.fHasLeft = true;
  AddNote({pFile.GetFullPath(), std::move(pWhy)});
}

void TDuplicatesRun::AddNote(TDuplicateNote pNote) {
  TCriticalSectionLock lock(fLock);
  fNotes.push_back(std::move(pNote));
}

std::vector<TDuplicateNote> TDuplicatesRun::Notes() const {
  TCriticalSectionLock lock(fLock);
  std::vector<TDuplicateNote> notes = fNotes;
  std::sort(notes.begin(), notes.end());
  return notes;
}

void TDuplicatesRun::BeginPhase(TDuplicatesPhase pPhase, int64_t pFiles, int64_t pBytes) {
  fPhase = pPhase;
  fFiles = 0;
  fAllFiles = pFiles;
  fBytes = 0;
  fAllBytes = pBytes;
}

TDuplicateProgress TDuplicatesRun::GetProgress() const {
  return {kPhaseTexts[static_cast<size_t>(fPhase.load())], fFiles, fAllFiles, fBytes, fAllBytes, fDuplicates};
}

std::unique_ptr<TChecksumReader> TDuplicatesRun::TakeReader() {
  {
    TCriticalSectionLock lock(fLock);
    if (!fReaders.empty()) {
      std::unique_ptr<TChecksumReader> reader = std::move(fReaders.back());
      fReaders.pop_back();
      return reader;
    }
  }
  return std::make_unique<TChecksumReader>(*this);
}

void TDuplicatesRun::GiveReader(std::unique_ptr<TChecksumReader> pReader) {
  TCriticalSectionLock lock(fLock);
  fReaders.push_back(std::move(pReader));
}

}  // namespace Vantrel::Search

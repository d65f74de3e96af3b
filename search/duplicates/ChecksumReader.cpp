#include "search/duplicates/ChecksumReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"

namespace Vantrel::Search {

namespace {

constexpr size_t kBlock = 256 << 10;
// A file that is at most this many times as long as the small checksum is read as a whole at once: opening it again
// would cost more.
constexpr int64_t kSmallSumsInWhole = 4;
// From this size on, the end of a file is looked at as well.
constexpr int64_t kWithEnd = 1 << 20;
// Pieces are small beside what lies between them, so that it costs little to look at them in vain. Two files that
// differ in a longer stretch of bytes are told apart without reading them as a whole.
constexpr int64_t kPiece = 4 << 10;
constexpr int64_t kBetweenPieces = 256 << 10;
// On a rotating disk, a piece takes as long as a megabyte of what follows it.
constexpr int64_t kBetweenPiecesInOrder = 16 << 20;
constexpr int64_t kFewestPieces = 64;
constexpr int64_t kMostPieces = 4096;
// How many files are open at a time while their bytes are compared.
constexpr size_t kMostCompared = 32;
// Two changes may have one date if the clock of the file system is coarse. The coarsest ones count every other second.
constexpr int64_t kSettled = 2 * TKivFileTime::kTicksPerSecond;

int64_t BetweenPieces(int64_t pSize, bool pInOrder) {
  const int64_t between = pInOrder ? kBetweenPiecesInOrder : kBetweenPieces;
  return std::max(between, pSize / kMostPieces / kPiece * kPiece);
}

// Whether the pass reads the whole file.
bool ReadsWhole(int64_t pSize, TChecksumPass pPass, int64_t pSmall) {
  return pPass == TChecksumPass::cpWhole || pSmall == 0 || pSize <= kSmallSumsInWhole * pSmall;
}

}  // namespace

bool TChecksumReader::HasPieces(int64_t pSize, const TDuplicateSearchSettings& pSettings) {
  const int64_t between = std::max(BetweenPieces(pSize, pSettings.fReadsInOrder), pSettings.fSmallChecksumSize);
  return pSettings.fSmallChecksumSize > 0 && pSize >= kFewestPieces * between;
}

std::vector<TChecksumReader::TPart> TChecksumReader::PartsOf(int64_t pSize, TChecksumPass pPass,
                                                             const TDuplicateSearchSettings& pSettings) {
  const int64_t small = pSettings.fSmallChecksumSize;
  if (ReadsWhole(pSize, pPass, small)) return {{0, pSize}};
  std::vector<TPart> parts;
  if (pPass == TChecksumPass::cpFirst) {
    parts.push_back({0, small});
    if (pSize >= std::max(kWithEnd, 2 * small)) parts.push_back({pSize - small, small});
  } else {
    const int64_t between = BetweenPieces(pSize, pSettings.fReadsInOrder);
    for (int64_t end = between; end < pSize; end += between) parts.push_back({end - kPiece, kPiece});
  }
  return parts;
}

int64_t TChecksumReader::BytesOf(int64_t pSize, TChecksumPass pPass, const TDuplicateSearchSettings& pSettings) {
  int64_t bytes = 0;
  for (const TPart& part : PartsOf(pSize, pPass, pSettings)) bytes += part.fLength;
  return bytes;
}

TChecksumReader::TChecksumReader(TDuplicatesRun& pRun)
    : fRun(pRun),
      fSmall(pRun.Settings().fSmallChecksumSize),
      fReadsContents(ComparesContents(pRun.Settings().fDuplicatesCompareTypes)),
      fSmallCalculator(CreateHashCalculator(HashUtils::TChecksumKind::ckFast)),
      fCalculator(CreateHashCalculator(pRun.ChecksumKind())),
      fBuffer(kBlock) {}

bool TChecksumReader::IsWhole(int64_t pSize, TChecksumPass pPass) const {
  return ReadsWhole(pSize, pPass, fSmall);
}

TCachedSumKind TChecksumReader::CachedKind(int64_t pSize, TChecksumPass pPass) const {
  if (IsWhole(pSize, pPass)) return CachedSumOfAll(fRun.ChecksumKind());
  if (pPass == TChecksumPass::cpFirst) return CachedSmallSum(fSmall);
  return CachedSumOfPieces(BetweenPieces(pSize, fRun.Settings().fReadsInOrder));
}

std::optional<TFileSum> TChecksumReader::Sum(TDuplicateFile& pFile, TChecksumPass pPass, const TGoesOn& pGoesOn) {
  std::optional<TFileSum> known;
  if (TryFind(pFile, pPass, known)) return known;
  TOpened opened = Open(pFile);
  if (pPass == TChecksumPass::cpFirst && !fRun.IsFirstName(pFile, opened.fFacts)) return {};
  if (!fReadsContents) return TFileSum{{}, true};
  const int64_t size = opened.fFacts.fSize;
  const bool isWhole = IsWhole(size, pPass);
  HashUtils::IHashCalculator& calculator = isWhole ? *fCalculator : *fSmallCalculator;
  if (!ReadParts(*opened.fFile, PartsOf(size, pPass, fRun.Settings()), calculator, pGoesOn)) return {};
  CheckUnchanged(opened);
  const TMD5Hash hash = calculator.Finish();
  if (const TRef<IChecksumCache>& cache = fRun.Settings().fCache; cache && opened.fIsSettled)
    cache->Add(opened.fFacts, CachedKind(size, pPass), hash);
  return TFileSum{hash, isWhole};
}

bool TChecksumReader::TryFind(TDuplicateFile& pFile, TChecksumPass pPass, std::optional<TFileSum>& pSum) {
  const TRef<IStorage>& storage = pFile.fItem.fFolder->fStorage;
  const TRef<IChecksumCache>& cache = fRun.Settings().fCache;
  if (!cache || !storage || !fReadsContents) return false;
  const std::optional<TStoredFileFacts> facts = storage->QueryFacts(pFile.GetFullPath());
  if (!facts) return false;
  const std::optional<TMD5Hash> sum = cache->Find(*facts, CachedKind(facts->fSize, pPass));
  if (!sum) return false;
  CheckFacts(pFile, *facts);
  const bool isFirst = pPass == TChecksumPass::cpFirst;
  if (isFirst && !fRun.IsFirstName(pFile, *facts)) return true;
  pSum = TFileSum{*sum, IsWhole(facts->fSize, pPass)};
  if (isFirst && !pSum->fIsWhole)
    pSum->fKnownWhole = cache->Find(*facts, CachedKind(facts->fSize, TChecksumPass::cpWhole));
  return true;
}

// What an earlier reading left in the calculators, when it ended in the middle, is thrown away here.
TChecksumReader::TOpened TChecksumReader::Open(TDuplicateFile& pFile) const {
  fSmallCalculator->Finish();
  fCalculator->Finish();
  const TRef<IStorage>& storage = pFile.fItem.fFolder->fStorage;
  if (!storage) throw EFileChanged("cannot be opened, since it is part of a saved scan");
  TOpened opened{storage->OpenFile(pFile.GetFullPath(), {TRef<ICancellationIndicator>(fRun.Token().get())}), {}};
  opened.fFacts = opened.fFile->GetFacts();
  const TStoredFileFacts& facts = opened.fFacts;
  opened.fIsSettled = facts.HasId() && facts.fStatusChange.IsSet() &&
                      std::max(facts.fStatusChange, facts.fLastChange).fTicks + kSettled < TKivFileTime::Now().fTicks;
  CheckFacts(pFile, facts);
  return opened;
}

void TChecksumReader::CheckFacts(TDuplicateFile& pFile, const TStoredFileFacts& pFacts) {
  const bool isSame = pFacts.fSize == pFile.GetSize() && (!pFile.fIsOpened || pFacts.fLastChange == pFile.fFirstChange);
  if (!isSame) throw EFileChanged("changed during the search");
  pFile.fIsOpened = true;
  pFile.fFirstChange = pFacts.fLastChange;
}

// A new name or other rights are no change of the contents. But the checksum is then not kept.
void TChecksumReader::CheckUnchanged(TOpened& pOpened) const {
  TStoredFileFacts now = pOpened.fFile->GetFacts();
  if (now.fStatusChange != pOpened.fFacts.fStatusChange) pOpened.fIsSettled = false;
  now.fStatusChange = pOpened.fFacts.fStatusChange;
  if (now != pOpened.fFacts) throw EFileChanged("changed while it was read");
}

bool TChecksumReader::ReadParts(IStoredFile& pFile, std::span<const TPart> pParts,
                                HashUtils::IHashCalculator& pCalculator, const TGoesOn& pGoesOn) {
  int64_t position = 0;
  for (const TPart& part : pParts) {
    if (part.fOffset > position && !pFile.TrySeek(static_cast<uint64_t>(part.fOffset)))
      throw EFileChanged("can only be read from its start");
    for (int64_t left = part.fLength; left > 0;) {
      if (!pGoesOn()) return false;
      const size_t wanted = static_cast<size_t>(std::min<int64_t>(left, static_cast<int64_t>(fBuffer.size())));
      const size_t length = pFile.Read(fBuffer.data(), wanted);
      if (length == 0) throw EFileChanged("became shorter while it was read");
      pCalculator.Add({fBuffer.data(), length});
      fRun.CountBytes(length);
      left -= static_cast<int64_t>(length);
    }
    position = part.fOffset + part.fLength;
  }
  return true;
}

size_t TChecksumReader::Fill(IStoredFile& pFile, char* pBuffer, size_t pLength) const {
  size_t filled = 0;
  while (filled < pLength) {
    const size_t length = pFile.Read(pBuffer + filled, pLength - filled);
    if (length == 0) break;
    filled += length;
  }
  fRun.CountBytes(filled);
  return filled;
}

// --- bytes -----------------------------------------------------------------------------------------------------------

std::optional<std::vector<bool>> TChecksumReader::AreEqual(std::span<const TRef<TDuplicateFile>> pFiles,
                                                           const TGoesOn& pGoesOn) {
  std::vector<bool> areEqual{true};
  const auto others = pFiles.subspan(1);
  for (size_t begin = 0; begin < others.size(); begin += kMostCompared) {
    const auto some = others.subspan(begin, std::min(kMostCompared, others.size() - begin));
    if (!CompareSome(*pFiles.front(), some, areEqual, pGoesOn)) return {};
  }
  return areEqual;
}

bool TChecksumReader::CompareSome(TDuplicateFile& pFirst, std::span<const TRef<TDuplicateFile>> pOthers,
                                  std::vector<bool>& pAreEqual, const TGoesOn& pGoesOn) {
  TOpened first = Open(pFirst);
  std::vector<TOpened> opened(pOthers.size());
  // Does something with each file that is still equal.
  const auto forEach = [&](const auto& pDo) {
    for (size_t i = 0; i < pOthers.size(); ++i) {
      try {
        if (opened[i].fFile && !pDo(opened[i])) opened[i] = {};
      } catch (...) {
        opened[i] = {};
        fRun.Leave(*pOthers[i], ReasonOfCaughtException(*pOthers[i]));
      }
    }
  };
  for (size_t i = 0; i < pOthers.size(); ++i) {
    try {
      opened[i] = Open(*pOthers[i]);
    } catch (...) {
      fRun.Leave(*pOthers[i], ReasonOfCaughtException(*pOthers[i]));
    }
  }
  std::vector<char> block(fBuffer.size());
  size_t length = 0;
  do {
    if (!pGoesOn()) return false;
    length = Fill(*first.fFile, fBuffer.data(), fBuffer.size());
    forEach([&](TOpened& pOther) {
      return Fill(*pOther.fFile, block.data(), block.size()) == length &&
             std::memcmp(block.data(), fBuffer.data(), length) == 0;
    });
  } while (length == fBuffer.size());
  CheckUnchanged(first);
  forEach([&](TOpened& pOther) {
    CheckUnchanged(pOther);
    return true;
  });
  for (const TOpened& other : opened) pAreEqual.push_back(other.fFile != nullptr);
  return true;
}

std::u16string ReasonOfCaughtException(const TDuplicateFile& pFile) {
  try {
    throw;
  } catch (const EFileChanged& error) {
    return FromUtf8(error.what());
  } catch (...) {
    const uint32_t code = CodeOfCaughtException("TChecksumReader");
    const TRef<IStorage>& storage = pFile.fItem.fFolder->fStorage;
    return FromUtf8(storage ? storage->ErrorText(code) : OSErrorText(code));
  }
}

}  // namespace Vantrel::Search

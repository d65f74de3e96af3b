#include "scan/ntfs/MftReader.h"

#include <algorithm>

#include "platform/system/Errors.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

size_t TOverlappedBufferList::CountFor(int pThreads, int64_t pBytes) {
  const int64_t useful = pBytes / static_cast<int64_t>(TOverlappedBufferListItem::kSize) + 1;
  return static_cast<size_t>(std::min<int64_t>(std::clamp(pThreads, 2, 4), useful));
}

TOverlappedBufferList::TOverlappedBufferList(IVolumeReader& pReader, const TMftLocation& pLocation, int64_t pOffset,
                                             int64_t pBytes, int pThreads)
    : fReader(pReader), fLocation(pLocation), fItems(CountFor(pThreads, pBytes)), fBytesLeft(pBytes) {
  const int64_t cluster = fLocation.fData.fBytesPerCluster;
  const std::vector<TDataRun>& runs = fLocation.fRuns.Runs();
  while (fRun < runs.size() && pOffset >= runs[fRun].fLength * cluster) pOffset -= runs[fRun++].fLength * cluster;
  fOffsetInRun = pOffset;
  for (size_t i = 0; i < fItems.size(); ++i) {
    fItems[i].fBuffer = std::make_unique<std::byte[]>(TOverlappedBufferListItem::kSize);
    StartNext(i);
  }
}

void TOverlappedBufferList::StartNext(size_t pItem) {
  TOverlappedBufferListItem& item = fItems[pItem];
  item.fLength = 0;
  const std::vector<TDataRun>& runs = fLocation.fRuns.Runs();
  if (fBytesLeft <= 0 || fRun >= runs.size()) return;
  const int64_t cluster = fLocation.fData.fBytesPerCluster;
  const TDataRun& run = runs[fRun];
  const int64_t left = std::min(run.fLength * cluster - fOffsetInRun, fBytesLeft);
  item.fLength = static_cast<size_t>(std::min<int64_t>(left, TOverlappedBufferListItem::kSize));
  item.fIsHole = run.fStart == TDataRun::kHole;
  item.fError = 0;
  const int64_t position = run.fStart * cluster + fOffsetInRun;
  if (!item.fIsHole && position > fLocation.fPart.fLength - static_cast<int64_t>(item.fLength)) {
    item.fError = kErrorTruncated;
  } else if (!item.fIsHole) {
    try {
      fReader.Start(pItem, fLocation.fPart.fPosition + position, {item.fBuffer.get(), item.fLength});
    } catch (const EOSError& error) {
      item.fError = error.Code();
    }
  }
  fBytesLeft -= static_cast<int64_t>(item.fLength);
  fOffsetInRun += static_cast<int64_t>(item.fLength);
  if (fOffsetInRun < run.fLength * cluster) return;
  ++fRun;
  fOffsetInRun = 0;
}

// Waits for the item's bytes. Those that could not be read become zeros, so that no old record is read again.
void TOverlappedBufferList::Finish(size_t pItem, uint32_t& pError) {
  TOverlappedBufferListItem& item = fItems[pItem];
  pError = item.fError;
  size_t got = 0;
  if (!item.fIsHole && pError == 0) {
    try {
      got = fReader.Wait(pItem);
      if (got < item.fLength) pError = kErrorTruncated;
    } catch (const EOSError& error) {
      pError = error.Code();
    }
  }
  if (got < item.fLength) std::fill(item.fBuffer.get() + got, item.fBuffer.get() + item.fLength, std::byte{0});
}

bool TOverlappedBufferList::Next(std::span<std::byte>& pStretch, uint32_t& pError) {
  if (fHasCurrent) {
    StartNext(fCurrent);
    fCurrent = (fCurrent + 1) % fItems.size();
  }
  fHasCurrent = fItems[fCurrent].fLength > 0;
  if (!fHasCurrent) return false;
  Finish(fCurrent, pError);
  pStretch = {fItems[fCurrent].fBuffer.get(), fItems[fCurrent].fLength};
  return true;
}

TReadFileMftEnumerator::TReadFileMftEnumerator(IVolumeReader& pReader, const TMftLocation& pLocation,
                                               std::function<bool()> pIsCancelled, bool pCompatible, int pThreads)
    : fReader(pReader),
      fLocation(pLocation),
      fIsCancelled(std::move(pIsCancelled)),
      fCompatible(pCompatible),
      fThreads(pThreads),
      fRecordBytes(pLocation.fData.fBytesPerRecord),
      fRecords(pLocation.fData.fMftValidDataLength / pLocation.fData.fBytesPerRecord),
      fSplit(fRecordBytes) {
  Reset();
}

void TReadFileMftEnumerator::Reset() {
  fBuffers.reset();
  fStretch = {};
  fNumber = -1;
  fWasCancelled = false;
  fUnreadBytes = 0;
  fError = 0;
}

bool TReadFileMftEnumerator::Next() {
  if (!fBuffers) fBuffers.emplace(fReader, fLocation, 0, fRecords * static_cast<int64_t>(fRecordBytes), fThreads);
  while (!fWasCancelled && FetchRecord()) {
    if (TakeRecord()) return true;
    if (fIsCancelled && fIsCancelled()) fWasCancelled = true;
  }
  return false;
}

bool TReadFileMftEnumerator::FetchStretch() {
  if (fIsCancelled && fIsCancelled()) {
    fWasCancelled = true;
    return false;
  }
  uint32_t error = 0;
  if (!fBuffers->Next(fStretch, error)) return false;
  if (error != 0) {
    fUnreadBytes += static_cast<int64_t>(fStretch.size());
    if (fError == 0) fError = error;
  }
  return true;
}

// A record usually lies in one buffer. On a volume with small clusters a run may end inside a record.
bool TReadFileMftEnumerator::FetchRecord() {
  if (fStretch.empty() && !FetchStretch()) return false;
  if (fStretch.size() >= fRecordBytes) {
    fRecord = fStretch.first(fRecordBytes);
    fStretch = fStretch.subspan(fRecordBytes);
  } else {
    size_t filled = 0;
    while (filled < fRecordBytes) {
      if (fStretch.empty() && !FetchStretch()) return false;
      const size_t part = std::min(fRecordBytes - filled, fStretch.size());
      std::copy_n(fStretch.begin(), part, fSplit.begin() + static_cast<std::ptrdiff_t>(filled));
      fStretch = fStretch.subspan(part);
      filled += part;
    }
    fRecord = fSplit;
  }
  ++fNumber;
  return true;
}

bool TReadFileMftEnumerator::TakeRecord() {
  const std::optional<TRecordHeader> header = ReadRecordHeader(fRecord);
  if (!header || !IsRecordUsable(*header, fCompatible)) return false;
  fHeader = *header;
  fIsTorn = !ApplyFixUps(fRecord, fHeader, fCompatible);
  if (fCompatible) {
    const size_t first = fHeader.fFirstAttribute;
    fIsExtension =
        fHeader.fBase != 0 || first + 4 > fRecord.size() || NumberAt<uint32_t>(fRecord, first) != kStandardInformation;
  } else {
    fIsExtension = fHeader.fBase != 0;
  }
  return true;
}

}  // namespace Vantrel::Ntfs

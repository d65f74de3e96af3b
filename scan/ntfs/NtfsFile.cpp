#include "scan/ntfs/NtfsFile.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/system/Errors.h"
#include "scan/ntfs/Lznt1.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

constexpr int64_t kBlock = int64_t{256} << 10;

}  // namespace

TNtfsFile::TNtfsFile(std::shared_ptr<IVolumeReader> pReader, std::shared_ptr<const TMftLocation> pLocation,
                     TStreamLocation pStream, TStoredFileFacts pFacts, std::u16string pPath)
    : fReader(std::move(pReader)),
      fLocation(std::move(pLocation)),
      fStream(std::move(pStream)),
      fFacts(pFacts),
      fPath(std::move(pPath)),
      fClusterBytes(fLocation->fData.fBytesPerCluster) {
  int64_t start = 0;
  for (const TDataRun& run : fStream.fRuns.Runs()) {
    fRunStarts.push_back(start);
    start += run.fLength;
  }
  fBlock = fStream.fBytes;
}

void TNtfsFile::Fail(uint32_t pCode) const {
  throw EOSError(pCode, "Reading a file of a volume", fPath);
}

// The cluster must be one of the file's.
TNtfsFile::TPlace TNtfsFile::PlaceOf(int64_t pCluster) const {
  const auto next = std::upper_bound(fRunStarts.begin(), fRunStarts.end(), pCluster);
  const auto run = static_cast<size_t>(next - fRunStarts.begin()) - 1;
  return {run, pCluster - fRunStarts[run]};
}

size_t TNtfsFile::Read(char* pBuffer, size_t pLength) {
  const int64_t left = fStream.fSize - fPosition;
  if (left <= 0 || pLength == 0) return 0;
  auto length = static_cast<size_t>(std::min<uint64_t>(pLength, static_cast<uint64_t>(left)));
  if (fPosition >= fStream.fInitializedSize) {
    std::memset(pBuffer, 0, length);
  } else {
    const bool isInBlock = fPosition >= fBlockStart && fPosition - fBlockStart < static_cast<int64_t>(fBlock.size());
    if (!isInBlock) FillBlock();
    const auto offset = static_cast<size_t>(fPosition - fBlockStart);
    const auto initialized = static_cast<size_t>(
        std::min<int64_t>(static_cast<int64_t>(fBlock.size() - offset), fStream.fInitializedSize - fPosition));
    length = std::min(length, initialized);
    std::memcpy(pBuffer, fBlock.data() + offset, length);
  }
  fPosition += static_cast<int64_t>(length);
  return length;
}

uint64_t TNtfsFile::SkipZeros() {
  const int64_t end = std::min(fStream.fInitializedSize, fStream.fSize);
  int64_t next = fPosition;
  if (fPosition >= end) {
    next = std::max(fPosition, fStream.fSize);
  } else if (!fStream.fIsInRecord) {
    // A unit of compressed contents without any cluster is a hole. Others begin with clusters.
    const int64_t step = std::max<int64_t>(fStream.fClustersInUnit, 1);
    const int64_t cluster = fPosition / fClusterBytes / step * step;
    TPlace place = PlaceOf(cluster);
    int64_t data = cluster;
    while (place.fRun < fRunStarts.size() && IsHoleAt(place)) {
      data = fRunStarts[place.fRun] + fStream.fRuns.Runs()[place.fRun].fLength;
      place = {place.fRun + 1, 0};
    }
    data = data / step * step;
    next = std::max(next, data * fClusterBytes);
    if (next >= end) next = fStream.fSize;
  }
  const int64_t skipped = next - fPosition;
  fPosition = next;
  return static_cast<uint64_t>(skipped);
}

bool TNtfsFile::TrySeek(uint64_t pPosition) {
  constexpr int64_t kFurthest = std::numeric_limits<int64_t>::max();
  fPosition = static_cast<int64_t>(std::min<uint64_t>(pPosition, static_cast<uint64_t>(kFurthest)));
  return true;
}

// Reads the block that holds the position, which is in the initialized part.
void TNtfsFile::FillBlock() {
  fBlock.clear();
  const int64_t unit = std::max<int64_t>(fStream.fClustersInUnit, 1);
  const int64_t first = fPosition / fClusterBytes / unit * unit;
  int64_t clusters = unit;
  if (fStream.fClustersInUnit == 0) {
    clusters = std::max<int64_t>(kBlock / fClusterBytes, 1);
    const int64_t last = (std::min(fStream.fInitializedSize, fStream.fSize) - 1) / fClusterBytes;
    clusters = std::min(clusters, last - first + 1);
  }
  std::vector<std::byte> block(static_cast<size_t>(clusters * fClusterBytes));
  if (fStream.fClustersInUnit == 0)
    ReadClusters(first, block);
  else
    ReadUnit(first, block);
  fBlock = std::move(block);
  fBlockStart = first * fClusterBytes;
}

// Holes leave zeros.
void TNtfsFile::ReadClusters(int64_t pFirst, std::span<std::byte> pBytes) {
  TPlace place = PlaceOf(pFirst);
  while (!pBytes.empty()) {
    if (place.fRun >= fRunStarts.size()) Fail(kErrorDamagedFile);
    const TDataRun& run = fStream.fRuns.Runs()[place.fRun];
    const int64_t bytes = std::min((run.fLength - place.fOffset) * fClusterBytes, static_cast<int64_t>(pBytes.size()));
    const std::span<std::byte> part = pBytes.first(static_cast<size_t>(bytes));
    if (run.fStart == TDataRun::kHole) {
      std::fill(part.begin(), part.end(), std::byte{0});
    } else {
      const int64_t position = (run.fStart + place.fOffset) * fClusterBytes;
      if (bytes > fLocation->fPart.fLength - position) Fail(kErrorTruncatedFile);
      if (ReadVolume(*fReader, fLocation->fPart.fPosition + position, part) < part.size()) Fail(kErrorTruncatedFile);
    }
    pBytes = pBytes.subspan(part.size());
    place = {place.fRun + 1, 0};
  }
}

// How many clusters a unit has on the volume. They come before its holes.
int64_t TNtfsFile::StoredClusters(int64_t pFirst) const {
  const int64_t end = pFirst + fStream.fClustersInUnit;
  int64_t stored = 0;
  bool isHole = false;
  for (TPlace place = PlaceOf(pFirst); place.fRun < fRunStarts.size(); place = {place.fRun + 1, 0}) {
    const int64_t begin = std::max(pFirst, fRunStarts[place.fRun]);
    if (begin >= end) break;
    const int64_t length = std::min(end, fRunStarts[place.fRun] + fStream.fRuns.Runs()[place.fRun].fLength) - begin;
    if (IsHoleAt(place)) {
      isHole = true;
    } else {
      if (isHole) Fail(kErrorDamagedFile);
      stored += length;
    }
  }
  return stored;
}

// A unit with all its clusters is stored plain, one with some of them packed, one without any holds zeros.
void TNtfsFile::ReadUnit(int64_t pFirst, std::span<std::byte> pBytes) {
  const int64_t stored = StoredClusters(pFirst);
  if (stored == fStream.fClustersInUnit) return ReadClusters(pFirst, pBytes);
  if (stored == 0) return;
  fPacked.resize(static_cast<size_t>(stored * fClusterBytes));
  ReadClusters(pFirst, fPacked);
  if (!UnpackLznt1(fPacked, pBytes)) Fail(kErrorDamagedFile);
}

}  // namespace Vantrel::Ntfs

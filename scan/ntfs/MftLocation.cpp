#include "scan/ntfs/MftLocation.h"

#include <algorithm>
#include <array>
#include <bit>

#include "platform/system/Errors.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

constexpr size_t kFirstAnswerSize = 32;
constexpr uint32_t kMoreData = 234;          // Windows' ERROR_MORE_DATA
constexpr size_t kLargestAnswer = 64 << 20;  // four million extents
constexpr size_t kLargestList = 256 << 10;   // NTFS allows no longer attribute list
constexpr int64_t kBitmapStep = 1 << 20;     // bytes of the map of used clusters that are read at once
constexpr int64_t kVolumeRecord = 3;
constexpr int64_t kBitmapRecord = 6;

[[noreturn]] void Fail(uint32_t pCode, const std::u16string& pVolumePath) {
  throw EOSError(pCode, "Opening an NTFS volume", pVolumePath);
}

uint32_t CodeOfKind(TVolumeKind pKind) {
  switch (pKind) {
    case TVolumeKind::vkNtfs:
      return kErrorDamagedBootSector;
    case TVolumeKind::vkFat:
      return kErrorFat;
    case TVolumeKind::vkExFat:
      return kErrorExFat;
    case TVolumeKind::vkReFs:
      return kErrorReFs;
    case TVolumeKind::vkBitLocker:
      return kErrorBitLocker;
    default:
      return kErrorNotNtfs;
  }
}

// Fixes up a record and returns its header. No value for bytes that are no whole record in use.
std::optional<TRecordHeader> OpenRecord(std::span<std::byte> pRecord) {
  const std::optional<TRecordHeader> header = ReadRecordHeader(pRecord);
  if (!header || !IsRecordUsable(*header, false) || !ApplyFixUps(pRecord, *header, false)) return {};
  return header;
}

// The first attribute of this type without a name.
std::optional<TMftAttribute> FindUnnamed(TBytes pRecord, uint32_t pType) {
  const std::optional<TRecordHeader> header = ReadRecordHeader(pRecord);
  if (!header) return {};
  TAttributeWalk walk(pRecord, header->fFirstAttribute);
  for (TMftAttribute attribute; walk.Next(attribute);)
    if (attribute.fType == pType && attribute.fName.empty()) return attribute;
  return {};
}

// Reads a part of a file by its runs. Holes are zeros. Fewer bytes when the runs or the volume end before.
std::vector<std::byte> ReadRuns(IVolumeReader& pReader, const TMftLocation& pLocation, const TDataRuns& pRuns,
                                int64_t pOffset, int64_t pLength) {
  const int64_t cluster = pLocation.fData.fBytesPerCluster;
  std::vector<std::byte> bytes;
  for (const TDataRun& run : pRuns.Runs()) {
    const int64_t runBytes = run.fLength * cluster;
    if (pOffset >= runBytes) {
      pOffset -= runBytes;
      continue;
    }
    const int64_t part = std::min(pLength, runBytes - pOffset);
    const size_t before = bytes.size();
    const int64_t position = run.fStart * cluster + pOffset;
    if (run.fStart != TDataRun::kHole && part > pLocation.fPart.fLength - position) return bytes;
    bytes.resize(before + static_cast<size_t>(part));
    if (run.fStart != TDataRun::kHole) {
      const std::span<std::byte> target(bytes.data() + before, static_cast<size_t>(part));
      const size_t got = ReadVolume(pReader, pLocation.fPart.fPosition + position, target);
      if (got < target.size()) {
        bytes.resize(before + got);
        return bytes;
      }
    }
    pOffset = 0;
    pLength -= part;
    if (pLength == 0) break;
  }
  return bytes;
}

}  // namespace

std::vector<std::byte> ReadAttributeList(IVolumeReader& pReader, const TMftLocation& pLocation,
                                         const TMftAttribute& pList) {
  if (pList.fIsResident) return {pList.fValue.begin(), pList.fValue.end()};
  TDataRuns runs;
  ParseMappingPairs(pList.fMappingPairs, runs);
  const int64_t length = std::clamp<int64_t>(pList.fDataSize, 0, kLargestList);
  return ReadRuns(pReader, pLocation, runs, 0, length);
}

namespace {

// Appends the table's runs that stand in other records. Each of these lies in the part that is known by then.
void AddRunsOfExtensions(IVolumeReader& pReader, TMftLocation& pLocation, TBytes pList) {
  constexpr size_t kSmallestEntry = 26;
  for (size_t at = 0; pList.size() - at >= kSmallestEntry;) {
    const size_t length = NumberAt<uint16_t>(pList, at + 4);
    const bool isUnnamedData = NumberAt<uint32_t>(pList, at) == kData && NumberAt<uint8_t>(pList, at + 6) == 0;
    const auto record = static_cast<int64_t>(RecordOfReference(NumberAt<uint64_t>(pList, at + 16)));
    if (isUnnamedData && record != 0) {
      const std::vector<std::byte> bytes = ReadRecord(pReader, pLocation, record);
      const std::optional<TMftAttribute> data = FindUnnamed(bytes, kData);
      if (!data || data->fIsResident || data->fFirstCluster != pLocation.fRuns.GetTotalLength()) return;
      if (!ParseMappingPairs(data->fMappingPairs, pLocation.fRuns)) return;
    }
    if (length < kSmallestEntry || length > pList.size() - at) return;
    at += length;
  }
}

bool TakeTableRecord(IVolumeReader& pReader, TMftLocation& pLocation, int64_t pCluster) {
  std::vector<std::byte> record(std::max<size_t>(pLocation.fData.fBytesPerRecord, kBytesToIdentify));
  if (pCluster > pLocation.fPart.fLength / pLocation.fData.fBytesPerCluster) return false;
  const int64_t position = pCluster * pLocation.fData.fBytesPerCluster;
  const size_t got = ReadVolume(pReader, pLocation.fPart.fPosition + position, record);
  if (got < pLocation.fData.fBytesPerRecord) return false;
  record.resize(pLocation.fData.fBytesPerRecord);
  if (!OpenRecord(record)) return false;
  const std::optional<TMftAttribute> data = FindUnnamed(record, kData);
  if (!data || data->fIsResident || data->fFirstCluster != 0) return false;
  pLocation.fRuns = {};
  ParseMappingPairs(data->fMappingPairs, pLocation.fRuns);
  if (pLocation.fRuns.Runs().empty() || data->fDataSize <= 0) return false;
  pLocation.fData.fMftValidDataLength = data->fDataSize;
  if (const std::optional<TMftAttribute> list = FindUnnamed(record, kAttributeList))
    AddRunsOfExtensions(pReader, pLocation, ReadAttributeList(pReader, pLocation, *list));
  return true;
}

// The table cannot be longer than its runs, and these not longer than the volume.
void CutTable(TMftLocation& pLocation) {
  const int64_t cluster = pLocation.fData.fBytesPerCluster;
  const int64_t length = std::min(pLocation.fRuns.GetTotalLength(), pLocation.fVolumeBytes / cluster) * cluster;
  pLocation.fData.fMftValidDataLength = std::min(pLocation.fData.fMftValidDataLength, length);
}

}  // namespace

std::optional<TMftVolumeData> AskVolumeData(INtfsDriver& pDriver) {
  std::array<std::byte, INtfsDriver::kVolumeDataSize> answer{};
  if (pDriver.GetVolumeData(answer) != 0) return {};
  return ParseVolumeData(answer);
}

TDataRuns AskTableExtents(INtfsDriver& pDriver, const std::u16string& pVolumePath) {
  for (size_t size = kFirstAnswerSize; size <= kLargestAnswer; size *= 2) {
    std::vector<std::byte> answer(size);
    const uint32_t code = pDriver.GetTableExtents(answer);
    if (code == kMoreData) continue;
    if (code != 0) throw EOSError(code, "Asking for the extents of the file table", pVolumePath + u"$mft");
    TDataRuns runs;
    if (!ParseRetrievalPointers(answer, runs)) break;
    return runs;
  }
  Fail(kErrorDamagedTable, pVolumePath);
}

TMftLocation LocateTable(IVolumeReader& pReader, TVolumePart pPart, const std::u16string& pVolumePath) {
  if (pPart.fLength == 0) Fail(kErrorEmptyImage, pVolumePath);
  std::vector<std::byte> start(kBytesToIdentify);
  start.resize(ReadVolume(pReader, pPart.fPosition, start));
  const std::optional<TBootSector> boot = ReadBootSector(start);
  if (!boot) Fail(CodeOfKind(IdentifyVolume(start)), pVolumePath);
  TMftLocation location;
  location.fPart = pPart;
  location.fData.fBytesPerSector = boot->fBytesPerSector;
  location.fData.fBytesPerCluster = boot->fBytesPerCluster;
  location.fData.fBytesPerRecord = boot->fBytesPerRecord;
  location.fVolumeBytes = boot->fVolumeBytes;
  if (!TakeTableRecord(pReader, location, boot->fTableCluster) &&
      !TakeTableRecord(pReader, location, boot->fMirrorCluster)) {
    const bool isBehindEnd = boot->fTableCluster >= pPart.fLength / boot->fBytesPerCluster;
    Fail(isBehindEnd ? kErrorTruncated : kErrorDamagedTable, pVolumePath);
  }
  CutTable(location);
  return location;
}

std::vector<std::byte> ReadRecord(IVolumeReader& pReader, const TMftLocation& pLocation, int64_t pNumber) {
  const int64_t size = pLocation.fData.fBytesPerRecord;
  if (pNumber >= kMostClusters / size) return {};
  // Whole clusters of a disk or whole sectors are read, since a disk gives nothing less.
  const int64_t step = std::max<int64_t>(size, pLocation.fData.fBytesPerSector);
  const int64_t first = pNumber * size / step * step;
  std::vector<std::byte> bytes = ReadRuns(pReader, pLocation, pLocation.fRuns, first, step);
  const auto skipped = static_cast<size_t>(pNumber * size - first);
  if (bytes.size() < skipped + static_cast<size_t>(size)) return {};
  std::vector<std::byte> record(bytes.begin() + static_cast<std::ptrdiff_t>(skipped),
                                bytes.begin() + static_cast<std::ptrdiff_t>(skipped) + size);
  if (!OpenRecord(record)) return {};
  return record;
}

namespace {

// Clusters whose bit is not set in the volume's map.
int64_t CountFreeClusters(IVolumeReader& pReader, const TMftLocation& pLocation) {
  const std::vector<std::byte> record = ReadRecord(pReader, pLocation, kBitmapRecord);
  const std::optional<TMftAttribute> map = FindUnnamed(record, kData);
  if (!map) return 0;
  const int64_t clusters = pLocation.fVolumeBytes / pLocation.fData.fBytesPerCluster;
  TDataRuns runs;
  if (!map->fIsResident) ParseMappingPairs(map->fMappingPairs, runs);
  int64_t free = 0;
  for (int64_t at = 0; at * 8 < clusters; at += kBitmapStep) {
    const int64_t wanted = std::min(kBitmapStep, (clusters + 7) / 8 - at);
    std::vector<std::byte> bytes;
    if (map->fIsResident)
      bytes.assign(map->fValue.begin(), map->fValue.end());
    else
      bytes = ReadRuns(pReader, pLocation, runs, at, (wanted + 4095) / 4096 * 4096);
    if (static_cast<int64_t>(bytes.size()) < wanted) return 0;
    for (int64_t i = 0; i < wanted; ++i) {
      auto bits = std::to_integer<unsigned>(bytes[static_cast<size_t>(i)]);
      const int64_t rest = clusters - (at + i) * 8;
      if (rest < 8) bits |= 0xFFu << rest;  // clusters behind the end
      free += 8 - std::popcount(bits & 0xFF);
    }
  }
  return free;
}

}  // namespace

TVolumeFacts ReadVolumeFacts(IVolumeReader& pReader, const TMftLocation& pLocation) {
  TVolumeFacts facts;
  try {
    const std::vector<std::byte> record = ReadRecord(pReader, pLocation, kVolumeRecord);
    if (const std::optional<TMftAttribute> name = FindUnnamed(record, kVolumeName)) {
      facts.fLabel.resize(name->fValue.size() / 2);
      if (!facts.fLabel.empty()) std::memcpy(facts.fLabel.data(), name->fValue.data(), 2 * facts.fLabel.size());
    }
    facts.fFreeBytes = CountFreeClusters(pReader, pLocation) * pLocation.fData.fBytesPerCluster;
  } catch (const EOSError&) {  // the tree is complete without it
    CodeOfCaughtException("ReadVolumeFacts");
  }
  return facts;
}

}  // namespace Vantrel::Ntfs

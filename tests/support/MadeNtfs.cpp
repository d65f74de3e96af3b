#include "tests/support/MadeNtfs.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Vantrel::Testing {

namespace {

constexpr size_t kHeader = 56;
constexpr uint32_t kRootNumber = 5;

void PutNumber(TImage& pBytes, size_t pAt, uint64_t pValue, size_t pSize) {
  if (pAt + pSize > pBytes.size()) std::abort();
  for (size_t i = 0; i < pSize; ++i) pBytes[pAt + i] = static_cast<uint8_t>(pValue >> (8 * i));
}

void Append(TImage& pBytes, uint64_t pValue, size_t pSize) {
  for (size_t i = 0; i < pSize; ++i) pBytes.push_back(static_cast<uint8_t>(pValue >> (8 * i)));
}

void AppendText(TImage& pBytes, std::u16string_view pText) {
  for (const char16_t c : pText) Append(pBytes, c, 2);
}

// The fewest bytes that hold the number with its sign.
size_t BytesFor(int64_t pValue) {
  size_t bytes = 1;
  while (bytes < 8 && (pValue < -(int64_t{1} << (8 * bytes - 1)) || pValue >= int64_t{1} << (8 * bytes - 1))) ++bytes;
  return bytes;
}

// The root of an empty index of names.
TImage EmptyIndex() {
  TImage index;
  for (const uint64_t number : {0x30, 1, 4096, 1, 16, 32, 32, 0}) Append(index, number, 4);
  Append(index, 0, 8);
  Append(index, 16, 2);
  Append(index, 0, 2);
  Append(index, 2, 4);  // the last entry
  return index;
}

}  // namespace

TImage MappingPairs(const std::vector<TMadeRun>& pRuns) {
  TImage pairs;
  int64_t before = 0;
  for (const TMadeRun& run : pRuns) {
    const size_t length = BytesFor(run.fLength);
    const size_t start = run.fStart < 0 ? 0 : BytesFor(run.fStart - before);
    pairs.push_back(static_cast<uint8_t>(start << 4 | length));
    Append(pairs, static_cast<uint64_t>(run.fLength), length);
    Append(pairs, static_cast<uint64_t>(run.fStart - before), start);
    if (run.fStart >= 0) before = run.fStart;
  }
  pairs.push_back(0);
  return pairs;
}

TImage MadeAttributeList(const std::vector<std::pair<uint64_t, int64_t>>& pParts) {
  TImage list;
  for (const auto& [record, first] : pParts) {
    Append(list, 0x80, 4);
    Append(list, 32, 2);
    Append(list, 0x1A00, 2);  // no name
    Append(list, static_cast<uint64_t>(first), 8);
    Append(list, Reference(record, 1), 8);
    list.resize((list.size() + 31) / 32 * 32);
  }
  return list;
}

// --- one record ----------------------------------------------------------------------------------------------------

TImage& TMadeRecord::Begin(uint32_t pType, std::u16string_view pName, bool pIsResident, size_t pHeader) {
  const size_t begin = fAttributes.size();
  Append(fAttributes, pType, 4);
  Append(fAttributes, 0, 4);
  Append(fAttributes, pIsResident ? 0 : 1, 1);
  Append(fAttributes, pName.size(), 1);
  Append(fAttributes, pHeader, 2);
  Append(fAttributes, 0, 2);
  Append(fAttributes, fNextId++, 2);
  fAttributes.resize(begin + pHeader);
  AppendText(fAttributes, pName);
  return fAttributes;
}

void TMadeRecord::End(size_t pBegin) {
  while (fAttributes.size() % 8 != 0) fAttributes.push_back(0);
  PutNumber(fAttributes, pBegin + 4, fAttributes.size() - pBegin, 4);
}

TMadeRecord& TMadeRecord::Resident(uint32_t pType, const TImage& pValue, std::u16string_view pName) {
  const size_t begin = fAttributes.size();
  Begin(pType, pName, true, 24);
  while (fAttributes.size() % 8 != 0) fAttributes.push_back(0);
  PutNumber(fAttributes, begin + 16, pValue.size(), 4);
  PutNumber(fAttributes, begin + 20, fAttributes.size() - begin, 2);
  fAttributes.insert(fAttributes.end(), pValue.begin(), pValue.end());
  End(begin);
  return *this;
}

TMadeRecord& TMadeRecord::Stream(uint32_t pType, const TMadeStream& pStream, std::u16string_view pName) {
  const size_t begin = fAttributes.size();
  const bool isCompressed = pStream.fCompressed >= 0;
  Begin(pType, pName, false, isCompressed ? 72 : 64);
  while (fAttributes.size() % 8 != 0) fAttributes.push_back(0);
  int64_t clusters = 0;
  for (const TMadeRun& run : pStream.fRuns) clusters += run.fLength;
  PutNumber(fAttributes, begin + 12, (isCompressed ? 0x8000u : 0u) | pStream.fFlags, 2);
  PutNumber(fAttributes, begin + 16, static_cast<uint64_t>(pStream.fFirstCluster), 8);
  PutNumber(fAttributes, begin + 24, static_cast<uint64_t>(pStream.fFirstCluster + clusters - 1), 8);
  PutNumber(fAttributes, begin + 32, fAttributes.size() - begin, 2);
  PutNumber(fAttributes, begin + 34, isCompressed ? 4 : 0, 2);
  PutNumber(fAttributes, begin + 40, static_cast<uint64_t>(pStream.fAllocated), 8);
  PutNumber(fAttributes, begin + 48, static_cast<uint64_t>(pStream.fSize), 8);
  const int64_t initialized = pStream.fInitialized < 0 ? pStream.fSize : pStream.fInitialized;
  PutNumber(fAttributes, begin + 56, static_cast<uint64_t>(initialized), 8);
  if (isCompressed) PutNumber(fAttributes, begin + 64, static_cast<uint64_t>(pStream.fCompressed), 8);
  const TImage pairs = MappingPairs(pStream.fRuns);
  fAttributes.insert(fAttributes.end(), pairs.begin(), pairs.end());
  End(begin);
  return *this;
}

TMadeRecord& TMadeRecord::Standard(uint32_t pAttributes, int64_t pCreated, int64_t pWritten, int64_t pAccessed) {
  TImage value;
  for (const int64_t time : {pCreated, pWritten, int64_t{0}, pAccessed}) Append(value, static_cast<uint64_t>(time), 8);
  Append(value, pAttributes, 4);
  value.resize(48);
  return Resident(0x10, value);
}

TMadeRecord& TMadeRecord::Name(uint64_t pFolder, std::u16string_view pText, uint8_t pSpace) {
  TImage value;
  Append(value, pFolder, 8);
  value.resize(56);
  Append(value, IsFolder() ? 0x1000'0000 : 0x20, 4);
  Append(value, 0, 4);
  Append(value, pText.size(), 1);
  Append(value, pSpace, 1);
  AppendText(value, pText);
  ++fLinks;
  return Resident(0x30, value);
}

TMadeRecord& TMadeRecord::Reparse(uint32_t pTag) {
  TImage value;
  Append(value, pTag, 4);
  Append(value, 8, 4);
  Append(value, 0, 8);
  return Resident(0xC0, value);
}

TMadeRecord& TMadeRecord::Raw(const TImage& pAttribute) {
  fAttributes.insert(fAttributes.end(), pAttribute.begin(), pAttribute.end());
  return *this;
}

TImage TMadeRecord::Bytes(size_t pSize, uint32_t pNumber) const {
  TMadeRecord copy = *this;
  if (IsFolder()) copy.Resident(0x90, EmptyIndex(), u"$I30");
  const size_t stretches = pSize / 512;
  const size_t first = (kHeader + 2 * (stretches + 1) + 7) / 8 * 8;
  TImage bytes(pSize);
  if (first + copy.fAttributes.size() + 8 > pSize) std::abort();
  std::memcpy(bytes.data(), "FILE", 4);
  PutNumber(bytes, 4, kHeader, 2);
  PutNumber(bytes, 6, stretches + 1, 2);
  PutNumber(bytes, 16, fSequence, 2);
  PutNumber(bytes, 18, fLinks, 2);
  PutNumber(bytes, 20, first, 2);
  PutNumber(bytes, 22, fFlags, 2);
  PutNumber(bytes, 24, first + copy.fAttributes.size() + 8, 4);
  PutNumber(bytes, 28, pSize, 4);
  PutNumber(bytes, 32, fBase, 8);
  PutNumber(bytes, 40, copy.fNextId, 2);
  PutNumber(bytes, 44, pNumber, 4);
  std::copy(copy.fAttributes.begin(), copy.fAttributes.end(), bytes.begin() + static_cast<std::ptrdiff_t>(first));
  PutNumber(bytes, first + copy.fAttributes.size(), 0xFFFF'FFFF, 4);
  PutNumber(bytes, kHeader, 7, 2);  // the number at the ends of all stretches
  for (size_t i = 1; i <= stretches; ++i) {
    const size_t end = 512 * i - 2;
    PutNumber(bytes, kHeader + 2 * i, static_cast<uint64_t>(bytes[end] | bytes[end + 1] << 8), 2);
    PutNumber(bytes, end, fIsTorn && i == 1 ? 6 : 7, 2);
  }
  return bytes;
}

// --- a volume ------------------------------------------------------------------------------------------------------

TMadeVolume::TMadeVolume() {
  // Windows counts the uses of its own records from their numbers.
  TMadeRecord root(TMadeRecord::kUsed | TMadeRecord::kFolder, 5);
  root.Standard(0x6).Name(Reference(5, 5), u".", 3);
  fRecords.emplace(kRootNumber, root);
  TMadeRecord definitions(TMadeRecord::kUsed, 4);
  definitions.Standard(0x6).Name(Reference(5, 5), u"$AttrDef", 3).Data(160);
  fRecords.emplace(4, definitions);
}

uint64_t TMadeVolume::ReferenceTo(uint32_t pRecord) const {
  const auto found = fRecords.find(pRecord);
  return Reference(pRecord, found == fRecords.end() ? 1 : found->second.Sequence());
}

uint32_t TMadeVolume::Add(TMadeRecord pRecord) {
  fRecords.insert_or_assign(fNext, std::move(pRecord));
  return fNext++;
}

uint32_t TMadeVolume::AddFile(uint32_t pFolder, std::u16string_view pName, size_t pBytes) {
  return Add(TMadeRecord().Standard(0x20).Name(ReferenceTo(pFolder), pName).Data(pBytes));
}

uint32_t TMadeVolume::AddFolder(uint32_t pFolder, std::u16string_view pName) {
  TMadeRecord record(TMadeRecord::kUsed | TMadeRecord::kFolder);
  return Add(record.Standard(0).Name(ReferenceTo(pFolder), pName));
}

TImage TMadeVolume::BootSector(int64_t pClusters, int64_t pTable, int64_t pMirror) const {
  TImage boot(512);
  std::memcpy(boot.data() + 3, "NTFS    ", 8);
  PutNumber(boot, 11, fSectorSize, 2);
  const uint32_t sectors = fClusterSize / fSectorSize;
  uint32_t shift = 0;
  while ((1u << shift) < sectors) ++shift;
  PutNumber(boot, 13, sectors <= 128 ? sectors : 256 - shift, 1);
  PutNumber(boot, 40, static_cast<uint64_t>(pClusters) * sectors, 8);
  PutNumber(boot, 48, static_cast<uint64_t>(pTable), 8);
  PutNumber(boot, 56, static_cast<uint64_t>(pMirror), 8);
  uint32_t power = 0;
  while ((1u << power) < fRecordSize) ++power;
  PutNumber(boot, 64, fRecordSize >= fClusterSize ? fRecordSize / fClusterSize : 256 - power, 1);
  PutNumber(boot, 68, 1, 1);
  PutNumber(boot, 510, 0xAA55, 2);
  return boot;
}

namespace {

void MakeTableRecords(std::map<uint32_t, TMadeRecord>& pRecords, const TMadeVolume& pVolume,
                      const std::vector<TMadeRun>& pRuns, int64_t pTableBytes) {
  const size_t here = pVolume.fTableRunsInRecord0 == 0 ? pRuns.size() : pVolume.fTableRunsInRecord0;
  const auto split = pRuns.begin() + static_cast<std::ptrdiff_t>(here);
  const int64_t allocated = (pTableBytes + pVolume.fClusterSize - 1) / pVolume.fClusterSize * pVolume.fClusterSize;
  TMadeRecord table;
  table.Standard(0x6);
  if (split != pRuns.end()) {
    int64_t known = 0;
    for (auto run = pRuns.begin(); run != split; ++run) known += run->fLength;
    table.Resident(0x20, MadeAttributeList({{0, 0}, {15, known}}));
    TMadeRecord rest(TMadeRecord::kUsed, 1, Reference(0, 1));
    rest.Stream(0x80, {0, 0, {split, pRuns.end()}, -1, known});
    pRecords.insert_or_assign(15, rest);
  }
  table.Name(Reference(5, 5), u"$MFT", 3).Stream(0x80, {pTableBytes, allocated, {pRuns.begin(), split}});
  pRecords.insert_or_assign(0, table);
}

}  // namespace

// Boot sector, mirror, map of clusters, then the table unless its runs are given.
TImage TMadeVolume::Image() const {
  uint32_t count = fTableRecords;
  if (!fRecords.empty()) count = std::max(count, fRecords.rbegin()->first + 1);
  const int64_t cluster = fClusterSize;
  const int64_t tableBytes = int64_t{count} * fRecordSize;
  const int64_t tableClusters = (tableBytes + cluster - 1) / cluster;
  const int64_t boot = (8192 + cluster - 1) / cluster;
  const int64_t mirror = boot;
  const int64_t map = mirror + (4 * int64_t{fRecordSize} + cluster - 1) / cluster;
  const int64_t table = map + (65'536 + cluster - 1) / cluster;
  std::vector<TMadeRun> runs = fTableRuns.empty() ? std::vector<TMadeRun>{{table, tableClusters}} : fTableRuns;
  int64_t clusters = fVolumeClusters;
  for (const TMadeRun& run : runs) clusters = std::max(clusters, run.fStart + run.fLength);

  std::map<uint32_t, TMadeRecord> records = fRecords;
  MakeTableRecords(records, *this, runs, tableBytes);
  TImage label;
  AppendText(label, fLabel);
  TMadeRecord volume(TMadeRecord::kUsed, 3);
  TImage version(12);
  version[8] = 3;
  version[9] = 1;
  volume.Standard(0x6).Name(Reference(5, 5), u"$Volume", 3).Resident(0x60, label).Resident(0x70, version);
  records.insert_or_assign(3, volume);
  TMadeRecord bitmap(TMadeRecord::kUsed, 6);
  const int64_t mapBytes = (clusters + 7) / 8;
  bitmap.Standard(0x6).Name(Reference(5, 5), u"$Bitmap", 3);
  bitmap.Stream(0x80, {mapBytes, table * cluster - map * cluster, {{map, table - map}}});
  records.insert_or_assign(6, bitmap);

  TImage image(static_cast<size_t>(clusters * cluster));
  const TImage sector = BootSector(clusters, runs.front().fStart, mirror);
  std::copy(sector.begin(), sector.end(), image.begin());
  auto position = [&](int64_t pOffset) {
    for (const TMadeRun& run : runs) {
      if (pOffset < run.fLength * cluster) return static_cast<size_t>(run.fStart * cluster + pOffset);
      pOffset -= run.fLength * cluster;
    }
    std::abort();
  };
  for (const auto& [number, record] : records) {
    const TImage bytes = record.Bytes(fRecordSize, number);
    // With clusters smaller than a record, a run may end inside it.
    for (size_t i = 0; i < bytes.size(); i += 512)
      std::copy_n(bytes.data() + i, 512,
                  image.data() + position(int64_t{number} * fRecordSize + static_cast<int64_t>(i)));
    if (number < 4) std::copy(bytes.begin(), bytes.end(), image.begin() + mirror * cluster + number * fRecordSize);
  }
  if (fDamageFirstRecord) image[position(0)] = 'X';
  auto use = [&](int64_t pCluster) { image[static_cast<size_t>(map * cluster + pCluster / 8)] |= 1 << (pCluster % 8); };
  for (int64_t i = 0; i < table; ++i) use(i);
  for (const TMadeRun& run : runs)
    for (int64_t i = 0; i < run.fLength; ++i) use(run.fStart + i);
  return image;
}

// --- disks ---------------------------------------------------------------------------------------------------------

namespace {

constexpr size_t kSector = 512;
constexpr size_t kFirstPartition = 64 * kSector;

void PutEntry(TImage& pDisk, size_t pTable, size_t pIndex, uint8_t pType, uint64_t pFirst, uint64_t pSectors) {
  const size_t at = pTable + 446 + 16 * pIndex;
  PutNumber(pDisk, at + 4, pType, 1);
  PutNumber(pDisk, at + 8, pFirst, 4);
  PutNumber(pDisk, at + 12, pSectors, 4);
  PutNumber(pDisk, pTable + 510, 0xAA55, 2);
}

size_t AppendPartition(TImage& pDisk, const TImage& pPartition) {
  const size_t at = pDisk.size();
  pDisk.insert(pDisk.end(), pPartition.begin(), pPartition.end());
  pDisk.resize((pDisk.size() + kFirstPartition - 1) / kFirstPartition * kFirstPartition);
  return at;
}

}  // namespace

TImage MadeMbrDisk(const std::vector<TImage>& pPartitions, const std::vector<TImage>& pLogical) {
  TImage disk(kFirstPartition);
  size_t index = 0;
  for (const TImage& partition : pPartitions) {
    const size_t at = AppendPartition(disk, partition);
    PutEntry(disk, 0, index++, 7, at / kSector, partition.size() / kSector);
  }
  if (pLogical.empty()) return disk;
  const size_t extended = disk.size();
  PutEntry(disk, 0, index, 0x0F, extended / kSector, 1 << 20);
  for (size_t i = 0; i < pLogical.size(); ++i) {
    const size_t link = disk.size();
    disk.resize(link + kFirstPartition);
    const size_t at = AppendPartition(disk, pLogical[i]);
    PutEntry(disk, link, 0, 7, (at - link) / kSector, pLogical[i].size() / kSector);
    if (i + 1 < pLogical.size()) PutEntry(disk, link, 1, 5, (disk.size() - extended) / kSector, 1);
  }
  return disk;
}

TImage MadeGptDisk(const std::vector<TImage>& pPartitions) {
  TImage disk(kFirstPartition);
  PutEntry(disk, 0, 0, 0xEE, 1, 0xFFFF'FFFF);
  std::memcpy(disk.data() + kSector, "EFI PART", 8);
  PutNumber(disk, kSector + 72, 2, 8);
  PutNumber(disk, kSector + 80, 8, 4);
  PutNumber(disk, kSector + 84, 128, 4);
  size_t entry = 2 * kSector;
  for (const TImage& partition : pPartitions) {
    const size_t at = AppendPartition(disk, partition);
    PutNumber(disk, entry, 0x4433'2211, 4);
    PutNumber(disk, entry + 32, at / kSector, 8);
    PutNumber(disk, entry + 40, (at + partition.size()) / kSector - 1, 8);
    entry += 128;
  }
  return disk;
}

}  // namespace Vantrel::Testing

#include "scan/ntfs/VolumeLayout.h"

#include <algorithm>
#include <string_view>

#include "scan/ntfs/DataRuns.h"

namespace Vantrel::Ntfs {

namespace {

constexpr size_t kSector = 512;
constexpr size_t kPartitionTable = 446;  // four entries of 16 bytes
constexpr uint8_t kGptType = 0xEE;
constexpr int64_t kMostSectors = int64_t{1} << 48;
constexpr int32_t kMostPartitions = 1024;

bool Has(TBytes pBytes, size_t pOffset, std::string_view pText) {
  return pOffset + pText.size() <= pBytes.size() &&
         std::memcmp(pBytes.data() + pOffset, pText.data(), pText.size()) == 0;
}

bool HasBootSignature(TBytes pSector) {
  return pSector.size() >= kSector && NumberAt<uint16_t>(pSector, 510) == 0xAA55;
}

bool IsExtended(uint8_t pType) {
  return pType == 0x05 || pType == 0x0F || pType == 0x85;
}

bool IsPowerOfTwo(uint64_t pValue) {
  return pValue != 0 && (pValue & (pValue - 1)) == 0;
}

struct TTableEntry {
  uint8_t fBoot = 0;
  uint8_t fType = 0;
  int64_t fFirst = 0;  // sector
  int64_t fSectors = 0;
};

TTableEntry EntryAt(TBytes pSector, size_t pIndex) {
  const size_t at = kPartitionTable + 16 * pIndex;
  return {NumberAt<uint8_t>(pSector, at), NumberAt<uint8_t>(pSector, at + 4), NumberAt<uint32_t>(pSector, at + 8),
          NumberAt<uint32_t>(pSector, at + 12)};
}

bool HasPartitionTable(TBytes pSector) {
  if (!HasBootSignature(pSector)) return false;
  bool any = false;
  for (size_t i = 0; i < 4; ++i) {
    const TTableEntry entry = EntryAt(pSector, i);
    if ((entry.fBoot & 0x7F) != 0) return false;  // code or data, not a table
    any |= entry.fType != 0 && entry.fFirst > 0 && entry.fSectors > 0;
  }
  return any;
}

// Logical partitions stand in a chain: each link is a sector with the partition and the next link.
void AddLogicalPartitions(const TReadBytes& pRead, int64_t pExtended, std::vector<TPartition>& pPartitions) {
  int32_t number = 5;
  for (int64_t link = pExtended; number < kMostPartitions;) {
    const std::vector<std::byte> sector = pRead(link * int64_t{kSector}, kSector);
    if (!HasBootSignature(sector)) return;
    const TTableEntry partition = EntryAt(sector, 0);
    const TTableEntry next = EntryAt(sector, 1);
    if (partition.fType != 0 && partition.fSectors > 0)
      pPartitions.push_back(
          {number++, (link + partition.fFirst) * int64_t{kSector}, partition.fSectors * int64_t{kSector}});
    if (!IsExtended(next.fType) || next.fFirst == 0) return;
    const int64_t following = pExtended + next.fFirst;
    if (following <= link) return;  // a chain that leads back
    link = following;
  }
}

// The table of a GPT disk. The size of its sectors is known by where the table begins.
bool AddGptPartitions(const TReadBytes& pRead, std::vector<TPartition>& pPartitions) {
  for (const int64_t sector : {int64_t{512}, int64_t{4096}}) {
    const std::vector<std::byte> header = pRead(sector, kSector);
    if (header.size() < kSector || !Has(header, 0, "EFI PART")) continue;
    const auto table = NumberAt<int64_t>(header, 72);
    const auto count = std::min<int64_t>(NumberAt<uint32_t>(header, 80), kMostPartitions);
    const size_t size = NumberAt<uint32_t>(header, 84);
    if (table <= 0 || table > kMostClusters || size < 128 || size > 4096) return true;
    const std::vector<std::byte> entries = pRead(table * sector, static_cast<size_t>(count) * size);
    for (size_t i = 0; (i + 1) * size <= entries.size(); ++i) {
      const TBytes entry = TBytes(entries).subspan(i * size, size);
      const auto first = NumberAt<int64_t>(entry, 32);
      const auto last = NumberAt<int64_t>(entry, 40);
      const bool isUsed = NumberAt<uint64_t>(entry, 0) != 0 || NumberAt<uint64_t>(entry, 8) != 0;
      if (!isUsed || first <= 0 || last < first || last > kMostClusters) continue;
      pPartitions.push_back({static_cast<int32_t>(i) + 1, first * sector, (last - first + 1) * sector});
    }
    return true;
  }
  return false;
}

}  // namespace

TVolumeKind IdentifyVolume(TBytes pStart) {
  if (Has(pStart, 3, "NTFS    ")) return TVolumeKind::vkNtfs;
  if (Has(pStart, 3, "-FVE-FS-")) return TVolumeKind::vkBitLocker;
  if (Has(pStart, 3, "EXFAT   ")) return TVolumeKind::vkExFat;
  if (Has(pStart, 3, std::string_view("ReFS\0\0\0\0", 8))) return TVolumeKind::vkReFs;
  if (Has(pStart, 54, "FAT12   ") || Has(pStart, 54, "FAT16   ") || Has(pStart, 54, "FAT     ") ||
      Has(pStart, 82, "FAT32   "))
    return TVolumeKind::vkFat;
  return HasPartitionTable(pStart) ? TVolumeKind::vkPartitioned : TVolumeKind::vkUnknown;
}

std::optional<TBootSector> ReadBootSector(TBytes pSector) {
  if (pSector.size() < kSector || IdentifyVolume(pSector) != TVolumeKind::vkNtfs) return {};
  TBootSector boot;
  boot.fBytesPerSector = NumberAt<uint16_t>(pSector, 11);
  if (boot.fBytesPerSector < 256 || boot.fBytesPerSector > 4096 || !IsPowerOfTwo(boot.fBytesPerSector)) return {};
  // Numbers of sectors above 128 do not fit into a byte. They are kept as negative powers of two.
  const auto sectors = NumberAt<uint8_t>(pSector, 13);
  const unsigned shift = 256u - sectors;
  if (sectors > 128 && shift > 31) return {};
  const uint64_t cluster = uint64_t{boot.fBytesPerSector} * (sectors > 128 ? uint64_t{1} << shift : sectors);
  if (!IsPowerOfTwo(cluster) || cluster > kLargestCluster) return {};
  boot.fBytesPerCluster = static_cast<uint32_t>(cluster);
  const auto record = NumberAt<int8_t>(pSector, 64);
  if (record < -30) return {};
  const uint64_t recordBytes = record < 0 ? uint64_t{1} << -record : static_cast<uint64_t>(record) * cluster;
  if (!IsPowerOfTwo(recordBytes) || recordBytes < kSmallestRecord || recordBytes > kLargestRecord) return {};
  boot.fBytesPerRecord = static_cast<uint32_t>(recordBytes);
  const auto volumeSectors = NumberAt<int64_t>(pSector, 40);
  boot.fTableCluster = NumberAt<int64_t>(pSector, 48);
  boot.fMirrorCluster = NumberAt<int64_t>(pSector, 56);
  if (volumeSectors <= 0 || volumeSectors > kMostSectors || boot.fTableCluster < 0 ||
      boot.fTableCluster > kMostClusters || boot.fMirrorCluster < 0 || boot.fMirrorCluster > kMostClusters)
    return {};
  boot.fVolumeBytes = volumeSectors * boot.fBytesPerSector;
  return boot;
}

std::vector<TPartition> ReadPartitions(const TReadBytes& pRead, int64_t pDiskBytes) {
  std::vector<TPartition> partitions;
  const std::vector<std::byte> sector = pRead(0, kSector);
  if (!HasPartitionTable(sector)) return partitions;
  bool isGpt = false;
  for (size_t i = 0; i < 4; ++i) isGpt |= EntryAt(sector, i).fType == kGptType;
  if (!isGpt || !AddGptPartitions(pRead, partitions)) {
    for (size_t i = 0; i < 4; ++i) {
      const TTableEntry entry = EntryAt(sector, i);
      if (IsExtended(entry.fType))
        AddLogicalPartitions(pRead, entry.fFirst, partitions);
      else if (entry.fType != 0 && entry.fSectors > 0)
        partitions.push_back(
            {static_cast<int32_t>(i) + 1, entry.fFirst * int64_t{kSector}, entry.fSectors * int64_t{kSector}});
    }
  }
  std::erase_if(partitions, [&](const TPartition& pPartition) { return pPartition.fPosition >= pDiskBytes; });
  std::sort(partitions.begin(), partitions.end(),
            [](const TPartition& pA, const TPartition& pB) { return pA.fNumber < pB.fNumber; });
  return partitions;
}

}  // namespace Vantrel::Ntfs

#pragma once

// What the first sectors of a disk or volume say: kind of file system, partitions, and where NTFS keeps its file table.

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "scan/ntfs/MftRecord.h"

namespace Vantrel::Ntfs {

enum class TVolumeKind : uint8_t { vkNtfs, vkFat, vkExFat, vkReFs, vkBitLocker, vkPartitioned, vkUnknown };

constexpr uint32_t kLargestCluster = 1 << 21;

// How many bytes of the start are needed to tell. A multiple of every sector size.
constexpr size_t kBytesToIdentify = 4096;

// Tells from the first sector what a volume or disk holds.
TVolumeKind IdentifyVolume(TBytes pStart);

// The facts in an NTFS boot sector.
struct TBootSector {
  uint32_t fBytesPerSector = 0;
  uint32_t fBytesPerCluster = 0;
  uint32_t fBytesPerRecord = 0;
  int64_t fVolumeBytes = 0;
  int64_t fTableCluster = 0;   // the first cluster of the file table
  int64_t fMirrorCluster = 0;  // of the copy of its first records
};

// No value when the sector's numbers cannot be true.
std::optional<TBootSector> ReadBootSector(TBytes pSector);

struct TPartition {
  int32_t fNumber = 0;    // as the system counts them, from 1
  int64_t fPosition = 0;  // in bytes
  int64_t fLength = 0;
};

// The partitions of a disk, in the order of their numbers. pRead reads so many bytes at a position and returns fewer
// behind the end. Knows both kinds of tables, GPT and MBR with its chain of logical partitions.
using TReadBytes = std::function<std::vector<std::byte>(int64_t pPosition, size_t pLength)>;
std::vector<TPartition> ReadPartitions(const TReadBytes& pRead, int64_t pDiskBytes);

}  // namespace Vantrel::Ntfs

#pragma once

// Makes NTFS volumes byte by byte, sound ones and damaged ones. Uses no code of the program.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel::Testing {

using TImage = std::vector<uint8_t>;

struct TMadeRun {
  int64_t fStart = 0;  // cluster; -1 for a hole
  int64_t fLength = 0;
};

// The number of a record with the number of its use in the highest bits.
constexpr uint64_t Reference(uint64_t pRecord, uint16_t pSequence = 1) {
  return uint64_t{pSequence} << 48 | pRecord;
}

// The values of a stream outside its record.
struct TMadeStream {
  int64_t fSize = 0;
  int64_t fAllocated = 0;
  std::vector<TMadeRun> fRuns{};
  int64_t fCompressed = -1;  // bytes; below 0: neither compressed nor sparse
  int64_t fFirstCluster = 0;
  uint16_t fFlags = 0;        // besides those for fCompressed: 1 compressed, 0x4000 encrypted
  int64_t fInitialized = -1;  // below 0: as fSize
};

// The list of a file's unnamed data in other records: for each part its record and first cluster.
TImage MadeAttributeList(const std::vector<std::pair<uint64_t, int64_t>>& pParts);

// One file record under construction. Attributes stand in the order of the calls.
class TMadeRecord {
 public:
  static constexpr uint16_t kUsed = 1;
  static constexpr uint16_t kFolder = 2;

  explicit TMadeRecord(uint16_t pFlags = kUsed, uint16_t pSequence = 1, uint64_t pBase = 0)
      : fFlags(pFlags), fSequence(pSequence), fBase(pBase) {}

  TMadeRecord& Standard(uint32_t pAttributes, int64_t pCreated = 0, int64_t pWritten = 0, int64_t pAccessed = 0);
  // Name spaces: 0 POSIX, 1 Windows, 2 DOS, 3 both.
  TMadeRecord& Name(uint64_t pFolder, std::u16string_view pText, uint8_t pSpace = 1);
  TMadeRecord& Resident(uint32_t pType, const TImage& pValue, std::u16string_view pName = {});
  TMadeRecord& Stream(uint32_t pType, const TMadeStream& pStream, std::u16string_view pName = {});
  TMadeRecord& Data(size_t pBytes, std::u16string_view pName = {}) { return Resident(0x80, TImage(pBytes), pName); }
  TMadeRecord& Reparse(uint32_t pTag);
  TMadeRecord& Raw(const TImage& pAttribute);
  // The record's stretches end in different numbers.
  TMadeRecord& Torn() {
    fIsTorn = true;
    return *this;
  }
  uint16_t Sequence() const { return fSequence; }
  bool IsFolder() const { return (fFlags & kFolder) != 0; }

  // The record as it stands on disk, fix-ups included. An error of the test when it does not fit.
  TImage Bytes(size_t pSize, uint32_t pNumber) const;

 private:
  TImage& Begin(uint32_t pType, std::u16string_view pName, bool pIsResident, size_t pHeader);
  void End(size_t pBegin);

  uint16_t fFlags;
  uint16_t fSequence;
  uint64_t fBase;
  bool fIsTorn = false;
  uint16_t fLinks = 0;
  uint16_t fNextId = 0;
  TImage fAttributes;
};

// Mapping pairs as a volume holds them.
TImage MappingPairs(const std::vector<TMadeRun>& pRuns);

// A volume under construction: records by their number, and where its table lies.
struct TMadeVolume {
  uint32_t fSectorSize = 512;
  uint32_t fClusterSize = 4096;
  uint32_t fRecordSize = 1024;
  std::u16string fLabel = u"made";
  std::map<uint32_t, TMadeRecord> fRecords;
  uint32_t fTableRecords = 64;       // at least; the table grows with the records
  std::vector<TMadeRun> fTableRuns;  // empty: in one piece
  uint32_t fTableRunsInRecord0 = 0;  // the others stand in record 15, found by an attribute list; 0: all in record 0
  int64_t fVolumeClusters = 0;       // 0: as many as needed
  bool fDamageFirstRecord = false;   // the mirror must serve

  TMadeVolume();
  // A record for a file, with standard information, its name and resident bytes. Returns its number.
  uint32_t AddFile(uint32_t pFolder, std::u16string_view pName, size_t pBytes = 0);
  uint32_t AddFolder(uint32_t pFolder, std::u16string_view pName);
  uint32_t Add(TMadeRecord pRecord);
  uint64_t ReferenceTo(uint32_t pRecord) const;

  TImage Image() const;
  // The boot sector alone.
  TImage BootSector(int64_t pClusters, int64_t pTable, int64_t pMirror) const;

 private:
  uint32_t fNext = 64;
};

// A disk with the images as partitions, with either table. Sectors of 512 bytes.
TImage MadeMbrDisk(const std::vector<TImage>& pPartitions, const std::vector<TImage>& pLogical = {});
TImage MadeGptDisk(const std::vector<TImage>& pPartitions);

}  // namespace Vantrel::Testing

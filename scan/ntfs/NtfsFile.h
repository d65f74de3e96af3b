#pragma once

// Reads the contents of a file of a volume, whatever form they are stored in.

#include <memory>
#include <string>
#include <vector>

#include "model/roots/Storage.h"
#include "scan/ntfs/StreamLocation.h"

namespace Vantrel::Ntfs {

// An open file. One thread.
class TNtfsFile final : public IStoredFile {
 public:
  // pPath is for messages.
  TNtfsFile(std::shared_ptr<IVolumeReader> pReader, std::shared_ptr<const TMftLocation> pLocation,
            TStreamLocation pStream, TStoredFileFacts pFacts, std::u16string pPath);

  // Behind the initialized part and in holes there are zeros. EOSError with a code of NtfsErrors.h or of the system.
  size_t Read(char* pBuffer, size_t pLength) override;
  uint64_t SkipZeros() override;
  bool TrySeek(uint64_t pPosition) override;
  TStoredFileFacts GetFacts() override { return fFacts; }

 private:
  // Where a cluster of the file is: its run, and how far in it.
  struct TPlace {
    size_t fRun = 0;
    int64_t fOffset = 0;  // clusters
  };

  [[noreturn]] void Fail(uint32_t pCode) const;
  TPlace PlaceOf(int64_t pCluster) const;
  bool IsHoleAt(const TPlace& pPlace) const { return fStream.fRuns.Runs()[pPlace.fRun].fStart == TDataRun::kHole; }
  void FillBlock();
  void ReadClusters(int64_t pFirst, std::span<std::byte> pBytes);
  void ReadUnit(int64_t pFirst, std::span<std::byte> pBytes);
  int64_t StoredClusters(int64_t pFirst) const;

  const std::shared_ptr<IVolumeReader> fReader;
  const std::shared_ptr<const TMftLocation> fLocation;
  const TStreamLocation fStream;
  const TStoredFileFacts fFacts;
  const std::u16string fPath;
  const int64_t fClusterBytes;
  std::vector<int64_t> fRunStarts;  // the first cluster of each run, counted in the file
  int64_t fPosition = 0;
  // The bytes of the file that were read last.
  std::vector<std::byte> fBlock;
  int64_t fBlockStart = 0;
  std::vector<std::byte> fPacked;
};

}  // namespace Vantrel::Ntfs

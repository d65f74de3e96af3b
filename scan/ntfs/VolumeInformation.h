#pragma once

// The sizes that reading a file table needs, asked once for each volume and kept while it is scanned.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "platform/threads/CriticalSection.h"
#include "platform/threads/Interface.h"
#include "platform/volumes/VolumeReader.h"
#include "scan/ntfs/MftRecord.h"

namespace Vantrel::Ntfs {

struct TMftVolumeData {
  int64_t fMftValidDataLength = 0;  // bytes of the file table
  uint32_t fBytesPerRecord = 1024;
  uint32_t fBytesPerCluster = 4096;
  uint32_t fBytesPerSector = 512;
  bool operator==(const TMftVolumeData&) const = default;
};

// From Windows' answer. No value when its numbers cannot be true.
std::optional<TMftVolumeData> ParseVolumeData(TBytes pAnswer);

// The facts of one volume. Any thread.
class IMftVolumeInformation : public IInterface {
 public:
  virtual int64_t GetMftValidDataLength() = 0;  // bytes; 0 when the volume cannot be asked
  virtual uint32_t GetBytesPerRecord() = 0;
  virtual uint32_t GetBytesPerCluster() = 0;
  virtual uint32_t GetBytesPerSector() = 0;
  virtual int64_t GetNumberOfRecords() = 0;
};

// Asks when a value is read for the first time. The defaults stay when the question fails.
class TMftVolumeInformation : public TInterfaced<IMftVolumeInformation> {
 public:
  using TQuery = std::function<std::optional<TMftVolumeData>()>;
  explicit TMftVolumeInformation(TQuery pQuery) : fQuery(std::move(pQuery)) {}

  int64_t GetMftValidDataLength() override { return Data().fMftValidDataLength; }
  uint32_t GetBytesPerRecord() override { return Data().fBytesPerRecord; }
  uint32_t GetBytesPerCluster() override { return Data().fBytesPerCluster; }
  uint32_t GetBytesPerSector() override { return Data().fBytesPerSector; }
  int64_t GetNumberOfRecords() override { return Data().fMftValidDataLength / Data().fBytesPerRecord; }

 private:
  TMftVolumeData Data();

  TCriticalSection fLock;
  TQuery fQuery GUARDED_BY(fLock);  // empty once asked
  TMftVolumeData fData GUARDED_BY(fLock);
};

// The volumes that are being scanned, by path. Any thread.
class TMftVolumeInformationCache {
 public:
  static TMftVolumeInformationCache& Instance();
  // The known volume, or a new one with this question.
  TRef<IMftVolumeInformation> GetMftVolumeInformation(const std::u16string& pVolumePath,
                                                      TMftVolumeInformation::TQuery pQuery);
  // At the end of a scan: the next one asks again.
  void RemoveMftVolumeInformation(const std::u16string& pVolumePath);

 private:
  TCriticalSection fLock;
  std::map<std::u16string, TRef<IMftVolumeInformation>> fVolumes GUARDED_BY(fLock);
};

}  // namespace Vantrel::Ntfs

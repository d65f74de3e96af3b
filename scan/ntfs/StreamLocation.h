#pragma once

// Finds where the contents of a file lie: inside its record, or in which clusters of the volume.

#include <cstdint>
#include <vector>

#include "scan/ntfs/MftLocation.h"

namespace Vantrel::Ntfs {

struct TStreamLocation {
  int64_t fSize = 0;                // bytes
  int64_t fInitializedSize = 0;     // the bytes behind are zeros, whatever the volume holds there
  std::vector<std::byte> fBytes{};  // of contents inside the record
  bool fIsInRecord = true;
  TDataRuns fRuns{};
  int64_t fClustersInUnit = 0;  // of compressed contents; 0 for plain ones
};

// Reads the records of a file. EOSError with a code of NtfsErrors.h for contents that cannot be read, such as encrypted
// ones, and for damaged records. The record must still be in the use that pReference tells, or the file is gone. pPath
// is for the message.
TStreamLocation LocateContents(IVolumeReader& pReader, const TMftLocation& pLocation, uint64_t pReference,
                               const std::u16string& pPath);

}  // namespace Vantrel::Ntfs

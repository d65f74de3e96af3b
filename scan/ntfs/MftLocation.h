#pragma once

// Finds a volume's file table: its extents and sizes, by the driver's answers or by the volume's own bytes.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/volumes/VolumeReader.h"
#include "scan/ntfs/DataRuns.h"
#include "scan/ntfs/VolumeInformation.h"
#include "scan/ntfs/VolumeLayout.h"

namespace Vantrel::Ntfs {

// A volume as a part of what is read: all of a device or image, or one partition of it.
struct TVolumePart {
  int64_t fPosition = 0;  // bytes
  int64_t fLength = 0;    // bytes that are there
};

// Where the file table of a volume is.
struct TMftLocation {
  TVolumePart fPart;
  TMftVolumeData fData;
  TDataRuns fRuns;
  int64_t fVolumeBytes = 0;  // as the boot sector says; 0 when the driver was asked
};

// Asks the driver for the sizes. No value when it does not answer.
std::optional<TMftVolumeData> AskVolumeData(INtfsDriver& pDriver);
// Asks the driver for the table's extents. EOSError with its code; pVolumePath is for the message.
TDataRuns AskTableExtents(INtfsDriver& pDriver, const std::u16string& pVolumePath);

// Finds the table by the boot sector, the table's own record and its runs. If the first record is damaged, its copy is
// read. EOSError with a code of NtfsErrors.h, or of the system.
TMftLocation LocateTable(IVolumeReader& pReader, TVolumePart pPart, const std::u16string& pVolumePath);

// One record, fixed up. Empty when it cannot be read or is not in use.
std::vector<std::byte> ReadRecord(IVolumeReader& pReader, const TMftLocation& pLocation, int64_t pNumber);

// The list of a file's attributes that are in other records. What of it cannot be read is missing.
std::vector<std::byte> ReadAttributeList(IVolumeReader& pReader, const TMftLocation& pLocation,
                                         const TMftAttribute& pList);

// What a volume's own files say about it.
struct TVolumeFacts {
  std::u16string fLabel;
  int64_t fFreeBytes = 0;
};
// Zero or empty for what cannot be read.
TVolumeFacts ReadVolumeFacts(IVolumeReader& pReader, const TMftLocation& pLocation);

}  // namespace Vantrel::Ntfs

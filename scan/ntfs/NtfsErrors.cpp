#include "scan/ntfs/NtfsErrors.h"

#include "platform/system/Errors.h"

namespace Vantrel::Ntfs {

std::string ErrorTextOf(uint32_t pCode) {
  switch (pCode) {
    case kErrorEmptyImage:
      return "It is empty";
    case kErrorFat:
      return "It holds a FAT file system, not NTFS";
    case kErrorExFat:
      return "It holds an exFAT file system, not NTFS";
    case kErrorReFs:
      return "It holds a ReFS file system, not NTFS";
    case kErrorBitLocker:
      return "It is encrypted by BitLocker and must be unlocked first";
    case kErrorNotNtfs:
      return "It holds no NTFS file system";
    case kErrorNoNtfsPartition:
      return "None of its partitions holds an NTFS file system";
    case kErrorDamagedBootSector:
      return "Its boot sector is damaged";
    case kErrorDamagedTable:
      return "Its file table cannot be found";
    case kErrorTruncated:
      return "The image ends inside the file table";
    case kErrorNoFolder:
      return "The volume has no such folder";
    case kErrorNothingToRead:
      return "Its file table is empty";
    case kErrorNoFile:
      return "The volume has no such file";
    case kErrorDamagedFile:
      return "Its data on the volume is damaged";
    case kErrorTruncatedFile:
      return "The image ends inside its data";
    case kErrorEncryptedFile:
      return "It is encrypted by Windows (EFS)";
    case kErrorOverlayFile:
      return "It is compressed by Windows' overlay (WOF), which only a mounted volume can unpack";
    case kErrorElsewhere:
      return "Its data is not on the volume";
    default:
      return OSErrorText(pCode);
  }
}

}  // namespace Vantrel::Ntfs

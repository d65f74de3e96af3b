#pragma once

// The reasons why a volume cannot be scanned through its file table, as error codes with texts.

#include <cstdint>
#include <string>

namespace Vantrel::Ntfs {

// Codes of this storage. Like the program's own codes they have bit 29 set, which no system's codes have.
constexpr uint32_t kErrorEmptyImage = 0x2000'0101;
constexpr uint32_t kErrorFat = 0x2000'0102;
constexpr uint32_t kErrorExFat = 0x2000'0103;
constexpr uint32_t kErrorReFs = 0x2000'0104;
constexpr uint32_t kErrorBitLocker = 0x2000'0105;
constexpr uint32_t kErrorNotNtfs = 0x2000'0106;
constexpr uint32_t kErrorNoNtfsPartition = 0x2000'0107;
constexpr uint32_t kErrorDamagedBootSector = 0x2000'0108;
constexpr uint32_t kErrorDamagedTable = 0x2000'0109;  // the file table cannot be found
constexpr uint32_t kErrorTruncated = 0x2000'010A;     // the image ends inside the file table
constexpr uint32_t kErrorNoFolder = 0x2000'010B;      // the path inside the volume does not exist
constexpr uint32_t kErrorNothingToRead = 0x2000'010C;
constexpr uint32_t kErrorNoFile = 0x2000'010D;
// Contents that cannot be read.
constexpr uint32_t kErrorDamagedFile = 0x2000'010E;
constexpr uint32_t kErrorTruncatedFile = 0x2000'010F;  // the image ends inside the contents
constexpr uint32_t kErrorEncryptedFile = 0x2000'0110;
constexpr uint32_t kErrorOverlayFile = 0x2000'0111;
constexpr uint32_t kErrorElsewhere = 0x2000'0112;  // a program keeps them in another place

// The text for any code, in UTF-8, without a full stop.
std::string ErrorTextOf(uint32_t pCode);

}  // namespace Vantrel::Ntfs

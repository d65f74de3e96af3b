#pragma once

// The layout of a file record: its header, its fix-ups and its attributes.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace Vantrel::Ntfs {

// A file record is 1,024 bytes, 4,096 on volumes with such sectors. It begins with a header. Attributes follow, each
// with its type and length, up to an end marker. The last two bytes of every 512 are replaced on disk by a number that
// changes with each write. The true bytes stand in an array of fix-ups behind the header. A record whose stretches end
// in different numbers was written in part only; it is called torn.
//
// Nothing here trusts a record: all offsets and lengths are checked against its bytes.

using TBytes = std::span<const std::byte>;

static_assert(std::endian::native == std::endian::little, "the disk's byte order is used as it is");

// The number at an offset, which must lie inside.
template <class T>
T NumberAt(TBytes pBytes, size_t pOffset) {
  T value;
  std::memcpy(&value, pBytes.data() + pOffset, sizeof value);
  return value;
}

constexpr uint16_t kRecordInUse = 1;
constexpr uint16_t kRecordIsFolder = 2;
constexpr size_t kSmallestRecord = 256;
constexpr size_t kLargestRecord = 65'536;

struct TRecordHeader {
  uint16_t fFixUpOffset = 0;
  uint16_t fFixUpCount = 0;  // the number at the stretches' ends included
  uint16_t fSequence = 0;    // raised each time when the record is used for another file
  uint16_t fFirstAttribute = 0;
  uint16_t fFlags = 0;
  uint32_t fBytesInUse = 0;
  uint64_t fBase = 0;  // reference to the record that this one extends; 0 for a base record
};

// The record number in a reference to a record; the number of its use is in the highest 16 bits.
constexpr uint64_t RecordOfReference(uint64_t pReference) {
  return pReference & 0xFFFF'FFFF'FFFF;
}
constexpr uint16_t SequenceOfReference(uint64_t pReference) {
  return static_cast<uint16_t>(pReference >> 48);
}

// The header. No value if the bytes are too few or do not begin with "FILE".
std::optional<TRecordHeader> ReadRecordHeader(TBytes pRecord);

// Whether the record stands for a file or a part of one. Compatible reading also accepts records that are not marked as
// used, but have other flags.
bool IsRecordUsable(const TRecordHeader& pHeader, bool pCompatible);

// Puts the true bytes back. False for a torn record, which is nevertheless changed to the end. Compatible reading stops
// at the bytes in use; otherwise the header is not trusted in this, and all stretches count.
bool ApplyFixUps(std::span<std::byte> pRecord, const TRecordHeader& pHeader, bool pCompatible);

constexpr uint32_t kStandardInformation = 0x10;
constexpr uint32_t kAttributeList = 0x20;
constexpr uint32_t kFileName = 0x30;
constexpr uint32_t kVolumeName = 0x60;
constexpr uint32_t kData = 0x80;
constexpr uint32_t kReparsePoint = 0xC0;
constexpr uint32_t kFirstUnknownType = 193;  // attributes of this type and above are never needed

// Flags of an attribute.
constexpr uint16_t kDataIsCompressed = 0x00FF;  // the method; 0: not compressed
constexpr uint16_t kLznt1 = 1;
constexpr uint16_t kDataIsEncrypted = 0x4000;

// An attribute as parts of its record.
struct TMftAttribute {
  uint32_t fType = 0;
  bool fIsResident = true;
  bool fIsSparseOrCompressed = false;
  uint16_t fFlags = 0;
  TBytes fName;   // UTF-16, at any address
  TBytes fValue;  // of a resident attribute; empty for another one
  // Of an attribute whose value is outside the record. The sizes count only in the part that begins at cluster 0.
  int64_t fFirstCluster = 0;
  uint16_t fCompressionUnit = 0;
  int64_t fAllocatedSize = 0;
  int64_t fDataSize = 0;
  int64_t fInitializedSize = 0;
  int64_t fCompressedSize = 0;
  TBytes fMappingPairs;
};

// Whether the UTF-16 bytes begin with the text.
bool BeginsWith(TBytes pName, std::u16string_view pText);

// Walks over a record's attributes, in the record's order.
class TAttributeWalk {
 public:
  TAttributeWalk(TBytes pRecord, size_t pFirstAttribute) : fRecord(pRecord), fOffset(pFirstAttribute) {}
  // False at the end marker, and at an attribute that does not fit into the record.
  bool Next(TMftAttribute& pAttribute);

 private:
  const TBytes fRecord;
  size_t fOffset;
};

}  // namespace Vantrel::Ntfs

#include "scan/ntfs/MftRecord.h"

#include <algorithm>

namespace Vantrel::Ntfs {

namespace {

constexpr size_t kHeaderSize = 48;
constexpr size_t kStretch = 512;  // whatever sector size the volume has
constexpr size_t kResidentHeader = 24;
constexpr size_t kNonResidentHeader = 64;
constexpr size_t kCompressedHeader = 72;
constexpr uint16_t kFlagsSparseOrCompressed = 0x80FF;

// The part of the bytes, or nothing where it does not lie inside.
TBytes PartOf(TBytes pBytes, size_t pOffset, size_t pLength) {
  if (pOffset > pBytes.size() || pLength > pBytes.size() - pOffset) return {};
  return pBytes.subspan(pOffset, pLength);
}

void ReadNonResident(TBytes pBytes, TMftAttribute& pAttribute) {
  pAttribute.fFirstCluster = NumberAt<int64_t>(pBytes, 16);
  pAttribute.fCompressionUnit = NumberAt<uint16_t>(pBytes, 34);
  pAttribute.fAllocatedSize = NumberAt<int64_t>(pBytes, 40);
  pAttribute.fDataSize = NumberAt<int64_t>(pBytes, 48);
  pAttribute.fInitializedSize = NumberAt<int64_t>(pBytes, 56);
  if (pBytes.size() >= kCompressedHeader) pAttribute.fCompressedSize = NumberAt<int64_t>(pBytes, 64);
  const size_t pairs = NumberAt<uint16_t>(pBytes, 32);
  if (pairs < pBytes.size()) pAttribute.fMappingPairs = pBytes.subspan(pairs);
}

}  // namespace

std::optional<TRecordHeader> ReadRecordHeader(TBytes pRecord) {
  if (pRecord.size() < kHeaderSize || std::memcmp(pRecord.data(), "FILE", 4) != 0) return {};
  TRecordHeader header;
  header.fFixUpOffset = NumberAt<uint16_t>(pRecord, 4);
  header.fFixUpCount = NumberAt<uint16_t>(pRecord, 6);
  header.fSequence = NumberAt<uint16_t>(pRecord, 16);
  header.fFirstAttribute = NumberAt<uint16_t>(pRecord, 20);
  header.fFlags = NumberAt<uint16_t>(pRecord, 22);
  header.fBytesInUse = NumberAt<uint32_t>(pRecord, 24);
  header.fBase = NumberAt<uint64_t>(pRecord, 32);
  return header;
}

bool IsRecordUsable(const TRecordHeader& pHeader, bool pCompatible) {
  if (pCompatible) return pHeader.fFlags != 0 && pHeader.fFlags != kRecordIsFolder;
  return (pHeader.fFlags & kRecordInUse) != 0;
}

bool ApplyFixUps(std::span<std::byte> pRecord, const TRecordHeader& pHeader, bool pCompatible) {
  const size_t array = pHeader.fFixUpOffset;
  if (array + 2 > pRecord.size()) return false;
  const auto number = NumberAt<uint16_t>(pRecord, array);
  const size_t stretches = pRecord.size() / kStretch;
  bool whole = pHeader.fFixUpCount > stretches || pCompatible;
  if (!whole) whole = pHeader.fBytesInUse <= pHeader.fFixUpCount * kStretch;
  // The array may count one stretch more than the record has.
  for (size_t i = 1; i <= std::min<size_t>(pHeader.fFixUpCount, stretches); ++i) {
    const size_t at = i * kStretch - 2;
    if (pCompatible && at >= pHeader.fBytesInUse) break;
    if (array + 2 * i + 2 > pRecord.size()) return false;
    if (!pCompatible && i == pHeader.fFixUpCount) break;
    if (NumberAt<uint16_t>(pRecord, at) != number) whole = false;
    std::memcpy(pRecord.data() + at, pRecord.data() + array + 2 * i, 2);
  }
  return whole;
}

bool BeginsWith(TBytes pName, std::u16string_view pText) {
  return pName.size() >= 2 * pText.size() && std::memcmp(pName.data(), pText.data(), 2 * pText.size()) == 0;
}

bool TAttributeWalk::Next(TMftAttribute& pAttribute) {
  if (fOffset > fRecord.size() || fRecord.size() - fOffset < 8) return false;
  pAttribute = {};
  pAttribute.fType = NumberAt<uint32_t>(fRecord, fOffset);
  const auto length = NumberAt<uint32_t>(fRecord, fOffset + 4);
  if (pAttribute.fType >= kFirstUnknownType || length < kResidentHeader || length > fRecord.size() - fOffset)
    return false;
  const TBytes bytes = fRecord.subspan(fOffset, length);
  fOffset += length;
  pAttribute.fIsResident = NumberAt<uint8_t>(bytes, 8) == 0;
  pAttribute.fFlags = NumberAt<uint16_t>(bytes, 12);
  pAttribute.fIsSparseOrCompressed = (pAttribute.fFlags & kFlagsSparseOrCompressed) != 0;
  pAttribute.fName = PartOf(bytes, NumberAt<uint16_t>(bytes, 10), size_t{2} * NumberAt<uint8_t>(bytes, 9));
  if (pAttribute.fIsResident)
    pAttribute.fValue = PartOf(bytes, NumberAt<uint16_t>(bytes, 20), NumberAt<uint32_t>(bytes, 16));
  else if (length >= kNonResidentHeader)
    ReadNonResident(bytes, pAttribute);
  else
    return false;
  return true;
}

}  // namespace Vantrel::Ntfs

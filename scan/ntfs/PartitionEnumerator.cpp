#include "scan/ntfs/PartitionEnumerator.h"

#include <algorithm>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "scan/ntfs/NtfsErrors.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Ntfs {

namespace {

// Reads whole sectors, since a disk gives nothing less.
std::vector<std::byte> ReadPart(IVolumeReader& pReader, int64_t pPosition, size_t pLength) {
  constexpr int64_t kStep = kBytesToIdentify;
  if (pPosition < 0 || pPosition >= pReader.Size()) return {};
  const int64_t first = pPosition / kStep * kStep;
  const auto skipped = static_cast<size_t>(pPosition - first);
  std::vector<std::byte> bytes((skipped + pLength + kStep - 1) / kStep * kStep);
  bytes.resize(std::min(ReadVolume(pReader, first, bytes), skipped + pLength));
  bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(skipped, bytes.size())));
  return bytes;
}

std::string KindText(TVolumeKind pKind) {
  switch (pKind) {
    case TVolumeKind::vkFat:
      return " (FAT)";
    case TVolumeKind::vkExFat:
      return " (exFAT)";
    case TVolumeKind::vkReFs:
      return " (ReFS)";
    case TVolumeKind::vkBitLocker:
      return " (encrypted by BitLocker)";
    default:
      return {};
  }
}

}  // namespace

std::u16string TNtfsPartition::Name() const {
  return u"Partition " + FromUtf8(std::to_string(fNumber));
}

bool IsPartitioned(IVolumeReader& pReader) {
  return IdentifyVolume(ReadPart(pReader, 0, kBytesToIdentify)) == TVolumeKind::vkPartitioned;
}

TDiskPartitions FindPartitions(IVolumeReader& pReader) {
  auto read = [&](int64_t pPosition, size_t pLength) { return ReadPart(pReader, pPosition, pLength); };
  TDiskPartitions found;
  for (const TPartition& partition : ReadPartitions(read, pReader.Size())) {
    const TVolumeKind kind = IdentifyVolume(read(partition.fPosition, kBytesToIdentify));
    if (kind == TVolumeKind::vkNtfs) {
      const int64_t length = std::min(partition.fLength, pReader.Size() - partition.fPosition);
      found.fNtfs.push_back({partition.fNumber, {partition.fPosition, length}});
    } else {
      found.fOthers.push_back(std::to_string(partition.fNumber) + KindText(kind));
    }
  }
  return found;
}

TPartitionEnumerator::TPartitionEnumerator(std::u16string pPath, char16_t pDelimiter,
                                           std::vector<TNtfsPartition> pPartitions, TOpen pOpen,
                                           THierarchicalEnumeratorOptions pOptions)
    : TBaseVisualHierarchicalEnumerator(pOptions),
      fPath(std::move(pPath)),
      fDelimiter(pDelimiter),
      fPartitions(std::move(pPartitions)),
      fOpen(std::move(pOpen)) {}

bool TPartitionEnumerator::Next() {
  if (fNext >= fPartitions.size()) {
    fNext = fPartitions.size() + 1;
    return false;
  }
  fName = fPartitions[fNext++].Name();
  return true;
}

std::u16string_view TPartitionEnumerator::GetObjectName() const {
  if (fNext == 0 || fNext > fPartitions.size()) return FileNameOfPath(fPath, fDelimiter);
  return fName;
}

std::u16string TPartitionEnumerator::GetFullPath() const {
  if (fNext == 0 || fNext > fPartitions.size()) return fPath;
  return JoinPath(fPath, fName, fDelimiter);
}

TRef<IHierarchicalEnumerator> TPartitionEnumerator::GetChildHierarchicalEnumerator() {
  return CreateChildEnumerator(fName, kAttributeDirectory);
}

TRef<IHierarchicalEnumerator> TPartitionEnumerator::CreateChildEnumerator(std::u16string_view pName, TAttributes) {
  for (const TNtfsPartition& partition : fPartitions)
    if (partition.Name() == pName) return fOpen(partition);
  return MakeRef<Enumerators::TPathNotFoundEnumerator>(JoinPath(fPath, pName, fDelimiter), kErrorNoFolder, fOptions);
}

TRef<IHierarchicalEnumerator> TPartitionEnumerator::Clone() const {
  return MakeRef<TPartitionEnumerator>(fPath, fDelimiter, fPartitions, fOpen, fOptions);
}

}  // namespace Vantrel::Ntfs

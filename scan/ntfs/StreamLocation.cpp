#include "scan/ntfs/StreamLocation.h"

#include <algorithm>
#include <optional>

#include "platform/system/Errors.h"
#include "scan/files/LinkRules.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

constexpr std::u16string_view kOverlayStream = u"WofCompressedData";
constexpr uint32_t kOverlayTag = 0x8000'0017;
// Windows compresses in units of 16 clusters of at most 4 KiB.
constexpr int64_t kLargestUnit = 1 << 20;
constexpr unsigned kMostUnitShift = 8;

class TContentsFinder {
 public:
  TContentsFinder(IVolumeReader& pReader, const TMftLocation& pLocation, uint64_t pReference,
                  const std::u16string& pPath)
      : fReader(pReader),
        fLocation(pLocation),
        fRecord(static_cast<int64_t>(RecordOfReference(pReference))),
        fSequence(SequenceOfReference(pReference)),
        fPath(pPath) {}

  TStreamLocation Find() {
    const std::vector<std::byte> record = Read(fRecord);
    const TRecordHeader header = *ReadRecordHeader(record);
    if (header.fSequence != fSequence) Fail(kErrorNoFile);
    std::optional<TMftAttribute> list;
    TAttributeWalk walk(record, header.fFirstAttribute);
    for (TMftAttribute attribute; walk.Next(attribute);) {
      if (attribute.fType == kAttributeList) list = attribute;
      Judge(attribute);
    }
    if (list)
      TakeParts(ReadAttributeList(fReader, fLocation, *list), record);
    else
      TakeUnnamedData(record, 0);
    if (fIsOverlay || fReparseTag == kOverlayTag) Fail(kErrorOverlayFile);
    if (IsElsewhere()) Fail(kErrorElsewhere);
    CheckSizes();
    return std::move(fStream);
  }

 private:
  [[noreturn]] void Fail(uint32_t pCode) const { throw EOSError(pCode, "Opening a file of a volume", fPath); }

  std::vector<std::byte> Read(int64_t pRecord) {
    std::vector<std::byte> record = ReadRecord(fReader, fLocation, pRecord);
    if (record.empty()) Fail(kErrorDamagedFile);
    return record;
  }

  // What an attribute says of the whole file.
  void Judge(const TMftAttribute& pAttribute) {
    if (pAttribute.fType == kData && BeginsWith(pAttribute.fName, kOverlayStream)) fIsOverlay = true;
    if (pAttribute.fType == kReparsePoint && pAttribute.fValue.size() >= 4)
      fReparseTag = NumberAt<uint32_t>(pAttribute.fValue, 0);
  }

  // The parts of the stream stand in the list in the order of their clusters.
  void TakeParts(TBytes pList, TBytes pBase) {
    constexpr size_t kSmallestEntry = 26;
    while (pList.size() >= kSmallestEntry) {
      const size_t length = NumberAt<uint16_t>(pList, 4);
      if (length < kSmallestEntry || length > pList.size()) Fail(kErrorDamagedFile);
      const auto type = NumberAt<uint32_t>(pList, 0);
      const auto record = static_cast<int64_t>(RecordOfReference(NumberAt<uint64_t>(pList, 16)));
      const bool isNamed = NumberAt<uint8_t>(pList, 6) != 0;
      const auto firstCluster = NumberAt<int64_t>(pList, 8);
      pList = pList.subspan(length);
      if (type != kData && type != kReparsePoint) continue;
      if (record == fRecord) {
        if (type == kData && !isNamed && !TakeUnnamedData(pBase, firstCluster)) Fail(kErrorDamagedFile);
        continue;
      }
      const std::vector<std::byte> extension = Read(record);
      const TRecordHeader header = *ReadRecordHeader(extension);
      if (static_cast<int64_t>(RecordOfReference(header.fBase)) != fRecord) Fail(kErrorDamagedFile);
      TAttributeWalk walk(extension, header.fFirstAttribute);
      for (TMftAttribute attribute; walk.Next(attribute);) Judge(attribute);
      if (type == kData && !isNamed && !TakeUnnamedData(extension, firstCluster)) Fail(kErrorDamagedFile);
    }
  }

  bool TakeUnnamedData(TBytes pRecord, int64_t pFirstCluster) {
    TAttributeWalk walk(pRecord, ReadRecordHeader(pRecord)->fFirstAttribute);
    for (TMftAttribute attribute; walk.Next(attribute);) {
      const bool isWanted = attribute.fType == kData && attribute.fName.empty() &&
                            (attribute.fIsResident ? 0 : attribute.fFirstCluster) == pFirstCluster;
      if (!isWanted) continue;
      Take(attribute);
      return true;
    }
    return false;
  }

  void Take(const TMftAttribute& pData) {
    if ((pData.fFlags & kDataIsEncrypted) != 0) Fail(kErrorEncryptedFile);
    if (pData.fIsResident) {
      fStream.fBytes.assign(pData.fValue.begin(), pData.fValue.end());
      fStream.fSize = fStream.fInitializedSize = static_cast<int64_t>(fStream.fBytes.size());
      return;
    }
    if (pData.fFirstCluster != fStream.fRuns.GetTotalLength()) Fail(kErrorDamagedFile);
    if (pData.fFirstCluster == 0) TakeSizes(pData);
    if (!ParseMappingPairs(pData.fMappingPairs, fStream.fRuns)) Fail(kErrorDamagedFile);
  }

  void TakeSizes(const TMftAttribute& pData) {
    fStream.fIsInRecord = false;
    fStream.fSize = pData.fDataSize;
    fStream.fInitializedSize = pData.fInitializedSize;
    const unsigned method = pData.fFlags & kDataIsCompressed;
    if (method == 0) return;
    if (method != kLznt1 || pData.fCompressionUnit > kMostUnitShift) Fail(kErrorDamagedFile);
    fStream.fClustersInUnit = int64_t{1} << pData.fCompressionUnit;
    if (fStream.fClustersInUnit * fLocation.fData.fBytesPerCluster > kLargestUnit) Fail(kErrorDamagedFile);
  }

  // A cloud storage leaves holes where it has not fetched the contents. Other programs keep all of them elsewhere.
  bool IsElsewhere() const {
    if (fReparseTag == 0 || Enumerators::IsNameSurrogate(fReparseTag)) return false;
    const std::vector<TDataRun>& runs = fStream.fRuns.Runs();
    return !Enumerators::IsCloudTag(fReparseTag) ||
           std::any_of(runs.begin(), runs.end(), [](const TDataRun& pRun) { return pRun.fStart == TDataRun::kHole; });
  }

  // A size that the runs do not cover comes from damaged bytes. Reading it could take for ever.
  void CheckSizes() {
    if (fStream.fIsInRecord) return;
    const int64_t cluster = fLocation.fData.fBytesPerCluster;
    const bool fits = fStream.fSize >= 0 && fStream.fInitializedSize >= 0 &&
                      fStream.fSize <= fStream.fRuns.GetTotalLength() * cluster;
    if (!fits) Fail(kErrorDamagedFile);
  }

  IVolumeReader& fReader;
  const TMftLocation& fLocation;
  const int64_t fRecord;
  const uint16_t fSequence;
  const std::u16string& fPath;
  TStreamLocation fStream;
  bool fIsOverlay = false;
  uint32_t fReparseTag = 0;
};

}  // namespace

TStreamLocation LocateContents(IVolumeReader& pReader, const TMftLocation& pLocation, uint64_t pReference,
                               const std::u16string& pPath) {
  return TContentsFinder(pReader, pLocation, pReference, pPath).Find();
}

}  // namespace Vantrel::Ntfs

#include "scan/ntfs/VolumeInformation.h"

#include <bit>
#include <utility>

#include "scan/ntfs/VolumeLayout.h"

namespace Vantrel::Ntfs {

std::optional<TMftVolumeData> ParseVolumeData(TBytes pAnswer) {
  if (pAnswer.size() < INtfsDriver::kVolumeDataSize) return {};
  TMftVolumeData data;
  data.fBytesPerSector = NumberAt<uint32_t>(pAnswer, 40);
  data.fBytesPerCluster = NumberAt<uint32_t>(pAnswer, 44);
  data.fBytesPerRecord = NumberAt<uint32_t>(pAnswer, 48);
  data.fMftValidDataLength = NumberAt<int64_t>(pAnswer, 56);
  if (data.fMftValidDataLength < 0 || !std::has_single_bit(data.fBytesPerCluster) ||
      data.fBytesPerCluster > kLargestCluster || data.fBytesPerRecord < kSmallestRecord ||
      data.fBytesPerRecord > kLargestRecord)
    return {};
  return data;
}

TMftVolumeData TMftVolumeInformation::Data() {
  TCriticalSectionLock lock(fLock);
  if (const TQuery query = std::exchange(fQuery, nullptr))
    if (const std::optional<TMftVolumeData> data = query()) fData = *data;
  return fData;
}

TMftVolumeInformationCache& TMftVolumeInformationCache::Instance() {
  static TMftVolumeInformationCache cache;
  return cache;
}

TRef<IMftVolumeInformation> TMftVolumeInformationCache::GetMftVolumeInformation(const std::u16string& pVolumePath,
                                                                                TMftVolumeInformation::TQuery pQuery) {
  TCriticalSectionLock lock(fLock);
  TRef<IMftVolumeInformation>& known = fVolumes[pVolumePath];
  if (!known) known = MakeRef<TMftVolumeInformation>(std::move(pQuery));
  return known;
}

void TMftVolumeInformationCache::RemoveMftVolumeInformation(const std::u16string& pVolumePath) {
  TRef<IMftVolumeInformation> removed;  // released outside the lock
  TCriticalSectionLock lock(fLock);
  const auto found = fVolumes.find(pVolumePath);
  if (found == fVolumes.end()) return;
  removed = std::move(found->second);
  fVolumes.erase(found);
}

}  // namespace Vantrel::Ntfs

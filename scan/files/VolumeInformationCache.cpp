#include "scan/files/VolumeInformationCache.h"

#include "platform/files/Paths.h"
#include "scan/files/LinkRules.h"

namespace Vantrel::Enumerators {

TVolumeInformationCache& TVolumeInformationCache::Instance() {
  static TVolumeInformationCache& cache = *new TVolumeInformationCache;
  return cache;
}

int64_t TVolumeInformationCache::ClusterSize(std::u16string_view pPath) {
  std::u16string_view drive = RootOfPath(pPath, NativePathDelimiter());
  {
    TCriticalSectionLock lock(fLock);
    if (auto found = fClusterSizes.find(drive); found != fClusterSizes.end()) return found->second;
  }
  // Asked without the lock, so that one slow server does not hold up the other drives.
  TVolumeInformation information;
  if (!GetVolumeInformationOfPath(std::u16string(drive), information)) information.fClusterSize = 0;
  TCriticalSectionLock lock(fLock);
  fClusterSizes.emplace(drive, information.fClusterSize);
  return information.fClusterSize;
}

void TVolumeInformationCache::Clear() {
  TCriticalSectionLock lock(fLock);
  fClusterSizes.clear();
}

}  // namespace Vantrel::Enumerators

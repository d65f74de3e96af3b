#include "scan/files/VolumeInformationCache.h"

#include "platform/files/Paths.h"

namespace Vantrel::Enumerators {

TVolumeInformationCache& TVolumeInformationCache::Instance() {
  static TVolumeInformationCache& cache = *new TVolumeInformationCache;
  return cache;
}

int64_t TVolumeInformationCache::ClusterSize(const std::u16string& pPath) {
  {
    TCriticalSectionLock lock(fLock);
    if (auto found = fClusterSizes.find(pPath); found != fClusterSizes.end()) return found->second;
  }
  // The system is asked without the lock, so a slow server does not hold up other drives. A volume without a drive
  // letter has no resolved path. The folder that it is mounted in leads to it as well.
  std::u16string folder = ResolvedPath(pPath);
  if (folder.empty()) folder = pPath;
  TVolumeInformation information;
  if (!GetVolumeInformationOfPath(folder, information)) information.fClusterSize = 0;
  TCriticalSectionLock lock(fLock);
  fClusterSizes.emplace(pPath, information.fClusterSize);
  return information.fClusterSize;
}

void TVolumeInformationCache::Clear() {
  TCriticalSectionLock lock(fLock);
  fClusterSizes.clear();
}

}  // namespace Vantrel::Enumerators

#pragma once

// Cluster sizes of volumes, asked once.

#include <map>
#include <string>
#include <string_view>

#include "platform/files/Volumes.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {

// Remembers the cluster size of each volume: asking may take a network round trip. One for the process; any thread.
class TVolumeInformationCache {
 public:
  static TVolumeInformationCache& Instance();

  // Bytes per cluster of the volume that the folder really lies on, by a drive letter, a share, a folder that a volume
  // is mounted in or a link; 0 when the system does not tell. Kept by path: ask for the folder in which a scan comes to
  // the volume, and not for each folder beneath.
  int64_t ClusterSize(const std::u16string& pPath);
  // Forgets everything: a drive letter may have come to stand for another medium. Each scan begins with it.
  void Clear();

 private:
  TCriticalSection fLock;
  std::map<std::u16string, int64_t, std::less<>> fClusterSizes GUARDED_BY(fLock);
};

}  // namespace Vantrel::Enumerators

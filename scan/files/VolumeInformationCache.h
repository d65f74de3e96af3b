#pragma once

// A cache of the cluster sizes of volumes.

#include <map>
#include <string>
#include <string_view>

#include "platform/files/Volumes.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {

// Remembers the cluster size of each volume, because asking may take a network round trip. One object serves the
// process; any thread.
class TVolumeInformationCache {
 public:
  static TVolumeInformationCache& Instance();

  // The bytes per cluster of the volume on which the folder really lies. The path may be a drive letter, a share, a
  // mount folder or a link. 0 when the system does not tell. Results are kept by path. So ask once, for the folder at
  // which a scan enters the volume, not for each folder beneath.
  int64_t ClusterSize(const std::u16string& pPath);
  // Forgets all sizes, because a drive letter may now stand for another medium. Each scan calls it first.
  void Clear();

 private:
  TCriticalSection fLock;
  std::map<std::u16string, int64_t, std::less<>> fClusterSizes GUARDED_BY(fLock);
};

}  // namespace Vantrel::Enumerators

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

  // Bytes per cluster of the drive that the path begins with ("C:\", "\\server\share\"); 0 when the system does not
  // tell. A volume that is mounted in a folder counts as its drive.
  int64_t ClusterSize(std::u16string_view pPath);
  // Forgets everything: a drive letter may have come to stand for another medium.
  void Clear();

 private:
  TCriticalSection fLock;
  std::map<std::u16string, int64_t, std::less<>> fClusterSizes GUARDED_BY(fLock);
};

}  // namespace Vantrel::Enumerators

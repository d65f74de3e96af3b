#pragma once

// The set of folders that a scan has entered, by identity, so that each counts once.

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "platform/threads/CriticalSection.h"

namespace Vantrel::Enumerators {

// Identifies a folder: device and inode on Linux, volume and file ID on Windows.
struct TFolderIdentity {
  uint64_t fVolume = 0;
  uint64_t fId = 0;
  uint64_t fIdHigh = 0;  // Windows only
  bool operator==(const TFolderIdentity&) const = default;
};

// One object for each scan that follows links, shared by its enumerators. Any thread.
class TEnteredFolders {
 public:
  // Whether the folder may be listed by this path. The first path to ask may list it, any number of times; other paths
  // may not. pRoad is a number that stands for the path as the scan shows it.
  bool Enter(const TFolderIdentity& pFolder, uint64_t pRoad) {
    TCriticalSectionLock lock(fLock);
    return fRoads.emplace(pFolder, pRoad).first->second == pRoad;
  }

 private:
  struct THash {
    size_t operator()(const TFolderIdentity& pKey) const {
      return (pKey.fId * 0x9E3779B97F4A7C15u ^ pKey.fIdHigh) * 0x9E3779B97F4A7C15u ^ pKey.fVolume;
    }
  };
  TCriticalSection fLock;
  std::unordered_map<TFolderIdentity, uint64_t, THash> fRoads GUARDED_BY(fLock);
};

}  // namespace Vantrel::Enumerators

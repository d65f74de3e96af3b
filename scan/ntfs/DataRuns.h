#pragma once

// The extents of a file on its volume, and the two forms in which they are found.

#include <cstdint>
#include <vector>

#include "scan/ntfs/MftRecord.h"

namespace Vantrel::Ntfs {

// A stretch of a file, in clusters.
struct TDataRun {
  static constexpr int64_t kHole = -1;
  int64_t fStart = 0;  // the first cluster on the volume; kHole for a stretch without storage
  int64_t fLength = 0;
  bool operator==(const TDataRun&) const = default;
};

// The extents of a file, in the file's order.
class TDataRuns {
 public:
  void Add(TDataRun pRun) { fRuns.push_back(pRun); }
  const std::vector<TDataRun>& Runs() const { return fRuns; }
  int64_t GetTotalLength() const;  // in clusters

 private:
  std::vector<TDataRun> fRuns;
};

// No volume has more clusters; numbers above come from damaged bytes. Times the largest cluster it is far from
// overflow.
constexpr int64_t kMostClusters = int64_t{1} << 40;

// Appends the runs of an attribute: pairs of a length and a distance from the run before. False when the bytes are
// damaged; the runs before the damage are appended.
bool ParseMappingPairs(TBytes pPairs, TDataRuns& pRuns);

// Appends the runs of Windows' answer to a question for a file's extents. False when the answer is damaged.
bool ParseRetrievalPointers(TBytes pAnswer, TDataRuns& pRuns);

}  // namespace Vantrel::Ntfs

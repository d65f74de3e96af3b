#include "scan/ntfs/DataRuns.h"

namespace Vantrel::Ntfs {

namespace {

// A number of pBytes bytes, with a sign.
int64_t SignedNumber(TBytes pBytes) {
  uint64_t value = 0;
  for (size_t i = 0; i < pBytes.size(); ++i) value |= std::to_integer<uint64_t>(pBytes[i]) << (8 * i);
  const int unused = 64 - 8 * static_cast<int>(pBytes.size());
  return static_cast<int64_t>(value << unused) >> unused;
}

}  // namespace

int64_t TDataRuns::GetTotalLength() const {
  int64_t total = 0;
  for (const TDataRun& run : fRuns) total += run.fLength;
  return total;
}

bool ParseMappingPairs(TBytes pPairs, TDataRuns& pRuns) {
  int64_t start = 0;
  int64_t total = 0;
  for (size_t at = 0; at < pPairs.size();) {
    const auto head = std::to_integer<unsigned>(pPairs[at]);
    if (head == 0) return true;
    const size_t lengthBytes = head & 0xF;
    const size_t startBytes = head >> 4;
    if (lengthBytes == 0 || lengthBytes > 8 || startBytes > 8 || lengthBytes + startBytes >= pPairs.size() - at)
      return false;
    const int64_t length = SignedNumber(pPairs.subspan(at + 1, lengthBytes));
    if (length <= 0 || length > kMostClusters - total) return false;
    total += length;
    TDataRun run{TDataRun::kHole, length};
    if (startBytes > 0) {
      const int64_t distance = SignedNumber(pPairs.subspan(at + 1 + lengthBytes, startBytes));
      if (distance < -kMostClusters || distance > kMostClusters) return false;
      start += distance;
      if (start < 0 || start > kMostClusters) return false;
      run.fStart = start;
    }
    pRuns.Add(run);
    at += 1 + lengthBytes + startBytes;
  }
  return false;  // the end marker is missing
}

bool ParseRetrievalPointers(TBytes pAnswer, TDataRuns& pRuns) {
  constexpr size_t kHeader = 16;
  constexpr size_t kExtent = 16;
  if (pAnswer.size() < kHeader) return false;
  const size_t count = NumberAt<uint32_t>(pAnswer, 0);
  if (count > (pAnswer.size() - kHeader) / kExtent) return false;
  int64_t cluster = NumberAt<int64_t>(pAnswer, 8);
  for (size_t i = 0; i < count; ++i) {
    const auto next = NumberAt<int64_t>(pAnswer, kHeader + i * kExtent);
    const auto start = NumberAt<int64_t>(pAnswer, kHeader + i * kExtent + 8);
    if (cluster < 0 || next <= cluster || next > kMostClusters || start < TDataRun::kHole || start > kMostClusters)
      return false;
    pRuns.Add({start, next - cluster});
    cluster = next;
  }
  return true;
}

}  // namespace Vantrel::Ntfs

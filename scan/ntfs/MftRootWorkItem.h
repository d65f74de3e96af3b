#pragma once

// The work of building a volume's index: memory check, reading, progress, cancellation, and the line in the log.

#include <cstdint>
#include <functional>
#include <string>

#include "scan/engine/ThreadPool.h"
#include "scan/ntfs/MftReader.h"
#include "scan/ntfs/MftRoot.h"

namespace Vantrel::Ntfs {

struct TMftBuildSettings {
  TBaseMftRoot::TSettings fRoot;
  // Where there is no other way to scan, an index is built as long as it is likely to fit, and what cannot be read of
  // the table is left out. Otherwise both end the work, and the volume is scanned the ordinary way.
  bool fIsOnlyWay = true;
  int fThreads = 2;
  int64_t fFreeMemory = 0;  // bytes
  std::function<void(int64_t pDone, int64_t pAll)> fOnProgress;
};

// Builds the index. Runs on the worker that opens the scan.
class TMftRootWorkItem final : public ThreadPool::TBasicWorkItem {
 public:
  // The reader must live until the work has run. pPath is the volume's, for the log.
  TMftRootWorkItem(IVolumeReader& pReader, TMftLocation pLocation, std::u16string pPath, TMftBuildSettings pSettings,
                   TRef<ICancellationIndicator> pCancellation);

  // The finished index; nullptr when the work failed or was cancelled.
  TRef<THierarchicalMftRoot> GetRoot() const { return fRoot; }
  // Why there is none, or which error left a part of the table unread. 0 after a cancellation.
  uint32_t GetErrorCode() const { return fErrorCode; }

 protected:
  void Execute() override;

 private:
  bool HasSufficientMemory(int64_t pRecords) const;
  void Build();
  bool ReadRecords(TReadFileMftEnumerator& pRecords, THierarchicalMftRoot& pRoot);
  void LogStart(int64_t pRecords) const;
  void Log(const TMftSummary& pSummary, bool pWasCancelled) const;

  IVolumeReader& fReader;
  const TMftLocation fLocation;
  const std::u16string fPath;
  const TMftBuildSettings fSettings;
  TRef<THierarchicalMftRoot> fRoot;
  uint32_t fErrorCode = 0;
};

}  // namespace Vantrel::Ntfs

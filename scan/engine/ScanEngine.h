#pragma once

// Runs one scan: its thread pool, its limits of threads and processor time, and the accumulators that workers share.

#include <memory>
#include <optional>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/CustomFolder.h"
#include "platform/system/MemoryReserve.h"
#include "scan/engine/FolderAccumulator.h"
#include "scan/engine/ThreadPool.h"
#include "scan/engine/Workplaces.h"

namespace Vantrel::ScanEngine {

// Fills one root's tree with one job per folder on a pool of worker threads. The root supplies the enumerator. The
// engine never prints and never exits, and it knows no window.
class TScanEngine : public TInterfaced<IScanEngine> {
 public:
  // The callback runs on a worker each time all jobs are done. The pool's settings replace the machine's clock and
  // processor in tests.
  TScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
              std::function<void()> pOnAllDone, ThreadPool::TWorkerThreadPool::TSettings pPoolSettings = {});
  ~TScanEngine() override;

  void AddScanJob(std::function<TScanStart()> pOpen) override;
  void AddRefreshJob(TRef<IFolderData> pFolder, bool pRecursive,
                     std::function<TRef<IHierarchicalEnumerator>()> pOpen) override;
  bool IsScanning() const override;
  bool SetPaused(bool pPaused) override;
  TListedFolder GetLongestListed() override { return fWorkplaces.GetLongest(fTickCount()); }
  std::u16string GetStatusText() const override;
  void Dispose() override;

  ThreadPool::TWorkerThreadPool* GetWorkerThreadPool() { return fWorkerThreadPool.get(); }

 private:
  friend class TScanJob;

  // Accumulators wait here between jobs. There is at most one per worker, and each keeps its memory from earlier
  // folders.
  std::unique_ptr<TFolderAccumulator> TakeAccumulator();
  void GiveAccumulator(std::unique_ptr<TFolderAccumulator> pAccumulator);

  const TRef<IScanConfiguration> fConfiguration;
  const std::function<int64_t()> fTickCount;
  TWorkplaces fWorkplaces;
  // Held while the scan runs. Steps after the scan may use this memory.
  std::optional<TMemoryReserve> fReserve{std::in_place};
  std::unique_ptr<ThreadPool::TWorkerThreadPool> fWorkerThreadPool;
  TCriticalSection fLock;
  std::vector<std::unique_ptr<TFolderAccumulator>> fAccumulators GUARDED_BY(fLock);
};

// The processor usage, in percent, at which no more threads are started. It is 100 minus 5 per processor, limited to
// 60..80.
int32_t CpuCapOf(int32_t pProcessors);
// How many threads a scan starts ahead when it asks for that. It is half the maximum, rounded up, but 1 and 2 stay as
// they are.
int32_t PreStartedThreads(int32_t pMaximum);

}  // namespace Vantrel::ScanEngine

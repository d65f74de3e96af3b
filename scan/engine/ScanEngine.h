#pragma once

// One scan: its pool, its limits of threads and processor time, and the accumulators that workers share.

#include <memory>
#include <optional>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "model/tree/CustomFolder.h"
#include "platform/system/MemoryReserve.h"
#include "scan/engine/FolderAccumulator.h"
#include "scan/engine/ThreadPool.h"

namespace Vantrel::ScanEngine {

// Fills one root's tree: a job per folder on a pool of worker threads. The engine takes whatever enumerator the root
// hands it; it never prints, never exits and knows of no window.
class TScanEngine : public TInterfaced<IScanEngine> {
 public:
  // The callback comes once from a worker for every time that all jobs are done. The pool's settings replace the
  // machine's clock and processor in tests.
  TScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
              std::function<void()> pOnAllDone, ThreadPool::TWorkerThreadPool::TSettings pPoolSettings = {});
  ~TScanEngine() override;

  void AddScanJob(TRef<IFolderData> pFolder, TRef<IHierarchicalEnumerator> pEnumerator) override;
  void AddRefreshJob(TRef<IFolderData> pFolder, bool pRecursive,
                     std::function<TRef<IHierarchicalEnumerator>()> pOpen) override;
  bool IsScanning() const override;
  std::u16string GetStatusText() const override;
  void Dispose() override;

  ThreadPool::TWorkerThreadPool* GetWorkerThreadPool() { return fWorkerThreadPool.get(); }

 private:
  friend class TScanJob;

  // Accumulators wait here between jobs: as many as there are workers, each warm from the folders before.
  std::unique_ptr<TFolderAccumulator> TakeAccumulator();
  void GiveAccumulator(std::unique_ptr<TFolderAccumulator> pAccumulator);

  const TRef<IScanConfiguration> fConfiguration;
  // While the scan runs; what follows it may use the memory.
  std::optional<TMemoryReserve> fReserve{std::in_place};
  std::unique_ptr<ThreadPool::TWorkerThreadPool> fWorkerThreadPool;
  TCriticalSection fLock;
  std::vector<std::unique_ptr<TFolderAccumulator>> fAccumulators GUARDED_BY(fLock);
};

// The processor share from which on no more threads are started: 100 less 5 for each processor, between 60 and 80.
int32_t CpuCapOf(int32_t pProcessors);
// How many threads a scan starts ahead when it asks for that: half of them, rounded up; 1 and 2 as they are.
int32_t PreStartedThreads(int32_t pMaximum);

}  // namespace Vantrel::ScanEngine

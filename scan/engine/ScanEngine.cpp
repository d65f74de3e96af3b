#include "scan/engine/ScanEngine.h"

#include <fmt/xchar.h>

#include <algorithm>

#include "scan/engine/ScanJob.h"

namespace Vantrel::ScanEngine {

using ThreadPool::TWorkerThreadPool;

int32_t CpuCapOf(int32_t pProcessors) {
  return std::clamp(100 - 5 * pProcessors, 60, 80);
}

int32_t PreStartedThreads(int32_t pMaximum) {
  return pMaximum > 2 ? (pMaximum + 1) / 2 : pMaximum;
}

TScanEngine::TScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration, int32_t pPriority,
                         std::function<void()> pOnAllDone, TWorkerThreadPool::TSettings pPoolSettings)
    : fConfiguration(std::move(pConfiguration)),
      fTickCount(pPoolSettings.fTickCount ? pPoolSettings.fTickCount : TickCount64),
      fWorkerThreadPool(std::make_unique<TWorkerThreadPool>(std::move(pPoolSettings))) {
  if (fConfiguration->IsSingleThreaded()) {
    fWorkerThreadPool->SetMaxRunningThreads(1);
  } else {
    fWorkerThreadPool->SetMaxRunningThreads(std::max(1, pThreads));
    if (fConfiguration->WantsPreStartedThreads())
      fWorkerThreadPool->SetMinWorkerThreads(PreStartedThreads(fWorkerThreadPool->GetMaxRunningThreads()));
  }
  fWorkerThreadPool->SetPriority(pPriority);
  fWorkerThreadPool->SetOnAllWorkItemsDone([this, done = std::move(pOnAllDone)] {
    if (done) done();
    fReserve.reset();
  });
  fWorkerThreadPool->SetMaxCpuUsage(CpuCapOf(ProcessorCount()));
}

TScanEngine::~TScanEngine() = default;

void TScanEngine::AddScanJob(std::function<TScanStart()> pOpen) {
  auto job = MakeRef<TScanJob>(*this, nullptr, nullptr, TScanMode::smNew);
  job->SetOpen(std::move(pOpen));
  fWorkerThreadPool->AddWorkItem(std::move(job));
}

void TScanEngine::AddRefreshJob(TRef<IFolderData> pFolder, bool pRecursive,
                                std::function<TRef<IHierarchicalEnumerator>()> pOpen) {
  auto& folder = static_cast<TCustomFolderData&>(*pFolder);
  folder.IncludeFolderState(fsScanning);
  auto job = MakeRef<TScanJob>(*this, TRef<TCustomFolderData>(&folder), nullptr,
                               pRecursive ? TScanMode::smNew : TScanMode::smRefresh);
  job->SetOpen([pFolder, open = std::move(pOpen)] { return TScanStart{pFolder, open()}; });
  fWorkerThreadPool->AddWorkItem(std::move(job));
}

bool TScanEngine::IsScanning() const {
  return fWorkerThreadPool && fWorkerThreadPool->GetWorkItemsCount() > 0;
}

// With a thread at work there is one to go on with. Without, the end of the pause would have to start one, which the
// system may refuse.
bool TScanEngine::SetPaused(bool pPaused) {
  if (pPaused && fWorkerThreadPool->GetThreadCount() == 0) return false;
  fWorkerThreadPool->SetPaused(pPaused);
  return true;
}

std::u16string TScanEngine::GetStatusText() const {
  if (!fWorkerThreadPool) return u"No worker threadpool active";
  return fmt::format(u"Threads: {0} of max {1}", fWorkerThreadPool->GetThreadCount(),
                     fWorkerThreadPool->GetMaxRunningThreads());
}

void TScanEngine::Dispose() {
  if (fWorkerThreadPool) fWorkerThreadPool->Shutdown();
  fWorkerThreadPool.reset();
}

std::unique_ptr<TFolderAccumulator> TScanEngine::TakeAccumulator() {
  TCriticalSectionLock lock(fLock);
  if (fAccumulators.empty()) return std::make_unique<TFolderAccumulator>(*fConfiguration);
  std::unique_ptr<TFolderAccumulator> accumulator = std::move(fAccumulators.back());
  fAccumulators.pop_back();
  return accumulator;
}

void TScanEngine::GiveAccumulator(std::unique_ptr<TFolderAccumulator> pAccumulator) {
  TCriticalSectionLock lock(fLock);
  try {
    fAccumulators.push_back(std::move(pAccumulator));
  } catch (const std::bad_alloc&) {  // the accumulator is lost; the next job makes a new one
  }
}

}  // namespace Vantrel::ScanEngine

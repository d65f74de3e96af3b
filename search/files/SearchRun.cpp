#include "search/files/SearchRun.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"
#include "scan/engine/ScanEngine.h"

namespace Vantrel::Search {

namespace {

// As in a scan: with this many jobs waiting for each thread, a worker keeps its work.
constexpr int32_t kMostQueuedPerThread = 20;
constexpr int64_t kMillisecondsBetweenFolders = 50;

}  // namespace

TSearchRun::TSearchRun(TFileSearchSettings pSettings)
    : fSettings(std::move(pSettings)), fPool(std::make_unique<ThreadPool::TWorkerThreadPool>(fSettings.fPool)) {
  fPool->SetMaxRunningThreads(fSettings.fThreads);
  // A search of a tree may take less time than the pool takes to see that another thread would help.
  fPool->SetMinWorkerThreads(ScanEngine::PreStartedThreads(fPool->GetMaxRunningThreads()));
  fPool->SetPriority(fSettings.fPriority);
  fPool->SetMaxCpuUsage(ScanEngine::CpuCapOf(ProcessorCount()));
  fPool->SetOnAllWorkItemsDone([this] { EndAll(); });
}

TSearchRun::~TSearchRun() = default;

void TSearchRun::Start(std::vector<TRef<ThreadPool::IWorkItem>> pJobs) {
  if (fSettings.fFilter) fSettings.fFilter->BeginScan();
  if (pJobs.empty()) return EndAll();
  fPool->AddWorkItems(std::move(pJobs));
}

void TSearchRun::EndAll() {
  TCriticalSectionLock lock(fLock);
  fHasEnded = true;
  fChanged.notify_all();
}

void TSearchRun::SetPaused(bool pPaused) {
  fPool->SetPaused(pPaused);
  TCriticalSectionLock lock(fLock);
  fIsPaused = pPaused;
  fChanged.notify_all();
}

// The pool's clock goes in steps of up to 16 ms, so that a view which looks for results often would see the first one
// late.
bool TSearchRun::WaitForEnd(int64_t pMilliseconds) {
  using TClock = std::chrono::steady_clock;
  const TClock::time_point until = TClock::now() + std::chrono::milliseconds(pMilliseconds);
  TCriticalSectionLock lock(fLock);
  while (!fHasEnded) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - TClock::now()).count();
    if (left <= 0) break;
    lock.WaitFor(fChanged, left);
  }
  return fHasEnded;
}

void TSearchRun::FindEnough() {
  fHasFoundEnough = true;
  fToken->Cancel();
}

bool TSearchRun::IsStopped() {
  if (fIsPaused.load(std::memory_order_relaxed)) {
    TCriticalSectionLock lock(fLock);
    while (fIsPaused && !fToken->IsCancelled()) lock.Wait(fChanged);
  }
  return fToken->IsCancelled();
}

void TSearchRun::FileFailed(const std::u16string& pPath, uint32_t pCode, std::string_view pText) {
  AddError({.fPath = pPath, .fCode = pCode, .fText = FromUtf8(pText)});
}

void TSearchRun::AddError(TSearchError pError) {
  TCriticalSectionLock lock(fLock);
  fErrors.push_back(std::move(pError));
}

void TSearchRun::HandOver(std::vector<TFoundItem>& pFound) {
  if (pFound.empty()) return;
  bool isEnough = false;
  size_t handed = 0;
  {
    TCriticalSectionLock lock(fLock);
    const int64_t left = fSettings.fMostFound - fFoundCount.load(std::memory_order_relaxed);
    if (fSettings.fMostFound > 0 && static_cast<int64_t>(pFound.size()) >= left) {
      isEnough = true;
      pFound.resize(static_cast<size_t>(std::max<int64_t>(left, 0)));
    }
    fFoundCount.fetch_add(static_cast<int64_t>(pFound.size()), std::memory_order_relaxed);
    handed = pFound.size();
    fFound.push_back(std::exchange(pFound, {}));
  }
  pFound.reserve(handed);  // the next ones are probably about as many
  if (isEnough) FindEnough();
}

void TSearchRun::Count(int64_t pFiles, int64_t pFolders) {
  fFiles.fetch_add(pFiles, std::memory_order_relaxed);
  fFolders.fetch_add(pFolders, std::memory_order_relaxed);
}

void TSearchRun::ShowFolder(const std::function<std::u16string()>& pFolder) {
  const int64_t now = fPool->Now();
  if (now - fLastShown.load(std::memory_order_relaxed) < kMillisecondsBetweenFolders) return;
  fLastShown.store(now, std::memory_order_relaxed);
  std::u16string folder = pFolder();
  TCriticalSectionLock lock(fLock);
  fLastFolder.swap(folder);
}

bool TSearchRun::ShouldShare(size_t pWaiting) const {
  // A worker that gave its last piece away would end and look for another one.
  if (pWaiting <= 1) return false;
  if (IsQueueShort()) return true;
  return fPool->GetQueueLength() <= kMostQueuedPerThread * fPool->GetThreadCount() && fPool->IsCpuUsageBelowMax();
}

bool TSearchRun::Queue(TRef<ThreadPool::IWorkItem> pJob) {
  try {
    fPool->AddWorkItem(std::move(pJob));
    return true;
  } catch (...) {
    CodeOfCaughtException("TSearchRun.Queue");
    return false;
  }
}

std::vector<TFoundItem> TSearchRun::TakeFound() {
  std::vector<std::vector<TFoundItem>> blocks;
  {
    TCriticalSectionLock lock(fLock);
    blocks.swap(fFound);
  }
  if (blocks.size() == 1) return std::move(blocks.front());
  size_t count = 0;
  for (const auto& block : blocks) count += block.size();
  std::vector<TFoundItem> found;
  found.reserve(count);
  for (auto& block : blocks) std::move(block.begin(), block.end(), std::back_inserter(found));
  return found;
}

TSearchProgress TSearchRun::GetProgress() const {
  TSearchProgress progress;
  progress.fFiles = fFiles.load(std::memory_order_relaxed);
  progress.fFolders = fFolders.load(std::memory_order_relaxed);
  progress.fFound = fFoundCount.load(std::memory_order_relaxed);
  TCriticalSectionLock lock(fLock);
  progress.fErrors = static_cast<int64_t>(fErrors.size());
  progress.fLastFolder = fLastFolder;
  return progress;
}

std::vector<TSearchError> TSearchRun::GetErrors() const {
  TCriticalSectionLock lock(fLock);
  return fErrors;
}

}  // namespace Vantrel::Search

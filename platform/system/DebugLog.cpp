#include "platform/system/DebugLog.h"

#include <atomic>
#include <utility>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {
namespace {

struct TDebugLog {
  std::atomic<bool> fActive{false};
  TCriticalSection fLock;
  TDebugLogSink fSink GUARDED_BY(fLock);
};

// Never destroyed: worker threads may log while the process ends.
TDebugLog& Log() {
  static TDebugLog& log = *new TDebugLog;
  return log;
}

}  // namespace

bool IsDebugLogActive() noexcept {
  return Log().fActive.load(std::memory_order_relaxed);
}

void LogDebug(std::u16string_view pLine) {
  if (!IsDebugLogActive()) return;
  TDebugLog& log = Log();
  TCriticalSectionLock lock(log.fLock);
  if (log.fSink) log.fSink(pLine);
}

void SetDebugLogSink(TDebugLogSink pSink) {
  TDebugLog& log = Log();
  TCriticalSectionLock lock(log.fLock);
  log.fSink = std::move(pSink);
  log.fActive.store(static_cast<bool>(log.fSink), std::memory_order_relaxed);
}

}  // namespace Vantrel

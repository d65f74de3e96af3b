#include "scan/files/BackupPrivilege_win32.h"

#include <atomic>
#include <limits>

namespace Vantrel::Enumerators {
namespace {

// Read and written without a lock. A lost update only changes the time of the next attempt.
std::atomic<int64_t> gNextAttempt{std::numeric_limits<int64_t>::min()};
std::atomic<uint32_t> gSuccesses{0};

}  // namespace

bool TBackupPrivilege::TryEnable(IWin32FileApi& pApi) {
  int64_t now = pApi.TickCount();
  if (now < gNextAttempt.load(std::memory_order_relaxed)) return false;
  gNextAttempt.store(now + kMillisecondsBetweenAttempts, std::memory_order_relaxed);
  if (!pApi.EnableBackupPrivilege()) return false;
  gSuccesses.fetch_add(1);
  return true;
}

uint32_t TBackupPrivilege::Successes() {
  return gSuccesses.load();
}

void TBackupPrivilege::ForgetAttempts() {
  gNextAttempt.store(std::numeric_limits<int64_t>::min());
}

}  // namespace Vantrel::Enumerators

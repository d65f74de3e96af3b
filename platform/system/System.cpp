#include "platform/system/System.h"

#include <algorithm>

namespace Vantrel {

TCpuUsageMeter::TCpuUsageMeter() : fWindowStart(TickCount64()), fAtWindowStart(ReadSystemTimes()) {}

namespace {

// Threads that use less than one part in so many of their time mostly wait.
constexpr uint64_t kWaitingShare = 10;

}  // namespace

std::optional<int> TCpuUsageMeter::Percent(int32_t pThreads) {
  TCriticalSectionLock lock(fLock);
  const int64_t now = TickCount64();
  if (now - fWindowStart < kWindowMilliseconds) return fPercent;
  const TTimes times = ReadSystemTimes();
  // The system's counters advance in steps. A window without a step is extended.
  if (times.fTotal <= fAtWindowStart.fTotal) return fPercent;
  const uint64_t total = times.fTotal - fAtWindowStart.fTotal;
  // A processor's waiting time may be corrected backwards, so the busy share is clamped.
  const uint64_t busy = times.fBusy > fAtWindowStart.fBusy ? times.fBusy - fAtWindowStart.fBusy : 0;
  fPercent = static_cast<int>(std::min<uint64_t>(100, (busy * 100 + total / 2) / total));
  const uint64_t own = times.fOwn - fAtWindowStart.fOwn;
  const uint64_t window = static_cast<uint64_t>(now - fWindowStart) * 1000;
  if (own * kWaitingShare < window * static_cast<uint64_t>(pThreads))
    fPercent = std::min(*fPercent, static_cast<int>(own * 100 / (window * static_cast<uint64_t>(ProcessorCount()))));
  fWindowStart = now;
  fAtWindowStart = times;
  return fPercent;
}

}  // namespace Vantrel

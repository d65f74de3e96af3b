#include "platform/system/System.h"

#include <algorithm>

namespace Vantrel {

TCpuUsageMeter::TCpuUsageMeter() : fWindowStart(TickCount64()), fAtWindowStart(ReadSystemTimes()) {}

std::optional<int> TCpuUsageMeter::Percent() {
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
  fWindowStart = now;
  fAtWindowStart = times;
  return fPercent;
}

}  // namespace Vantrel

#pragma once

// Ticks, processors, processor usage, thread names and priorities, and COM.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// Milliseconds since some fixed moment. The value never goes back. A call is cheap enough for once per folder.
int64_t TickCount64();

// Logical processors that this process may run on, at least 1.
int ProcessorCount();

// Bytes of memory that programs can still get without others' being moved to disk. 0 if the system does not tell.
int64_t FreePhysicalMemory();

// Lets the heaps of this process grow in large steps, since a system call for every few pages slows a scan. Takes no
// memory by itself. Does nothing where memory is limited or where the system's heap needs no such advice.
void UseLargeHeapSteps();

// Measures how busy the whole machine is with all its processes: the share of processor time used between two readings.
// Many threads may ask one meter.
class TCpuUsageMeter {
 public:
  TCpuUsageMeter();
  // Percent of all processors, 0 to 100, over the last finished window of at least kWindowMilliseconds. No value until
  // the first window is over. It is what the whole system uses, or else what this program alone uses: if its pThreads
  // mostly waited for storage, more of them would do so too, and take nothing from other programs.
  std::optional<int> Percent(int32_t pThreads);

 private:
  struct TTimes {
    uint64_t fBusy = 0;
    uint64_t fTotal = 0;
    uint64_t fOwn = 0;  // microseconds of this program
  };
  static TTimes ReadSystemTimes();

  static constexpr int64_t kWindowMilliseconds = 50;
  TCriticalSection fLock;
  int64_t fWindowStart GUARDED_BY(fLock);
  TTimes fAtWindowStart GUARDED_BY(fLock);
  std::optional<int> fPercent GUARDED_BY(fLock);
};

// Sets the calling thread's priority, in seven steps: 0 idle, 1 lowest, 2 lower, 3 normal, 4 higher, 5 highest, 6
// time-critical. If the system refuses a step, the priority stays and there is no error.
void SetCurrentThreadPriority(int pStep);

// Sets the name that debuggers and top show for the calling thread. At most 15 characters are kept.
void SetCurrentThreadName(const std::string& pName);

// Initialises COM for the calling thread during its lifetime. Does nothing on systems without COM.
class TComInitializer {
 public:
  explicit TComInitializer(bool pWanted);
  ~TComInitializer();
  TComInitializer(const TComInitializer&) = delete;
  TComInitializer& operator=(const TComInitializer&) = delete;

 private:
  bool fInitialized;
};

}  // namespace Vantrel

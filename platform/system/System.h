#pragma once

// Ticks, processors, processor usage, thread names and priorities, COM.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// Milliseconds since some fixed moment, never going back. Cheap enough to be asked once per folder.
int64_t TickCount64();

// Logical processors that this process may run on, at least 1.
int ProcessorCount();

// Measures how busy the whole machine is, all processes together: the share of processor time used between two looks.
// One meter may be asked by many threads.
class TCpuUsageMeter {
 public:
  TCpuUsageMeter();
  // Percent, 0 to 100, over the last finished window of at least kWindowMilliseconds; no value until the first one is
  // over.
  std::optional<int> Percent();

 private:
  struct TTimes {
    uint64_t fBusy = 0;
    uint64_t fTotal = 0;
  };
  static TTimes ReadSystemTimes();

  static constexpr int64_t kWindowMilliseconds = 50;
  TCriticalSection fLock;
  int64_t fWindowStart GUARDED_BY(fLock);
  TTimes fAtWindowStart GUARDED_BY(fLock);
  std::optional<int> fPercent GUARDED_BY(fLock);
};

// Priority of the calling thread, seven steps: 0 idle, 1 lowest, 2 lower, 3 normal, 4 higher, 5 highest, 6
// time-critical. Steps that the system does not grant are left as they are, without an error.
void SetCurrentThreadPriority(int pStep);

// A name that debuggers and top show for the calling thread; at most 15 characters are kept.
void SetCurrentThreadName(const std::string& pName);

// Initialises COM for the calling thread while it lives; does nothing where there is no COM.
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

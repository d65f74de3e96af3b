#pragma once

// A reserve of memory for work that must not stop half way.

namespace Vantrel {

// Memory put aside while at least one TMemoryReserve lives. A scan holds one. A job that finds no memory ends one
// folder's listing. What it listed must reach the folder and all its ancestors, or none of them, and the error list.
// That part of the work uses the reserve.
class TMemoryReserve {
 public:
  TMemoryReserve() noexcept;  // puts aside as much as is available
  ~TMemoryReserve();
  TMemoryReserve(const TMemoryReserve&) = delete;
  TMemoryReserve& operator=(const TMemoryReserve&) = delete;
};

// While a TReserveUse lives, the calling thread's allocations may use the reserve. Without one, or with the reserve
// used up, a failed allocation throws std::bad_alloc as usual. The destructor refills the reserve as far as memory
// allows.
class TReserveUse {
 public:
  TReserveUse() noexcept;
  ~TReserveUse();
  TReserveUse(const TReserveUse&) = delete;
  TReserveUse& operator=(const TReserveUse&) = delete;
};

// For memory that does not come from operator new. Frees a piece of the reserve as operator new does before it tries
// again. Returns when there may be memory now, and throws std::bad_alloc when there is none.
void MakeRoomOrThrow();

}  // namespace Vantrel

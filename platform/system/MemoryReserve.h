#pragma once

// A reserve of memory, for work that must not stop half way.

namespace Vantrel {

// Memory put aside while at least one of these lives. A scan holds one: a job that finds no memory ends one folder's
// listing, but what was listed must reach the folder and all its ancestors, or none of them, and the error list. That
// part of the work draws on the reserve.
class TMemoryReserve {
 public:
  TMemoryReserve() noexcept;  // puts aside what can be had
  ~TMemoryReserve();
  TMemoryReserve(const TMemoryReserve&) = delete;
  TMemoryReserve& operator=(const TMemoryReserve&) = delete;
};

// While one of these lives, the calling thread's allocations may draw on the reserve. Without one, or once the reserve
// is used up, an allocation that finds no memory throws std::bad_alloc as usual. At its end the reserve is filled up
// again as far as there is memory.
class TReserveUse {
 public:
  TReserveUse() noexcept;
  ~TReserveUse();
  TReserveUse(const TReserveUse&) = delete;
  TReserveUse& operator=(const TReserveUse&) = delete;
};

// For memory that does not come from operator new: gives way as operator new does before it tries again, so it returns
// when there may be memory now and throws std::bad_alloc when there is none.
void MakeRoomOrThrow();

}  // namespace Vantrel

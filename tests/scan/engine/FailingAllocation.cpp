// In a file of its own: the compiler would else see that memory from operator new goes to free, and warn.

#include "tests/scan/engine/FailingAllocation.h"

#include <cstdlib>
#include <new>

std::atomic<int64_t> gAllocationsLeft{-1};

// Replaced for the whole test program. An allocation that fails does so once: memory that was given up helps it.
void* operator new(size_t pBytes) {
  bool fails = gAllocationsLeft.load(std::memory_order_relaxed) >= 0 && gAllocationsLeft.fetch_sub(1) == 0;
  while (true) {
    if (void* memory = fails ? nullptr : std::malloc(pBytes != 0 ? pBytes : 1)) return memory;
    fails = false;
    const std::new_handler handler = std::get_new_handler();
    if (!handler) throw std::bad_alloc();
    handler();
  }
}
void* operator new(size_t pBytes, const std::nothrow_t&) noexcept {
  return std::malloc(pBytes != 0 ? pBytes : 1);
}
void operator delete(void* pMemory) noexcept {
  std::free(pMemory);
}
void operator delete(void* pMemory, size_t) noexcept {
  std::free(pMemory);
}

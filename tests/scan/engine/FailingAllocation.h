#pragma once

// Allocations of the test program that fail when a test wants them to.

#include <atomic>
#include <cstdint>

// How many allocations of operator new succeed before one fails; negative: all succeed.
extern std::atomic<int64_t> gAllocationsLeft;

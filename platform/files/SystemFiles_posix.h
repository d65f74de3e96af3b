#pragma once

// What the Linux sources of this room share.

#include <cerrno>
#include <cstdint>

namespace Vantrel {

// As many links in a row as the kernel follows.
inline constexpr int kMostLinks = 40;

// The error code of the last system call of this thread.
inline uint32_t LastError() {
  return static_cast<uint32_t>(errno);
}

}  // namespace Vantrel

#pragma once

// The file systems in which nothing is stored.

#include <cstdint>

namespace Vantrel::Enumerators {

// Whether a file system's magic number (statfs) is that of a kernel's pseudo file system, in which nothing is stored.
bool IsPseudoFileSystem(uint64_t pMagic);

}  // namespace Vantrel::Enumerators

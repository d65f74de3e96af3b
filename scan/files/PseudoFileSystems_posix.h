#pragma once

// Recognises the kernel's pseudo file systems, in which nothing is stored.

#include <cstdint>

namespace Vantrel::Enumerators {

// Whether the magic number from statfs belongs to a pseudo file system of the kernel.
bool IsPseudoFileSystem(uint64_t pMagic);

}  // namespace Vantrel::Enumerators

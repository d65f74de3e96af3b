#pragma once

// Unpacks the contents of files that NTFS keeps compressed.

#include <cstddef>
#include <span>

#include "scan/ntfs/MftRecord.h"

namespace Vantrel::Ntfs {

// Unpacks one unit of a compressed file. What the packed bytes do not fill of pUnit becomes zeros. False when the
// packed bytes are damaged; the unit then holds what came before the damage.
bool UnpackLznt1(TBytes pPacked, std::span<std::byte> pUnit);

}  // namespace Vantrel::Ntfs

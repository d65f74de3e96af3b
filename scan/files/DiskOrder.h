#pragma once

// Asks whether a disk rotates, and where on it a file lies.

#include <cstdint>
#include <optional>
#include <string>

namespace Vantrel::Storages {

// Whether the path lies on a disk that rotates. False if the system does not tell, as for shares and for volumes of
// several disks. Any thread.
bool LiesOnRotatingDisk(const std::u16string& pPath);

// The place of an ordinary file's first bytes on its volume, or its number there, which often has the same order. For
// comparisons within one volume. Nothing if neither is known. Any thread.
std::optional<uint64_t> PlaceOfFile(const std::u16string& pPath);

}  // namespace Vantrel::Storages

#pragma once

// What the system tells of a block device.

#include <filesystem>

namespace Vantrel::Storages {

// Whether a disk rotates, by the folder that the system keeps for it, for a partition of it or for a volume made of
// several. False if there is none, and for a virtual machine's disk.
bool DeviceRotates(const std::filesystem::path& pDevice);

}  // namespace Vantrel::Storages

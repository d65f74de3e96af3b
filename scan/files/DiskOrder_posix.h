#pragma once

// What the system tells of a block device.

#include <string>

namespace Vantrel::Storages {

// pDevices is the folder in which the system keeps a folder for each device, "8:1". A partition's folder lies in that
// of its disk. False if there is none.
bool DeviceRotates(const std::string& pDevices, unsigned pMajor, unsigned pMinor);

}  // namespace Vantrel::Storages

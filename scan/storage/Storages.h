#pragma once

// The list of all kinds of storage, and the one that stands for a loaded scan.

#include <vector>

#include "model/roots/Storage.h"

namespace Vantrel::Storages {

// The given kinds; the first is that of paths without a protocol, and knows whether a path that looks like a protocol
// is one of its own.
TRef<IStorages> CreateStorages(std::vector<TRef<IStorage>> pKinds);

// What a loaded scan lies on: nothing that could be opened. The delimiter is that of the scan's paths.
TRef<IStorage> CreateLoadedScanStorage(char16_t pPathDelimiter);

// What a path begins with that looks like a protocol, with its colon: "sftp:" of "sftp://host/data". Empty when it
// begins with none; one letter is a drive.
std::u16string_view ProtocolOf(std::u16string_view pPath);

}  // namespace Vantrel::Storages

#pragma once

// The list of all kinds of storage, and the storage of a loaded scan.

#include <vector>

#include "model/roots/Storage.h"

namespace Vantrel::Storages {

// Makes a list of these kinds of storage. The first kind serves paths without a protocol. It also tells whether a path
// that seems to have a protocol is its own.
TRef<IStorages> CreateStorages(std::vector<TRef<IStorage>> pKinds);

// The storage of a loaded scan, from which nothing can be opened. pPathDelimiter is the delimiter of the scan's paths.
TRef<IStorage> CreateLoadedScanStorage(char16_t pPathDelimiter);

// The protocol at the start of a path, with its colon: "sftp:" of "sftp://host/data". Empty when there is none. A
// single letter is a drive, not a protocol.
std::u16string_view ProtocolOf(std::u16string_view pPath);

}  // namespace Vantrel::Storages

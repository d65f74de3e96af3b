#pragma once

// The files of this machine as a storage: what the operating system reaches by a path.

#include "model/roots/Storage.h"

namespace Vantrel::Storages {

// Serves paths of the operating system, with "file:" in front or without. Its paths have no protocol.
TRef<IStorage> CreateLocalStorage();

}  // namespace Vantrel::Storages

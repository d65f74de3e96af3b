#pragma once

// The storage for files of this machine, which the operating system reaches by a path.

#include "model/roots/Storage.h"

namespace Vantrel::Storages {

// Serves paths of the operating system, with or without "file:" in front. The storage's own paths have no protocol.
TRef<IStorage> CreateLocalStorage();

}  // namespace Vantrel::Storages

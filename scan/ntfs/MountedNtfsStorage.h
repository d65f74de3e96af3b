#pragma once

// Local files, where whole NTFS volumes are scanned through their file tables.

#include "model/roots/Storage.h"
#include "scan/ntfs/NtfsVolumes.h"

namespace Vantrel::Ntfs {

// Wraps the storage of local files. The root of a mounted NTFS volume is read through the volume's file table where
// that is possible and wanted. Otherwise, for all other paths, and for the refresh of a branch, the wrapped storage
// serves.
TRef<IStorage> CreateMountedNtfsStorage(TRef<IStorage> pLocal, TVolumeOpener pOpener = {});

}  // namespace Vantrel::Ntfs

#pragma once

// The storage of NTFS images and devices: "ntfs:disk.img", "ntfs:/dev/sdb1|/Users".

#include "model/roots/Storage.h"
#include "scan/ntfs/NtfsVolumes.h"

namespace Vantrel::Ntfs {

// The parts of a path of this storage. The path of a root is "ntfs:IMAGE|/INSIDE" with the system's delimiter.
struct TNtfsPath {
  std::u16string fImage;
  std::u16string fInside;  // without a delimiter at either end; empty for the volume's root
};

// Splits at the last "|" that a delimiter or the end follows.
TNtfsPath SplitNtfsPath(std::u16string_view pPath, char16_t pDelimiter);

// The image or device of a path as typed. Empty for a path of another storage.
std::u16string ImageOfPath(std::u16string_view pTyped);

// Scans volumes that are not mounted, and images. A disk with a table of partitions shows each NTFS partition as a
// folder.
TRef<IStorage> CreateNtfsStorage(TVolumeOpener pOpener = {});

}  // namespace Vantrel::Ntfs

#pragma once

// Builds the index of a volume, whatever it is opened from, and describes for the report how it was read.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/roots/Storage.h"
#include "platform/volumes/MountedVolumes.h"
#include "platform/volumes/VolumeReader.h"
#include "scan/ntfs/MftEnumerators.h"
#include "scan/ntfs/MftLocation.h"
#include "scan/ntfs/MftRootWorkItem.h"

namespace Vantrel::Ntfs {

// Opens what holds volumes. Tests open images in memory and drivers that they stage.
struct TVolumeOpener {
  std::function<std::unique_ptr<IVolumeReader>(const std::u16string& pPath)> fOpenReader = OpenVolumeReader;
  std::function<std::unique_ptr<INtfsDriver>(const std::u16string& pDevice, const std::u16string& pVolumeRoot)>
      fOpenDriver = OpenNtfsDriver;
  std::function<std::optional<TMountedNtfs>(const std::u16string& pPath)> fFindMounted = FindMountedNtfs;
  std::function<int64_t()> fFreeMemory;  // bytes; empty: asks the system
};

// An index, and what the report says of its volume.
struct TIndexedVolume {
  TRef<THierarchicalMftRoot> fRoot;
  uint32_t fErrorCode = 0;  // a part of the table was not read
  TVolumeFacts fFacts;
  TMftLocation fLocation;
};

// Settings of an index that follow from a scan's.
TMftBuildSettings BuildSettingsOf(const TScanContext& pContext, const TVolumeOpener& pOpener, char16_t pDelimiter);

// Builds the index of a located volume. EOSError when that fails. No index when the scan was cancelled.
TIndexedVolume IndexVolume(IVolumeReader& pReader, const TMftLocation& pLocation, const std::u16string& pVolumePath,
                           const TMftBuildSettings& pSettings, const TScanContext& pContext);

// Sentences for the report: how the volume was read, and what is not in the tree.
std::vector<std::u16string> NotesOf(const TMftSummary& pSummary, bool pIsCompatible);

}  // namespace Vantrel::Ntfs

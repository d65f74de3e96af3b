#pragma once

// Volumes whose index is known, for opening the files in them.

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "scan/ntfs/MftNames.h"
#include "scan/ntfs/NtfsFile.h"
#include "scan/ntfs/NtfsVolumes.h"

namespace Vantrel::Ntfs {

// A volume with its index, of which files are opened. Any thread.
class TOpenedVolume : public std::enable_shared_from_this<TOpenedVolume> {
 public:
  // pImage is the path of what holds the volume.
  TOpenedVolume(TVolumeOpener pOpener, std::u16string pImage, const TIndexedVolume& pIndex);

  // Opens a file by its path from the volume's root. EOSError. pPath is for messages. The file keeps the volume alive.
  std::unique_ptr<IStoredFile> OpenFile(std::u16string_view pPathInside, char16_t pDelimiter,
                                        const std::u16string& pPath);

 private:
  std::shared_ptr<IVolumeReader> TakeReader();

  const TVolumeOpener fOpener;
  const std::u16string fImage;
  const TRef<const THierarchicalMftRoot> fRoot;
  const TMftLocation fLocation;
  const uint64_t fId;  // the same for each opening of the volume
  TMftNames fNames;
  TCriticalSection fLock;
  std::vector<std::unique_ptr<IVolumeReader>> fIdleReaders GUARDED_BY(fLock);
};

// The volumes of a storage by the beginning of their files' paths. While a volume is scanned, its index serves for
// opening files, too. An index that was needed after that stays, for the next file. Any thread.
class TOpenedVolumes {
 public:
  // A volume that is about to be scanned, with the options of the scan. What was known of it before is forgotten.
  void AddScanned(const std::u16string& pPrefix, THierarchicalEnumeratorOptions pOptions,
                  const std::shared_ptr<TOpenedVolume>& pVolume);

  // The volume of a file and the file's path inside.
  struct TFound {
    std::shared_ptr<TOpenedVolume> fVolume;
    std::u16string_view fPathInside;
  };
  // Reads the index of a volume: which one, and the beginning of its files' paths.
  using TOpen = std::function<std::shared_ptr<TOpenedVolume>(std::u16string& pPrefix)>;
  // Finds the volume of a file. If its index is gone, pOpen reads it again, and other threads wait.
  TFound Find(std::u16string_view pPath, const TOpen& pOpen);

  // The options of the last scan of the file's volume; pOthers when it was not scanned.
  THierarchicalEnumeratorOptions OptionsOf(std::u16string_view pPath, THierarchicalEnumeratorOptions pOthers) const;

 private:
  struct TKnown {
    std::u16string fPrefix;
    THierarchicalEnumeratorOptions fOptions = 0;
    std::weak_ptr<TOpenedVolume> fVolume;
  };
  TFound FindKnown(std::u16string_view pPath) const;
  void Hold(const std::shared_ptr<TOpenedVolume>& pVolume);

  TCriticalSection fOpening;  // taken before fLock
  mutable TCriticalSection fLock;
  std::vector<TKnown> fKnown GUARDED_BY(fLock);
  std::vector<std::shared_ptr<TOpenedVolume>> fHeld GUARDED_BY(fLock);  // those of which files were opened last
};

}  // namespace Vantrel::Ntfs

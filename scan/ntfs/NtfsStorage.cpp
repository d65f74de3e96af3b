#include "scan/ntfs/NtfsStorage.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Numbers.h"
#include "platform/text/Text.h"
#include "platform/threads/CriticalSection.h"
#include "scan/ntfs/NtfsErrors.h"
#include "scan/ntfs/OpenedVolumes.h"
#include "scan/ntfs/PartitionEnumerator.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Ntfs {

namespace {

constexpr std::u16string_view kProtocol = u"ntfs:";
constexpr char16_t kSplit = u'|';

bool IsDelimiter(char16_t pChar, char16_t pDelimiter) {
  return pChar == pDelimiter || (pDelimiter == u'\\' && pChar == u'/');
}

bool HasProtocol(std::u16string_view pPath) {
  return SameTextAscii(pPath.substr(0, kProtocol.size()), kProtocol);
}

// "C:" and "C:\" mean the volume, not its folder.
std::u16string ImagePath(std::u16string_view pTyped) {
  if (NativePathDelimiter() == u'\\') {
    if (pTyped.starts_with(u"\\\\.\\")) return std::u16string(WithoutTrailingDelimiter(pTyped, u'\\'));
    const bool isDrive = pTyped.size() >= 2 && pTyped.size() <= 3 && pTyped[1] == u':' &&
                         (pTyped.size() == 2 || IsDelimiter(pTyped[2], u'\\'));
    if (isDrive) return u"\\\\.\\" + std::u16string(pTyped.substr(0, 2));
  }
  return AbsolutePath(pTyped);
}

std::u16string PathOf(const TNtfsPath& pPath, char16_t pDelimiter) {
  return std::u16string(kProtocol) + pPath.fImage + kSplit + pDelimiter + pPath.fInside;
}

// What a disk holds and the tree does not show.
std::u16string NoteOfOthers(const std::vector<std::string>& pPartitions) {
  return FromUtf8(fmt::format("Partitions without NTFS are not shown: {}.", fmt::join(pPartitions, ", ")));
}

class TNtfsStorage : public TInterfaced<IStorage> {
 public:
  explicit TNtfsStorage(TVolumeOpener pOpener) : fOpener(std::move(pOpener)) {}

  std::u16string_view GetProtocol() const override { return kProtocol; }
  char16_t GetPathDelimiter() const override { return NativePathDelimiter(); }

  std::u16string AbsolutePath(std::u16string_view pTyped) const override {
    TNtfsPath path = SplitNtfsPath(pTyped, GetPathDelimiter());
    path.fImage = ImagePath(path.fImage);
    return path.fImage.empty() ? std::u16string() : PathOf(path, GetPathDelimiter());
  }

  // Only images themselves are looked for: an index would have to be built to know what is inside.
  bool Exists(const std::u16string& pPath) const override {
    const TNtfsPath path = SplitNtfsPath(pPath, GetPathDelimiter());
    return path.fInside.empty() && !ResolvedPath(path.fImage).empty();
  }

  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                 const TScanContext& pContext) const override {
    SetInformation(pPath, {});
    try {
      return Open(pPath, pContext);
    } catch (const EOSError& error) {
      return MakeRef<Enumerators::TPathNotFoundEnumerator>(pPath, error.Code(), pContext.fOptions);
    }
  }

  TStorageInformation GetInformation(const std::u16string& pPath) const override {
    TCriticalSectionLock lock(fLock);
    const auto found = fInformation.find(pPath);
    return found == fInformation.end() ? TStorageInformation() : found->second;
  }

  std::string ErrorText(uint32_t pCode) const override { return ErrorTextOf(pCode); }

  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext& pContext) const override {
    const TOpenedVolumes::TFound found =
        fOpened.Find(pPath, [&](std::u16string& pPrefix) { return OpenForFiles(pPath, pContext, pPrefix); });
    if (!found.fVolume) throw EOSError(kErrorNoFile, "Opening a file of a volume", pPath);
    return found.fVolume->OpenFile(found.fPathInside, GetPathDelimiter(), pPath);
  }

 private:
  // A volume that is opened, and the beginning of the paths of its files.
  struct TVolumePlace {
    TNtfsPath fParts;
    TVolumePart fPart;
    std::u16string fPrefix;
  };

  TRef<IHierarchicalEnumerator> Open(const std::u16string& pPath, const TScanContext& pContext) const {
    TNtfsPath path = SplitNtfsPath(pPath, GetPathDelimiter());
    const std::shared_ptr<IVolumeReader> reader = fOpener.fOpenReader(path.fImage);
    if (IsPartitioned(*reader) && path.fInside.empty())
      return OpenDisk(pPath, reader, PartitionsOf(*reader, path.fImage), pContext);
    return OpenVolume(pPath, PlaceOf(path, *reader), *reader, pContext);
  }

  static TDiskPartitions PartitionsOf(IVolumeReader& pReader, const std::u16string& pImage) {
    TDiskPartitions partitions = FindPartitions(pReader);
    if (partitions.fNtfs.empty()) throw EOSError(kErrorNoNtfsPartition, "Opening a disk", pImage);
    return partitions;
  }

  // The volume of a path that names something inside it.
  TVolumePlace PlaceOf(TNtfsPath pPath, IVolumeReader& pReader) const {
    TVolumePart part{0, pReader.Size()};
    std::u16string partition;
    if (IsPartitioned(pReader)) {
      partition = pPath.fInside;
      part = TakePartition(PartitionsOf(pReader, pPath.fImage).fNtfs, pPath);
      partition.resize(partition.size() - pPath.fInside.size());
      if (!partition.ends_with(GetPathDelimiter())) partition += GetPathDelimiter();
    }
    const std::u16string prefix = PathOf({pPath.fImage, partition}, GetPathDelimiter());
    return {std::move(pPath), part, prefix};
  }

  TRef<IHierarchicalEnumerator> OpenVolume(const std::u16string& pPath, const TVolumePlace& pPlace,
                                           IVolumeReader& pReader, const TScanContext& pContext) const {
    const TNtfsPath& parts = pPlace.fParts;
    TMftScan scan;
    scan.fVolumePath = PathOf({parts.fImage, {}}, GetPathDelimiter());
    scan.fTopPath = pPath;
    scan.fPathDelimiter = GetPathDelimiter();
    TRef<IHierarchicalEnumerator> enumerator;
    const TMftLocation location = LocateTable(pReader, pPlace.fPart, scan.fVolumePath);
    const TIndexedVolume volume = IndexVolume(pReader, location, scan.fVolumePath,
                                              BuildSettingsOf(pContext, fOpener, GetPathDelimiter()), pContext);
    if (volume.fRoot) {
      const auto opened = std::make_shared<TOpenedVolume>(fOpener, parts.fImage, volume);
      fOpened.AddScanned(pPlace.fPrefix, pContext.fOptions, opened);
      scan.fRoot = volume.fRoot;
      scan.fErrorCode = volume.fErrorCode;
      scan.fVolume = opened;
      enumerator = THierarchicalMftEnumerator::CreateForPath(scan, parts.fInside, pContext.fOptions);
      SetInformation(pPath, InformationOf(volume, parts.fImage, ReadVolumeFacts(pReader, location), pContext));
    }
    if (enumerator) return enumerator;
    return MakeRef<Enumerators::TPathNotFoundEnumerator>(pPath, kErrorNoFolder, pContext.fOptions);
  }

  // Reads the index of a file's volume, which no scan holds any more.
  std::shared_ptr<TOpenedVolume> OpenForFiles(const std::u16string& pPath, const TScanContext& pContext,
                                              std::u16string& pPrefix) const {
    const TNtfsPath path = SplitNtfsPath(pPath, GetPathDelimiter());
    const std::unique_ptr<IVolumeReader> reader = fOpener.fOpenReader(path.fImage);
    const TVolumePlace place = PlaceOf(path, *reader);
    TScanContext context = pContext;
    context.fOptions = fOpened.OptionsOf(pPath, pContext.fOptions);
    const TIndexedVolume volume = IndexVolume(*reader, LocateTable(*reader, place.fPart, pPath), pPath,
                                              BuildSettingsOf(context, fOpener, GetPathDelimiter()), context);
    if (!volume.fRoot) throw EOSError(kErrorNothingToRead, "Opening a file of a volume", pPath);  // cancelled
    pPrefix = place.fPrefix;
    return std::make_shared<TOpenedVolume>(fOpener, path.fImage, volume);
  }

  // Each partition's index is built when the scan enters its folder.
  TRef<IHierarchicalEnumerator> OpenDisk(const std::u16string& pPath, const std::shared_ptr<IVolumeReader>& pReader,
                                         const TDiskPartitions& pPartitions, const TScanContext& pContext) const {
    const TRef<const TNtfsStorage> self(this);
    auto open = [self, pPath, pReader, pContext](const TNtfsPartition& pPartition) {
      return self->OpenPartition(pPath, *pReader, pPartition, pContext);
    };
    TStorageInformation information;
    information.fMountPoint = SplitNtfsPath(pPath, GetPathDelimiter()).fImage;
    information.fFileSystem = u"partitioned disk";
    information.fTotalBytes = pReader->Size();
    if (!pPartitions.fOthers.empty()) information.fNotes.push_back(NoteOfOthers(pPartitions.fOthers));
    SetInformation(pPath, std::move(information));
    return MakeRef<TPartitionEnumerator>(pPath, GetPathDelimiter(), pPartitions.fNtfs, std::move(open),
                                         pContext.fOptions);
  }

  TRef<IHierarchicalEnumerator> OpenPartition(const std::u16string& pDiskPath, IVolumeReader& pReader,
                                              const TNtfsPartition& pPartition, const TScanContext& pContext) const {
    const std::u16string path = JoinPath(pDiskPath, pPartition.Name(), GetPathDelimiter());
    const TNtfsPath parts{SplitNtfsPath(path, GetPathDelimiter()).fImage, {}};
    TRef<IHierarchicalEnumerator> enumerator;
    try {
      enumerator = OpenVolume(path, {parts, pPartition.fPart, path + GetPathDelimiter()}, pReader, pContext);
    } catch (const EOSError& error) {
      enumerator = MakeRef<Enumerators::TPathNotFoundEnumerator>(path, error.Code(), pContext.fOptions);
    }
    TStorageInformation partition = GetInformation(path);
    TCriticalSectionLock lock(fLock);
    TStorageInformation& disk = fInformation[pDiskPath];
    disk.fFreeBytes += partition.fFreeBytes;
    for (const std::u16string& note : partition.fNotes) disk.fNotes.push_back(pPartition.Name() + u": " + note);
    fInformation.erase(path);
    return enumerator;
  }

  TVolumePart TakePartition(const std::vector<TNtfsPartition>& pPartitions, TNtfsPath& pPath) const {
    const size_t end = std::min(pPath.fInside.find(GetPathDelimiter()), pPath.fInside.size());
    for (const TNtfsPartition& partition : pPartitions) {
      if (!SamePath(partition.Name(), pPath.fInside.substr(0, end), u'\\')) continue;
      pPath.fInside.erase(0, end + 1);
      return partition.fPart;
    }
    throw EOSError(kErrorNoFolder, "Opening a partition", pPath.fInside);
  }

  static TStorageInformation InformationOf(const TIndexedVolume& pVolume, const std::u16string& pImage,
                                           const TVolumeFacts& pFacts, const TScanContext& pContext) {
    TStorageInformation information;
    information.fMountPoint = pImage;
    information.fLabel = pFacts.fLabel;
    information.fFileSystem = u"NTFS";
    information.fBytesPerCluster = pVolume.fLocation.fData.fBytesPerCluster;
    information.fTotalBytes = pVolume.fLocation.fVolumeBytes;
    information.fFreeBytes = pFacts.fFreeBytes;
    information.fNotes = NotesOf(pVolume.fRoot->Summary(), (pContext.fOptions & heoMftCompatible) != 0);
    if (pVolume.fLocation.fVolumeBytes > pVolume.fLocation.fPart.fLength)
      information.fNotes.push_back(u"The image is shorter than its volume.");
    return information;
  }

  void SetInformation(const std::u16string& pPath, TStorageInformation pInformation) const {
    TCriticalSectionLock lock(fLock);
    fInformation[pPath] = std::move(pInformation);
  }

  const TVolumeOpener fOpener;
  mutable TOpenedVolumes fOpened;
  mutable TCriticalSection fLock;
  // What the last scan of each path found.
  mutable std::map<std::u16string, TStorageInformation> fInformation GUARDED_BY(fLock);
};

}  // namespace

std::u16string ImageOfPath(std::u16string_view pTyped) {
  return HasProtocol(pTyped) ? SplitNtfsPath(pTyped, NativePathDelimiter()).fImage : std::u16string();
}

TNtfsPath SplitNtfsPath(std::u16string_view pPath, char16_t pDelimiter) {
  if (HasProtocol(pPath)) pPath.remove_prefix(kProtocol.size());
  size_t split = pPath.rfind(kSplit);
  while (split != std::u16string_view::npos && split + 1 < pPath.size() && !IsDelimiter(pPath[split + 1], pDelimiter))
    split = split == 0 ? std::u16string_view::npos : pPath.rfind(kSplit, split - 1);
  if (split == std::u16string_view::npos) return {std::u16string(pPath), {}};
  TNtfsPath path{std::u16string(pPath.substr(0, split)), {}};
  // Parts are joined by one delimiter each.
  for (const char16_t c : pPath.substr(split + 1)) {
    if (!IsDelimiter(c, pDelimiter))
      path.fInside += c;
    else if (!path.fInside.empty() && path.fInside.back() != pDelimiter)
      path.fInside += pDelimiter;
  }
  if (path.fInside.ends_with(pDelimiter)) path.fInside.pop_back();
  return path;
}

TRef<IStorage> CreateNtfsStorage(TVolumeOpener pOpener) {
  return MakeRef<TNtfsStorage>(std::move(pOpener));
}

}  // namespace Vantrel::Ntfs

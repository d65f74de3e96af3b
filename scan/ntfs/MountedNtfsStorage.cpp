#include "scan/ntfs/MountedNtfsStorage.h"

#include <limits>
#include <map>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/CriticalSection.h"
#include "scan/ntfs/MixedFileSystemEnumerator.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

// By the driver's answers where there is a driver to ask, else by the volume's own bytes.
TMftLocation LocateMounted(IVolumeReader& pReader, const TMountedNtfs& pVolume, const TVolumeOpener& pOpener) {
  const std::shared_ptr<INtfsDriver> driver = pOpener.fOpenDriver(pVolume.fDevice, pVolume.fVolumeRoot);
  if (!driver) return LocateTable(pReader, {0, pReader.Size()}, pVolume.fDevice);
  const TRef<IMftVolumeInformation> information = TMftVolumeInformationCache::Instance().GetMftVolumeInformation(
      pVolume.fVolumeRoot, [driver] { return AskVolumeData(*driver); });
  TMftLocation location;
  location.fData = {information->GetMftValidDataLength(), information->GetBytesPerRecord(),
                    information->GetBytesPerCluster(), information->GetBytesPerSector()};
  location.fPart = {0, pReader.Size() > 0 ? pReader.Size() : std::numeric_limits<int64_t>::max()};
  location.fRuns = AskTableExtents(*driver, pVolume.fVolumeRoot);
  return location;
}

// Forgets the volume's facts at the end of a scan.
class TKnownVolume {
 public:
  explicit TKnownVolume(const std::u16string& pVolumeRoot) : fVolumeRoot(pVolumeRoot) {}
  ~TKnownVolume() { TMftVolumeInformationCache::Instance().RemoveMftVolumeInformation(fVolumeRoot); }
  TKnownVolume(const TKnownVolume&) = delete;
  TKnownVolume& operator=(const TKnownVolume&) = delete;

 private:
  const std::u16string& fVolumeRoot;
};

class TMountedNtfsStorage : public TInterfaced<IStorage> {
 public:
  TMountedNtfsStorage(TRef<IStorage> pLocal, TVolumeOpener pOpener)
      : fLocal(std::move(pLocal)), fOpener(std::move(pOpener)) {}

  std::u16string_view GetProtocol() const override { return fLocal->GetProtocol(); }
  char16_t GetPathDelimiter() const override { return fLocal->GetPathDelimiter(); }
  std::u16string AbsolutePath(std::u16string_view pTyped) const override { return fLocal->AbsolutePath(pTyped); }
  bool Exists(const std::u16string& pPath) const override { return fLocal->Exists(pPath); }
  // Errors of the volume appear in notes only, except for a part of the table that could not be read.
  std::string ErrorText(uint32_t pCode) const override { return fLocal->ErrorText(pCode); }

  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext& pContext) const override {
    return fLocal->OpenFile(pPath, pContext);
  }
  std::optional<TStoredFileFacts> QueryFacts(const std::u16string& pPath) const override {
    return fLocal->QueryFacts(pPath);
  }
  bool HasSeekPenalty(const std::u16string& pPath) const override { return fLocal->HasSeekPenalty(pPath); }
  std::optional<uint64_t> PlaceOnDisk(const std::u16string& pPath) const override { return fLocal->PlaceOnDisk(pPath); }

  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                 const TScanContext& pContext) const override {
    if (!pContext.fIsWholeTree) return fLocal->CreateEnumerator(pPath, pContext);
    SetNotes(pPath, {});
    if ((pContext.fOptions & heoScanMft) != 0) {
      try {
        if (TRef<IHierarchicalEnumerator> indexed = OpenIndexed(pPath, pContext)) return indexed;
      } catch (const EOSError& error) {
        SetNotes(pPath, {u"Not read from the file table of the volume: " + FromUtf8(ErrorTextOf(error.Code())) + u"."});
      }
    }
    return fLocal->CreateEnumerator(pPath, pContext);
  }

  TStorageInformation GetInformation(const std::u16string& pPath) const override {
    TStorageInformation information = fLocal->GetInformation(pPath);
    TCriticalSectionLock lock(fLock);
    if (const auto found = fNotes.find(pPath); found != fNotes.end()) information.fNotes = found->second;
    return information;
  }

 private:
  // nullptr when the path is not the root of a mounted NTFS volume, or the scan was cancelled.
  TRef<IHierarchicalEnumerator> OpenIndexed(const std::u16string& pPath, const TScanContext& pContext) const {
    const std::optional<TMountedNtfs> volume = fOpener.fFindMounted(pPath);
    if (!volume) return nullptr;
    const TKnownVolume known(volume->fVolumeRoot);
    const std::unique_ptr<IVolumeReader> reader = fOpener.fOpenReader(volume->fDevice);
    TMftBuildSettings settings = BuildSettingsOf(pContext, fOpener, GetPathDelimiter());
    settings.fIsOnlyWay = false;
    const TIndexedVolume indexed =
        IndexVolume(*reader, LocateMounted(*reader, *volume, fOpener), volume->fVolumeRoot, settings, pContext);
    if (!indexed.fRoot) return nullptr;
    SetNotes(pPath, NotesOf(indexed.fRoot->Summary(), settings.fRoot.fCompatible));
    TMftScan scan;
    scan.fRoot = indexed.fRoot;
    scan.fVolumePath = volume->fVolumeRoot;
    scan.fTopPath = pPath;
    scan.fPathDelimiter = GetPathDelimiter();
    auto mixed = std::make_shared<TMixedScan>();
    mixed->fTopPath = pPath;
    mixed->fPathDelimiter = GetPathDelimiter();
    mixed->fMounts = {volume->fMountsBeneath.begin(), volume->fMountsBeneath.end()};
    mixed->fOpenOrdinary = [local = fLocal, pPath, pContext] { return local->CreateEnumerator(pPath, pContext); };
    return MakeRef<TMixedFileSystemEnumerator>(
        THierarchicalMftEnumerator::Create(std::make_shared<const TMftScan>(std::move(scan)), pContext.fOptions), mixed,
        pContext.fOptions);
  }

  void SetNotes(const std::u16string& pPath, std::vector<std::u16string> pNotes) const {
    TCriticalSectionLock lock(fLock);
    fNotes[pPath] = std::move(pNotes);
  }

  const TRef<IStorage> fLocal;
  const TVolumeOpener fOpener;
  mutable TCriticalSection fLock;
  mutable std::map<std::u16string, std::vector<std::u16string>> fNotes GUARDED_BY(fLock);  // of each path's last scan
};

}  // namespace

TRef<IStorage> CreateMountedNtfsStorage(TRef<IStorage> pLocal, TVolumeOpener pOpener) {
  return MakeRef<TMountedNtfsStorage>(std::move(pLocal), std::move(pOpener));
}

}  // namespace Vantrel::Ntfs

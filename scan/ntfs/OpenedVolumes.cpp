#include "scan/ntfs/OpenedVolumes.h"

#include <algorithm>

#include "platform/system/Errors.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

constexpr size_t kMostHeld = 4;

// No file of a local file system has the second half, so it is never taken for one of a volume.
constexpr uint64_t kIdHigh = 1;

uint64_t IdOf(const std::u16string& pImage, int64_t pPosition) {
  return std::hash<std::u16string>{}(pImage) ^ static_cast<uint64_t>(pPosition);
}

}  // namespace

TOpenedVolume::TOpenedVolume(TVolumeOpener pOpener, std::u16string pImage, const TIndexedVolume& pIndex)
    : fOpener(std::move(pOpener)),
      fImage(std::move(pImage)),
      fRoot(pIndex.fRoot),
      fLocation(pIndex.fLocation),
      fId(IdOf(fImage, fLocation.fPart.fPosition)),
      fNames(fRoot) {}

// Opening a device may take longer than reading a file. So readers are used again.
std::shared_ptr<IVolumeReader> TOpenedVolume::TakeReader() {
  std::unique_ptr<IVolumeReader> reader;
  {
    TCriticalSectionLock lock(fLock);
    if (!fIdleReaders.empty()) {
      reader = std::move(fIdleReaders.back());
      fIdleReaders.pop_back();
    }
  }
  if (!reader) reader = fOpener.fOpenReader(fImage);
  auto giveBack = [self = shared_from_this()](IVolumeReader* pReader) {
    std::unique_ptr<IVolumeReader> idle(pReader);
    idle->Cancel();
    TCriticalSectionLock lock(self->fLock);
    self->fIdleReaders.push_back(std::move(idle));
  };
  return {reader.release(), std::move(giveBack)};
}

std::unique_ptr<IStoredFile> TOpenedVolume::OpenFile(std::u16string_view pPathInside, char16_t pDelimiter,
                                                     const std::u16string& pPath) {
  const std::optional<uint32_t> record = fNames.FindFile(pPathInside, pDelimiter);
  if (!record) throw EOSError(kErrorNoFile, "Opening a file of a volume", pPath);
  std::shared_ptr<IVolumeReader> reader = TakeReader();
  const TMftEntry& entry = fRoot->Entry(*record);
  TStreamLocation stream = LocateContents(*reader, fLocation, *record | uint64_t{entry.fSequence} << 48, pPath);
  TStoredFileFacts facts;
  facts.fVolume = fId;
  facts.fId = *record;
  facts.fIdHigh = kIdHigh;
  facts.fSize = stream.fSize;
  facts.fLastChange.fTicks = entry.fLastWriteTime;
  const std::shared_ptr<const TMftLocation> location(shared_from_this(), &fLocation);
  return std::make_unique<TNtfsFile>(std::move(reader), location, std::move(stream), facts, pPath);
}

void TOpenedVolumes::AddScanned(const std::u16string& pPrefix, THierarchicalEnumeratorOptions pOptions,
                                const std::shared_ptr<TOpenedVolume>& pVolume) {
  TCriticalSectionLock lock(fLock);
  for (const TKnown& known : fKnown)
    if (known.fPrefix == pPrefix) std::erase(fHeld, known.fVolume.lock());
  std::erase_if(fKnown, [&](const TKnown& pKnown) { return pKnown.fPrefix == pPrefix; });
  fKnown.push_back({pPrefix, pOptions, pVolume});
}

TOpenedVolumes::TFound TOpenedVolumes::FindKnown(std::u16string_view pPath) const {
  TCriticalSectionLock lock(fLock);
  for (const TKnown& known : fKnown)
    if (pPath.starts_with(known.fPrefix)) return {known.fVolume.lock(), pPath.substr(known.fPrefix.size())};
  return {};
}

TOpenedVolumes::TFound TOpenedVolumes::Find(std::u16string_view pPath, const TOpen& pOpen) {
  if (TFound found = FindKnown(pPath); found.fVolume) return found;
  TCriticalSectionLock opening(fOpening);
  TFound found = FindKnown(pPath);
  if (found.fVolume) return found;
  std::u16string prefix;
  found.fVolume = pOpen(prefix);
  if (!pPath.starts_with(prefix)) return {};
  found.fPathInside = pPath.substr(prefix.size());
  const THierarchicalEnumeratorOptions options = OptionsOf(pPath, 0);
  AddScanned(prefix, options, found.fVolume);
  Hold(found.fVolume);
  return found;
}

void TOpenedVolumes::Hold(const std::shared_ptr<TOpenedVolume>& pVolume) {
  TCriticalSectionLock lock(fLock);
  if (fHeld.size() == kMostHeld) fHeld.erase(fHeld.begin());
  fHeld.push_back(pVolume);
}

THierarchicalEnumeratorOptions TOpenedVolumes::OptionsOf(std::u16string_view pPath,
                                                         THierarchicalEnumeratorOptions pOthers) const {
  TCriticalSectionLock lock(fLock);
  for (const TKnown& known : fKnown)
    if (pPath.starts_with(known.fPrefix)) return known.fOptions;
  return pOthers;
}

}  // namespace Vantrel::Ntfs

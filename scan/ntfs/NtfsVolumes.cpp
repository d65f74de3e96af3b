#include "scan/ntfs/NtfsVolumes.h"

#include <fmt/format.h>

#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"

namespace Vantrel::Ntfs {

TMftBuildSettings BuildSettingsOf(const TScanContext& pContext, const TVolumeOpener& pOpener, char16_t pDelimiter) {
  TMftBuildSettings settings;
  settings.fRoot.fCompatible = (pContext.fOptions & heoMftCompatible) != 0;
  settings.fRoot.fShowSystemFiles = (pContext.fOptions & heoMftSystemFiles) != 0;
  settings.fRoot.fPathDelimiter = pDelimiter;
  settings.fThreads = ProcessorCount();
  settings.fFreeMemory = pOpener.fFreeMemory ? pOpener.fFreeMemory() : FreePhysicalMemory();
  settings.fOnProgress = pContext.fOnPrepare;
  return settings;
}

TIndexedVolume IndexVolume(IVolumeReader& pReader, const TMftLocation& pLocation, const std::u16string& pVolumePath,
                           const TMftBuildSettings& pSettings, const TScanContext& pContext) {
  auto work = MakeRef<TMftRootWorkItem>(pReader, pLocation, pVolumePath, pSettings, pContext.fCancellation);
  work->Run();
  TIndexedVolume volume{work->GetRoot(), work->GetErrorCode(), {}, pLocation};
  if (!volume.fRoot && volume.fErrorCode != 0)
    throw EOSError(volume.fErrorCode, "Reading the file table of a volume", pVolumePath);
  return volume;
}

namespace {

std::u16string SizeText(int64_t pBytes) {
  TValueFormat format;
  format.fShowUnits = true;
  return FormatValue(TColumn::mdSize, pBytes, format);
}

std::u16string CountText(int64_t pCount, std::u16string_view pOne, std::u16string_view pMany) {
  return FormatValue(TColumn::mdItems, pCount, {}) + u' ' + std::u16string(pCount == 1 ? pOne : pMany);
}

}  // namespace

std::vector<std::u16string> NotesOf(const TMftSummary& pSummary, bool pIsCompatible) {
  std::vector<std::u16string> notes;
  notes.push_back(u"Read from the file table of the volume: " + CountText(pSummary.fRecords, u"record", u"records") +
                  (pIsCompatible ? u", by the compatible rules." : u"."));
  if (pSummary.fSystemBytes > 0)
    notes.push_back(u"Not shown: the volume's own files, which take " + SizeText(pSummary.fSystemBytes) + u".");
  if (pSummary.fOrphans > 0)
    notes.push_back(CountText(pSummary.fOrphans, u"name", u"names") + u" without a folder: see " +
                    std::u16string(kOrphansName) + u".");
  if (pSummary.fTornRecords > 0)
    notes.push_back(CountText(pSummary.fTornRecords, u"record was", u"records were") +
                    u" written in part only. Their values may be wrong.");
  if (pSummary.fDamaged > 0)
    notes.push_back(CountText(pSummary.fDamaged, u"name has", u"names have") +
                    u" a file with an impossible size. The size counts as 0.");
  if (pSummary.fUnreadBytes > 0)
    notes.push_back(SizeText(pSummary.fUnreadBytes) + u" of the file table could not be read.");
  return notes;
}

}  // namespace Vantrel::Ntfs

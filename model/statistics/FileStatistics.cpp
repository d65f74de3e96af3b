#include "model/statistics/FileStatistics.h"

namespace Vantrel {

TKivFileTime DateOfKind(TDateType pType, TKivFileTime pLastAccess, TKivFileTime pLastChange, TKivFileTime pCreation) {
  switch (pType) {
    case TDateType::dtLastAccess:
      return pLastAccess;
    case TDateType::dtCreation:
      return pCreation;
    default:
      return pLastChange;
  }
}

// Sums up all files by the key that pKeyOf gives for a file.
template <class TKeyOf>
void TStatisticsReading::SumUp(TRecords& pRecords, const TFileTable* pFiles, const TKeyOf& pKeyOf) {
  fTotals.Clear();
  for (size_t i = 0; pFiles && i < pFiles->Count(); ++i) {
    const TFileRecord& file = (*pFiles)[i];
    TBasicSizeValues sizes;
    sizes.fSize = file.fSize;
    sizes.fAllocated = file.fAllocated;
    sizes.fFiles = 1;
    fTotals.Add(pKeyOf(file), sizes);
  }
  const std::span<const TKeyedSizeValues> sums = fTotals.Sorted();
  pRecords.fCollected = true;
  pRecords.fRecords.assign(sums.begin(), sums.end());
}

void TStatisticsReading::Read(const TFileTable* pFiles, const IScanConfiguration& pConfiguration) {
  Clear();
  if (pConfiguration.GetDoUsersStatistics()) {
    const TKeyId unknown = TUserSizeArray::KeyOf({});
    SumUp(fUsers, pFiles,
          [&](const TFileRecord& pFile) { return pFile.fOwnerKey == kNoKey ? unknown : pFile.fOwnerKey; });
  }
  if (pConfiguration.GetDoExtensionsStatistics())
    SumUp(fExtensions, pFiles,
          [&](const TFileRecord& pFile) { return fExtensionKeys.KeyOfName(pFiles->NameOf(pFile)); });
  const TDateType type = pConfiguration.GetFileAgesDateType();
  if (type == TDateType::dtNone) return;
  const TKivFileTime now = pConfiguration.GetScanTimeStamp();
  const IFileAges* ages = pConfiguration.GetFileAges();
  // Without intervals no file has an age.
  SumUp(fAges, ages->GetCount() > 0 ? pFiles : nullptr, [&](const TFileRecord& pFile) {
    const TKivFileTime date = DateOfKind(type, pFile.fLastAccessDate, pFile.fLastChangeDate, pFile.fCreationDate);
    return static_cast<TKeyId>(ages->GetIndexOfMatchingInterval(FileAgeInDays(now, date)));
  });
}

void TStatisticsReading::Read(const TFolderStatistics& pStatistics) {
  Clear();
  auto take = [](TRecords& pRecords, const auto& pSource) {
    pRecords.fCollected = pSource != nullptr;
    if (pSource) pRecords.fRecords = pSource->GetEntries();
  };
  take(fUsers, pStatistics.fUsers);
  take(fExtensions, pStatistics.fExtensions);
  take(fAges, pStatistics.fAges);
}

void TStatisticsReading::Clear() {
  for (TRecords* records : {&fUsers, &fExtensions, &fAges}) {
    records->fCollected = false;
    records->fRecords.clear();
  }
}

TFolderStatistics StatisticsOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration) {
  TStatisticsReading reading;
  reading.Read(pFiles, pConfiguration);
  TFolderStatistics statistics;
  if (reading.Users()) (statistics.fUsers = MakeRef<TUserSizeArray>())->Add(*reading.Users());
  if (reading.Extensions()) (statistics.fExtensions = MakeRef<TExtensionSizeArray>())->Add(*reading.Extensions());
  if (reading.Ages()) {
    statistics.fAges = MakeRef<TFileAgeDistribution>(TRef<IFileAges>(pConfiguration.GetFileAges()),
                                                     pConfiguration.GetFileAgesDateType());
    statistics.fAges->Add(*reading.Ages());
  }
  return statistics;
}

}  // namespace Vantrel

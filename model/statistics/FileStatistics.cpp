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

void TFolderStatistics::Add(const TFolderStatistics& pOther) const {
  if (fUsers && pOther.fUsers) fUsers->AddArray(*pOther.fUsers);
  if (fExtensions && pOther.fExtensions) fExtensions->AddArray(*pOther.fExtensions);
  if (fAges && pOther.fAges) fAges->AddDistribution(*pOther.fAges);
}

void TFolderStatistics::Add(const TListedStatistics& pListed) const {
  if (fUsers) fUsers->Add(pListed.fOwners);
  if (fExtensions) fExtensions->Add(pListed.fExtensions);
  if (fAges) fAges->Add(pListed.fAges);
}

void TFolderStatistics::Subtract(const TFolderStatistics& pOther) const {
  if (fUsers && pOther.fUsers) fUsers->SubtractArray(*pOther.fUsers);
  if (fExtensions && pOther.fExtensions) fExtensions->SubtractArray(*pOther.fExtensions);
  if (fAges && pOther.fAges) fAges->SubtractDistribution(*pOther.fAges);
}

void TFolderStatistics::AddOrCreate(const TFolderStatistics& pOther) {
  if (pOther.fUsers && !fUsers) fUsers = MakeRef<TUserSizeArray>();
  if (pOther.fExtensions && !fExtensions) fExtensions = MakeRef<TExtensionSizeArray>();
  if (pOther.fAges && !fAges) fAges = pOther.fAges->CloneEmpty();
  Add(pOther);
}

TFolderStatistics TFolderStatistics::Clone() const {
  TFolderStatistics clone;
  if (fUsers) clone.fUsers = fUsers->Clone();
  if (fExtensions) clone.fExtensions = fExtensions->Clone();
  if (fAges) clone.fAges = fAges->Clone();
  return clone;
}

// Sums up all files by the key that pKeyOf returns.
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
  TListedStatistics listed;
  if (reading.Users()) {
    statistics.fUsers = MakeRef<TUserSizeArray>();
    listed.fOwners = *reading.Users();
  }
  if (reading.Extensions()) {
    statistics.fExtensions = MakeRef<TExtensionSizeArray>();
    listed.fExtensions = *reading.Extensions();
  }
  if (reading.Ages()) {
    statistics.fAges = MakeRef<TFileAgeDistribution>(TRef<IFileAges>(pConfiguration.GetFileAges()),
                                                     pConfiguration.GetFileAgesDateType());
    listed.fAges = *reading.Ages();
  }
  statistics.Add(listed);
  return statistics;
}

}  // namespace Vantrel

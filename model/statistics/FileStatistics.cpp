#include "model/statistics/FileStatistics.h"

#include "model/tree/EntryView.h"

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
  if (fUserSizeArray && pOther.fUserSizeArray) fUserSizeArray->AddArray(*pOther.fUserSizeArray);
  if (fExtensionSizeArray && pOther.fExtensionSizeArray) fExtensionSizeArray->AddArray(*pOther.fExtensionSizeArray);
  if (fFileAgeDistribution && pOther.fFileAgeDistribution)
    fFileAgeDistribution->AddDistribution(*pOther.fFileAgeDistribution);
}

void TFolderStatistics::Add(const TListedStatistics& pListed) const {
  if (fUserSizeArray) fUserSizeArray->Add(pListed.fOwners);
  if (fExtensionSizeArray) fExtensionSizeArray->Add(pListed.fExtensions);
  if (fFileAgeDistribution) fFileAgeDistribution->Add(pListed.fAges);
}

void TFolderStatistics::Subtract(const TFolderStatistics& pOther) const {
  if (fUserSizeArray && pOther.fUserSizeArray) fUserSizeArray->SubtractArray(*pOther.fUserSizeArray);
  if (fExtensionSizeArray && pOther.fExtensionSizeArray)
    fExtensionSizeArray->SubtractArray(*pOther.fExtensionSizeArray);
  if (fFileAgeDistribution && pOther.fFileAgeDistribution)
    fFileAgeDistribution->SubtractDistribution(*pOther.fFileAgeDistribution);
}

void TFolderStatistics::AddOrCreate(const TFolderStatistics& pOther) {
  if (pOther.fUserSizeArray && !fUserSizeArray) fUserSizeArray = MakeRef<TUserSizeArray>();
  if (pOther.fExtensionSizeArray && !fExtensionSizeArray) fExtensionSizeArray = MakeRef<TExtensionSizeArray>();
  if (pOther.fFileAgeDistribution && !fFileAgeDistribution)
    fFileAgeDistribution = pOther.fFileAgeDistribution->CloneEmpty();
  Add(pOther);
}

TFolderStatistics TFolderStatistics::Clone() const {
  TFolderStatistics clone;
  if (fUserSizeArray) clone.fUserSizeArray = fUserSizeArray->Clone();
  if (fExtensionSizeArray) clone.fExtensionSizeArray = fExtensionSizeArray->Clone();
  if (fFileAgeDistribution) clone.fFileAgeDistribution = fFileAgeDistribution->Clone();
  return clone;
}

// Sums up all files by the key that pKeyOf returns.
template <class TKeyOf>
void TStatisticsReading::SumUp(TRecords& pRecords, const TFileTable* pFiles, const TKeyOf& pKeyOf) {
  fTotals.Clear();
  for (size_t i = 0; pFiles && i < pFiles->Count(); ++i) {
    const TEntryView file(*pFiles, (*pFiles)[i], nullptr);
    fTotals.Add(pKeyOf(file), file.GetValues());
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
          [&](const TEntryView& pFile) { return pFile.GetOwnerKey() == kNoKey ? unknown : pFile.GetOwnerKey(); });
  }
  if (pConfiguration.GetDoExtensionsStatistics())
    SumUp(fExtensions, pFiles,
          [&](const TEntryView& pFile) { return fExtensionKeys.KeyOfName(pFile.GetObjectName()); });
  const TDateType type = pConfiguration.GetFileAgesDateType();
  if (type == TDateType::dtNone) return;
  const TKivFileTime now = pConfiguration.GetScanTimeStamp();
  const IFileAges* ages = pConfiguration.GetFileAges();
  // Without intervals no file has an age.
  SumUp(fAges, ages->GetCount() > 0 ? pFiles : nullptr, [&](const TEntryView& pFile) {
    const TKivFileTime date =
        DateOfKind(type, pFile.GetLastAccessDate(), pFile.GetLastChangeDate(), pFile.GetCreationDate());
    return static_cast<TKeyId>(ages->GetIndexOfMatchingInterval(FileAgeInDays(now, date)));
  });
}

void TStatisticsReading::Read(const TFolderStatistics& pStatistics) {
  Clear();
  auto take = [](TRecords& pRecords, const auto& pSource) {
    pRecords.fCollected = pSource != nullptr;
    if (pSource) pRecords.fRecords = pSource->GetEntries();
  };
  take(fUsers, pStatistics.fUserSizeArray);
  take(fExtensions, pStatistics.fExtensionSizeArray);
  take(fAges, pStatistics.fFileAgeDistribution);
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
    statistics.fUserSizeArray = MakeRef<TUserSizeArray>();
    listed.fOwners = *reading.Users();
  }
  if (reading.Extensions()) {
    statistics.fExtensionSizeArray = MakeRef<TExtensionSizeArray>();
    listed.fExtensions = *reading.Extensions();
  }
  if (reading.Ages()) {
    statistics.fFileAgeDistribution = MakeRef<TFileAgeDistribution>(TRef<IFileAges>(pConfiguration.GetFileAges()),
                                                                    pConfiguration.GetFileAgesDateType());
    listed.fAges = *reading.Ages();
  }
  statistics.Add(listed);
  return statistics;
}

}  // namespace Vantrel

#include "model/FileStatistics.h"

#include "model/KeyTotals.h"

namespace Kiv {

namespace {

// Sums up all files by the key that pKeyOf gives for a file.
template <class TKeyOf>
void AddAll(const TFileTable* pFiles, TKeyTotals& pTotals, const TKeyOf& pKeyOf) {
  for (size_t i = 0; pFiles && i < pFiles->Count(); ++i) {
    const TFileRecord& file = (*pFiles)[i];
    TBasicSizeValues sizes;
    sizes.fSize = file.fSize;
    sizes.fAllocated = file.fAllocated;
    sizes.fFiles = 1;
    pTotals.Add(pKeyOf(file), sizes);
  }
}

}  // namespace

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

TRef<ICustomAssocSizeArray> OwnersOfFiles(const TFileTable* pFiles) {
  TKeyTotals totals;
  const TKeyId unknown = TUserSizeArray::KeyOf({});
  AddAll(pFiles, totals,
         [&](const TFileRecord& pFile) { return pFile.fOwnerKey == kNoKey ? unknown : pFile.fOwnerKey; });
  TRef<ICustomAssocSizeArray> owners = MakeRef<TUserSizeArray>();
  owners->Add(totals.Sorted());
  return owners;
}

TRef<ICustomAssocSizeArray> ExtensionsOfFiles(const TFileTable* pFiles) {
  TKeyTotals totals;
  TExtensionKeys keys;
  AddAll(pFiles, totals, [&](const TFileRecord& pFile) { return keys.KeyOfName(pFiles->NameOf(pFile)); });
  TRef<ICustomAssocSizeArray> extensions = MakeRef<TExtensionSizeArray>();
  extensions->Add(totals.Sorted());
  return extensions;
}

TRef<IFileAgeDistribution> AgesOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration) {
  const TDateType type = pConfiguration.GetFileAgesDateType();
  const TKivFileTime now = pConfiguration.GetScanTimeStamp();
  IFileAges* ages = pConfiguration.GetFileAges();
  TKeyTotals totals;
  // Without intervals no file has an age.
  AddAll(ages->GetCount() > 0 ? pFiles : nullptr, totals, [&](const TFileRecord& pFile) {
    const TKivFileTime date = DateOfKind(type, pFile.fLastAccessDate, pFile.fLastChangeDate, pFile.fCreationDate);
    return static_cast<TKeyId>(ages->GetIndexOfMatchingInterval(FileAgeInDays(now, date)));
  });
  TRef<IFileAgeDistribution> distribution = MakeRef<TFileAgeDistribution>(TRef<IFileAges>(ages), type);
  distribution->Add(totals.Sorted());
  return distribution;
}

TFolderStatistics StatisticsOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration) {
  TFolderStatistics statistics;
  if (pConfiguration.GetDoUsersStatistics()) statistics.fUsers = OwnersOfFiles(pFiles);
  if (pConfiguration.GetDoExtensionsStatistics()) statistics.fExtensions = ExtensionsOfFiles(pFiles);
  if (pConfiguration.GetFileAgesDateType() != TDateType::dtNone)
    statistics.fAges = AgesOfFiles(pFiles, pConfiguration);
  return statistics;
}

}  // namespace Kiv

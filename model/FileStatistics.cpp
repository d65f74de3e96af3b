#include "model/FileStatistics.h"

namespace Kiv {

namespace {

// Sums up all files by the key that pKeyOf gives for a file.
template <class TKeyOf>
void AddAll(const TFileTable* pFiles, TKeyTotals& pTotals, const TKeyOf& pKeyOf) {
  pTotals.Clear();
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

TRef<ICustomAssocSizeArray> OwnersOfFiles(const TFileTable* pFiles, TFileStatisticsWork& pWork) {
  const TKeyId unknown = TUserSizeArray::KeyOf({});
  AddAll(pFiles, pWork.fTotals,
         [&](const TFileRecord& pFile) { return pFile.fOwnerKey == kNoKey ? unknown : pFile.fOwnerKey; });
  TRef<ICustomAssocSizeArray> owners = MakeRef<TUserSizeArray>();
  owners->Add(pWork.fTotals.Sorted());
  return owners;
}

TRef<ICustomAssocSizeArray> ExtensionsOfFiles(const TFileTable* pFiles, TFileStatisticsWork& pWork) {
  AddAll(pFiles, pWork.fTotals, [&](const TFileRecord& pFile) { return pWork.fExtensionKeys.KeyOfName(pFiles->NameOf(pFile)); });
  TRef<ICustomAssocSizeArray> extensions = MakeRef<TExtensionSizeArray>();
  extensions->Add(pWork.fTotals.Sorted());
  return extensions;
}

TRef<IFileAgeDistribution> AgesOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration,
                                       TFileStatisticsWork& pWork) {
  const TDateType type = pConfiguration.GetFileAgesDateType();
  const TKivFileTime now = pConfiguration.GetScanTimeStamp();
  IFileAges* ages = pConfiguration.GetFileAges();
  // Without intervals no file has an age.
  AddAll(ages->GetCount() > 0 ? pFiles : nullptr, pWork.fTotals, [&](const TFileRecord& pFile) {
    const TKivFileTime date = DateOfKind(type, pFile.fLastAccessDate, pFile.fLastChangeDate, pFile.fCreationDate);
    return static_cast<TKeyId>(ages->GetIndexOfMatchingInterval(FileAgeInDays(now, date)));
  });
  TRef<IFileAgeDistribution> distribution = MakeRef<TFileAgeDistribution>(TRef<IFileAges>(ages), type);
  distribution->Add(pWork.fTotals.Sorted());
  return distribution;
}

TFolderStatistics StatisticsOfFiles(const TFileTable* pFiles, const IScanConfiguration& pConfiguration,
                                    TFileStatisticsWork& pWork) {
  TFolderStatistics statistics;
  if (pConfiguration.GetDoUsersStatistics()) statistics.fUsers = OwnersOfFiles(pFiles, pWork);
  if (pConfiguration.GetDoExtensionsStatistics()) statistics.fExtensions = ExtensionsOfFiles(pFiles, pWork);
  if (pConfiguration.GetFileAgesDateType() != TDateType::dtNone)
    statistics.fAges = AgesOfFiles(pFiles, pConfiguration, pWork);
  return statistics;
}

}  // namespace Kiv

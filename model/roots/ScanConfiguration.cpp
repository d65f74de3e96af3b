#include "model/roots/ScanConfiguration.h"

#include "model/statistics/FileAges.h"
#include "platform/text/Text.h"

namespace Vantrel {

TScanConfiguration::TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions)
    : fRoot(pRoot),
      fFolderDateBasedOnFilesOnly(pOptions.FolderDateBasedOnFilesOnly),
      fKeepFiles(pOptions.KeepFiles),
      fDoExtensionsStatistics(pOptions.CollectExtensions),
      fDoUsersStatistics(pOptions.CollectOwners),
      fFileAgesDateType(pOptions.FileAgesDateType),
      fLongPathLength(pOptions.LongPathLength),
      fShareBasis(pOptions.UseAllocatedForShares ? TColumn::mdAllocated : TColumn::mdSize) {
  auto ages = MakeRef<TFileAges>();
  ages->SetAsString(FromUtf8(pOptions.FileAges));
  fFileAges = ages;
}

void TScanConfiguration::TakeLoaded(const TLoadedScan& pScan) {
  fDoExtensionsStatistics = pScan.fHasExtensions;
  fDoUsersStatistics = pScan.fHasUsers;
  fFileAgesDateType = pScan.fFileAgesDateType;
  if (pScan.fFileAges) fFileAges = pScan.fFileAges;
  fScanTimeStamp = pScan.fScanTimeStamp.fTicks;
}

void TScanConfiguration::Begin(TRef<ICancellationToken> pToken, TRef<ITopSizeList> pTopSizeList, TKivFileTime pNow) {
  fToken = std::move(pToken);
  fTopSizeList = std::move(pTopSizeList);
  fScanTimeStamp = pNow.fTicks;
}

}  // namespace Vantrel

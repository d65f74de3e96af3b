#include "model/roots/ScanConfiguration.h"

#include <algorithm>

#include "model/statistics/FileAges.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

// What a report is to show is collected, whatever the other options say.
bool NeedsExtensions(const TGlobalOptions& pOptions) {
  return pOptions.CollectExtensions || pOptions.ListExtensions || pOptions.ListFileTypes || pOptions.ChartExtensions ||
         pOptions.ChartFileTypes;
}

bool NeedsOwners(const TGlobalOptions& pOptions) {
  const auto shown = [&](Exporting::TMediaType pMedia) {
    const std::vector<TColumn>& columns = pOptions.Media(pMedia).fColumns;
    return std::find(columns.begin(), columns.end(), TColumn::mdOwner) != columns.end();
  };
  return pOptions.CollectOwners || pOptions.ListUsers || pOptions.ChartUsers || shown(Exporting::TMediaType::mtText) ||
         shown(Exporting::TMediaType::mtCSV);
}

}  // namespace

THierarchicalEnumeratorOptions EnumeratorOptionsOf(const TGlobalOptions& pOptions) {
  return (pOptions.ShareHardLinks ? heoShareHardLinks : 0u) |
         (pOptions.FollowSymbolicLinks ? heoFollowSymbolicLinks : 0u) |
         (pOptions.FollowMountPoints ? heoFollowMountPoints : 0u) |
         (pOptions.UseBackupPrivilege ? 0u : heoNoBackupPrivilege) |
         (pOptions.StayOnFileSystem ? heoStayOnFileSystem : 0u) | (pOptions.ScanMFT ? heoScanMft : 0u) |
         (pOptions.MftCompatible ? heoMftCompatible : 0u) | (pOptions.MftSystemFiles ? heoMftSystemFiles : 0u);
}

TScanConfiguration::TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions, TScanRun pScan)
    : fRoot(pRoot),
      fEnumeratorOptions(EnumeratorOptionsOf(pOptions)),
      fFolderDateBasedOnFilesOnly(pOptions.FolderDateBasedOnFilesOnly),
      fKeepFiles(pOptions.KeepFiles),
      fDoExtensionsStatistics(NeedsExtensions(pOptions)),
      fDoUsersStatistics(NeedsOwners(pOptions)),
      fFileAgesDateType(pOptions.FileAgesDateType),
      fLongPathLength(pOptions.LongPathLength),
      fShareBasis(pOptions.UseAllocatedForShares ? TColumn::mdAllocated : TColumn::mdSize),
      fScan(std::move(pScan)) {
  auto ages = MakeRef<TFileAges>();
  ages->SetAsString(FromUtf8(pOptions.FileAges));
  fFileAges = ages;
}

TScanConfiguration::TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions, const TLoadedScan& pLoaded,
                                       TRef<ITopSizeList> pTopSizeList)
    : TScanConfiguration(pRoot, pOptions) {
  fDoUsersStatistics = pLoaded.fHasUsers;
  fKeepFiles = pLoaded.fKeepsFiles;
  if (!pLoaded.fKeepsFiles) {
    fDoExtensionsStatistics = pLoaded.fHasExtensions;
    fFileAgesDateType = pLoaded.fFileAgesDateType;
  }
  if (pLoaded.fFileAges) fFileAges = pLoaded.fFileAges;
  fScan.fTimeStamp = pLoaded.fScanTimeStamp;
  fScan.fTopSizeList = std::move(pTopSizeList);
}

TRef<TScanConfiguration> TScanConfiguration::ForRefresh(TRef<ICancellationToken> pToken) const {
  auto copy = MakeRef<TScanConfiguration>(*this);
  copy->fScan.fToken = std::move(pToken);
  copy->fScan.fWholeTree = false;
  return copy;
}

std::unique_ptr<IEntryFilter> TScanConfiguration::CreateEntryFilter() {
  std::unique_ptr<IEntryFilter> filter = fScan.fFilter ? fScan.fFilter->CreateEntryFilter() : nullptr;
  if (fRoot->fFileMask.empty() && !fRoot->fExpression) return filter;
  return std::make_unique<TRootEntryFilter>(fRoot->fRootExclusions, fRoot->fFileMask, fRoot->fExpression,
                                            std::move(filter));
}

}  // namespace Vantrel

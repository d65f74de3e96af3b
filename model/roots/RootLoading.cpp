// The part of the roots that loads a tree from a file.

#include "model/roots/Root.h"
#include "model/roots/ScanConfiguration.h"
#include "model/statistics/FileStatistics.h"
#include "model/tree/TreeWalk.h"

namespace Vantrel {

TRef<TCustomFolderData> TCustomRoot::BeginLoading() {
  IncludeState(rsIsXMLImport);
  auto top = MakeRef<TFolderData>(TRef<IHierarchicalRoot>(this), fPath);
  top->EnterTree();
  TCriticalSectionLock lock(fLock);
  fFolderData = top;
  return top;
}

void TCustomRoot::EndLoading(const TLoadedScan& pScan) {
  if (!pScan.fTitle.empty()) SetTitle(pScan.fTitle);
  fScanTimeStamp = pScan.fScanTimeStamp.fTicks;
  SetScanFilter(pScan.fFilter);
  TRef<ITopSizeList> topSizeList;
  if (pScan.fTopFiles) {
    topSizeList = MakeRef<TTopSizeFileList>(pScan.fTopFiles->size(), fPathDelimiter);
    topSizeList->Add(*pScan.fTopFiles);
  } else if (pScan.fKeepsFiles && fOptions->NumberOfTopFiles > 0) {
    topSizeList = MakeRef<TTopSizeFileList>(static_cast<size_t>(fOptions->NumberOfTopFiles), fPathDelimiter);
    FillTopSizeList(*topSizeList);
  }
  auto configuration = MakeRef<TScanConfiguration>(this, *fOptions, pScan, topSizeList);
  {
    TExclusiveLock lock(fConfigurationLock);
    fConfiguration.swap(configuration);
  }
  if (pScan.fKeepsFiles) SumUpLoaded();
  CountTree();
  fExcludedObjects = pScan.fExcludedObjects;
  {
    TCriticalSectionLock lock(fLock);
    fStorage = pScan.fStorage;
    fErrors = pScan.fErrors;
    fTopSizeList = std::move(topSizeList);
  }
  fErrorCount = static_cast<int64_t>(pScan.fErrors.size());
  if (!pScan.fErrors.empty()) IncludeState(rsHasErrors);
  IncludeState(rsFinished | (pScan.fWasCancelled ? rsCancelled : 0u) | (pScan.fIsFullExport ? 0u : rsIsPartialImport));
}

namespace {

// Gives each folder with sub-folders the sums of the statistics beneath it. Those of all other nodes are worked out
// from their files when they are asked for.
class TStatisticsSum final : public ITreeVisitor {
 public:
  explicit TStatisticsSum(const IScanConfiguration& pConfiguration) : fConfiguration(pConfiguration) {}

  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override {
    fOpen.emplace_back();
    return !pIsComplete || EndNode(pRow);
  }

  bool EndNode(const TTreeRow& pRow) override {
    TFolderStatistics statistics = std::move(fOpen.back());
    fOpen.pop_back();
    if (pRow.fFolder.GetSubFolderCount() > 0)
      static_cast<TCustomFolderData&>(pRow.fFolder).SetLoadedStatistics(statistics);
    else
      statistics = StatisticsOfFiles(pRow.fFolder.GetFileTable().get(), fConfiguration);
    if (!fOpen.empty()) fOpen.back().AddOrCreate(statistics);
    return true;
  }

 private:
  const IScanConfiguration& fConfiguration;
  std::vector<TFolderStatistics> fOpen;
};

}  // namespace

void TCustomRoot::SumUpLoaded() {
  TTreeWalkSettings settings;
  settings.fOrder = TSiblingOrder::soAny;
  TStatisticsSum sum(*GetScanConfiguration());
  TTreeWalk(settings).Run(*GetTopFolder(), sum);
}

}  // namespace Vantrel

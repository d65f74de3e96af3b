// The part of the roots that loads a tree from a file.

#include "model/roots/Root.h"
#include "model/roots/ScanConfiguration.h"

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
  }
  auto configuration = MakeRef<TScanConfiguration>(this, *fOptions, pScan, topSizeList);
  {
    TExclusiveLock lock(fConfigurationLock);
    fConfiguration.swap(configuration);
  }
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

}  // namespace Vantrel

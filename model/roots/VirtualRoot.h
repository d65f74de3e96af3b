#pragma once

// A root that shows all others as one tree.

#include <memory>

#include "model/options/GlobalOptions.h"
#include "model/roots/BaseRoot.h"
#include "model/roots/Storage.h"
#include "model/tree/CustomFolder.h"

namespace Vantrel {

// The top folder of a combined root. Its children are the top folders of other roots. Its totals are the sum of theirs,
// computed on each call. Nothing is stored here, so the roots can go on changing.
//
// Its children, and all beneath them, are views made for the caller (TVirtualFolder). A top folder has no parent and is
// 100 % of its own root, but here it is one folder among others.
class TVirtualRootFolder : public TCustomFolderData {
 public:
  TVirtualRootFolder(TRef<IHierarchicalRoot> pRoot, const IScanRoots& pRoots, std::u16string_view pName);
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  size_t GetSubFolderCount() const override { return Tops().size(); }
  TSizeValues GetValues() const override;
  TKivFileTime GetLastAccessDate() const override;
  TKivFileTime GetLastChangeDate() const override;
  // The sum over all roots. nullptr when one of them collects none, since the sum would be incomplete.
  TRef<ICustomAssocSizeArray> GetUserSizeArray() const override;
  TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const override;
  // The intervals have only the bounds that all roots have. nullptr when a root collects no ages.
  TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const override;
  void ReadStatistics(TStatisticsReading& pReading) const override;
  // Its children belong to their own roots: EInvalidOperation.
  TRef<IFolderData> CreateChild(std::u16string_view pName) override;

 private:
  std::vector<TRef<IFolderData>> Tops() const;
  const IScanRoots& fRoots;  // owns the virtual root
};

// A root that shows all roots of a list as one tree. It is not scanned itself. Its subscribers receive all changes of
// all roots, with the nodes of those roots.
class TVirtualRoot : public TBaseRoot {
 public:
  TVirtualRoot(const IScanRoots& pRoots, std::shared_ptr<const TGlobalOptions> pOptions, char16_t pDelimiter);
  ~TVirtualRoot() override;
  // The caller calls this for each root of the list, including existing ones, and when a root has left the list.
  void RootAdded(IHierarchicalRoot& pRoot);
  void RootRemoved();

  // Scanning when one root is scanning, finished when all are. Cancelled, or with errors, when one root is.
  TRootStates GetState() const override;
  TRef<IFolderData> GetTopFolder() const override;
  TRef<IScanEngine> GetScanEngine() const override { return nullptr; }
  std::vector<TScanError> GetErrors() const override;
  TScanProgress GetProgress() const override;
  TRef<IScanConfiguration> GetScanConfiguration() const override;
  void ForgetBranch(IFolderData&) override {}
  void ForgetOwnEntries(IFolderData&) override {}
  // Each root of the list has its own filter: EInvalidOperation.
  void SetScanFilter(TRef<IScanFilter> pFilter) override;
  TRef<IScanFilter> GetScanFilter() const override { return nullptr; }
  std::vector<TExclusion> GetExclusions() const override;  // of all roots
  TStorageInformation GetStorageInformation() const override { return {}; }
  TRef<IStorage> GetStorage() const override { return nullptr; }
  TRef<IComparison> GetComparison() const override { return nullptr; }
  void SetComparison(TRef<IComparison>) override {}
  // Scans all roots of the list.
  void Scan() override;
  bool RefreshFolder(IFolderData& pFolder, bool pRecursive) override;
  bool RemoveFolder(IFolderData&) override { return false; }
  void PauseScan(bool pPaused) override;
  void CancelScan() override;
  bool WaitForScan(int64_t pMilliseconds) override;
  int64_t GetScanDuration() const override;
  int64_t GetLastScanNumberOfFiles() const override;
  TRef<ITopSizeList> GetTopSizeList() const override { return nullptr; }
  TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {}) override;
  void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) override;
  void Dispose() override;

 private:
  class TSubscription;
  class TErrorForwarder;

  const IScanRoots& fRoots;
  const std::shared_ptr<const TGlobalOptions> fOptions;
  TObservable<IScanErrorObserver> fErrorObservers;
  mutable TCriticalSection fLock;
  mutable TRef<TVirtualRootFolder> fTop GUARDED_BY(fLock);
};

}  // namespace Vantrel

#pragma once

// A root that shows all others as one tree.

#include <memory>

#include "model/roots/Root.h"

namespace Vantrel {

// The top folder of a combined root: its children are the top folders of other roots, and its totals are theirs, added
// up when somebody asks. Nothing is stored here, so the roots go on changing beneath it.
class TVirtualRootFolder : public TCustomFolderData {
 public:
  TVirtualRootFolder(TRef<IHierarchicalRoot> pRoot, const IScanRoots& pRoots, std::u16string_view pName);
  std::vector<TRef<IFolderData>> FindSubFolders() override;
  size_t GetSubFolderCount() const override { return Tops().size(); }
  TSizeValues GetValues() const override;
  TKivFileTime GetLastAccessDate() const override;
  TKivFileTime GetLastChangeDate() const override;
  TRef<ICustomAssocSizeArray> GetUserSizeArray() const override;
  TRef<ICustomAssocSizeArray> GetExtensionSizeArray() const override;
  TRef<IFileAgeDistribution> GetFileAgeDistribution(TDateType pDateType) const override;
  void ReadStatistics(TStatisticsReading& pReading) const override;
  // Its children belong to their own roots: EInvalidOperation.
  TRef<IFolderData> CreateChild(std::u16string_view pName) override;

 private:
  std::vector<TRef<IFolderData>> Tops() const;
  const IScanRoots& fRoots;  // owns the virtual root
};

// A root that shows all roots of a list as one tree. It is not scanned itself.
class TVirtualRoot : public TBaseRoot {
 public:
  TVirtualRoot(const IScanRoots& pRoots, std::shared_ptr<const TGlobalOptions> pOptions, char16_t pDelimiter);
  ~TVirtualRoot() override;
  TRef<IFolderData> GetTopFolder() const override;
  TRef<IScanEngine> GetScanEngine() const override { return nullptr; }
  std::vector<TScanError> GetErrors() const override;
  TScanProgress GetProgress() const override;
  IScanConfiguration& GetScanConfiguration() override { return *fConfiguration; }
  void ForgetBranch(IFolderData&) override {}
  void ForgetOwnEntries(IFolderData&) override {}
  // Each root of the list has a filter of its own: EInvalidOperation.
  void SetScanFilter(TRef<IScanFilter> pFilter) override;
  TRef<IScanFilter> GetScanFilter() const override { return nullptr; }
  std::vector<TExclusion> GetExclusions() const override;  // of all roots
  TStorageInformation GetStorageInformation() const override { return {}; }
  TRef<IComparison> GetComparison() const override { return nullptr; }
  void SetComparison(TRef<IComparison>) override {}
  // Scans all roots of the list.
  void Scan() override;
  bool RefreshFolder(IFolderData& pFolder, bool pRecursive) override;
  bool RemoveFolder(IFolderData&) override { return false; }
  void CancelScan() override;
  bool WaitForScan(int64_t pMilliseconds) override;
  int64_t GetScanDuration() const override;
  int64_t GetLastScanNumberOfFiles() const override;
  TRef<ITopSizeList> GetTopSizeList() const override { return nullptr; }
  void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) override;
  void Dispose() override;

 private:
  const IScanRoots& fRoots;
  TRef<IScanConfiguration> fConfiguration;
  mutable TCriticalSection fLock;
  mutable TRef<TVirtualRootFolder> fTop GUARDED_BY(fLock);
};

}  // namespace Vantrel

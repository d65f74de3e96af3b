#pragma once

// The options of one root's scans, copied at their start.

#include "model/roots/Root.h"

namespace Vantrel {

// The settings of one root's scans, copied from the options when a scan starts. The root owns it and outlives every
// scan that uses it.
class TScanConfiguration : public TInterfaced<IScanConfiguration> {
 public:
  // Without a root, for a root that is never scanned itself, the questions and reports of a scan must not be made.
  TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions);
  // What the scan that a file holds was made with.
  void TakeLoaded(const TLoadedScan& pScan);
  // Ready for the next scan.
  void Begin(TRef<ICancellationToken> pToken, TRef<ITopSizeList> pTopSizeList, TKivFileTime pNow);

  TRef<ICancellationToken> GetCancellationToken() const override { return fToken; }
  std::unique_ptr<IEntryFilter> CreateEntryFilter() override { return fRoot->CreateEntryFilter(); }
  bool IsFolderToBeScanned(IFolderData& pFolder) override {
    return (pFolder.GetFolderState() & (fsRemoving | fsDisposed)) == 0 && !fRoot->fDisposeToken->IsDisposed();
  }
  bool GetFolderDateBasedOnFilesOnly() const override { return fFolderDateBasedOnFilesOnly; }
  bool GetKeepFiles() const override { return fKeepFiles; }
  bool GetDoExtensionsStatistics() const override { return fDoExtensionsStatistics; }
  bool GetDoUsersStatistics() const override { return fDoUsersStatistics; }
  TDateType GetFileAgesDateType() const override { return fFileAgesDateType; }
  IFileAges* GetFileAges() const override { return fFileAges.get(); }
  int32_t GetLongPathLength() const override { return fLongPathLength; }
  TColumn GetShareBasis() const override { return fShareBasis; }
  ITopSizeList* GetTopSizeList() const override { return fTopSizeList.get(); }
  TKivFileTime GetScanTimeStamp() const override { return {fScanTimeStamp.load(std::memory_order_relaxed)}; }
  // The first folders bring work enough for the pool to start threads as they are needed; none have to wait for it.
  bool WantsPreStartedThreads() const override { return false; }
  void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) override {
    fRoot->RecordError(pFolder, pEnumerator, pPartial);
  }
  void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                    int64_t pExcluded) override {
    fRoot->CountScanned(pFolder, pFiles, pFolders, pBytes, pExcluded);
  }

 private:
  TCustomRoot* const fRoot;
  bool fFolderDateBasedOnFilesOnly;
  bool fKeepFiles;
  bool fDoExtensionsStatistics;
  bool fDoUsersStatistics;
  TDateType fFileAgesDateType;
  TRef<IFileAges> fFileAges;
  int32_t fLongPathLength;
  TColumn fShareBasis;
  std::atomic<int64_t> fScanTimeStamp{0};  // read by views while the next scan begins
  TRef<ICancellationToken> fToken;
  TRef<ITopSizeList> fTopSizeList;
};

}  // namespace Vantrel

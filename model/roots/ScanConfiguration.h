#pragma once

// The settings of one scan, fixed from its start.

#include "model/roots/Root.h"

namespace Vantrel {

// Settings that come from the scan itself, not from the options.
struct TScanRun {
  TRef<ICancellationToken> fToken;
  TRef<ITopSizeList> fTopSizeList;
  TRef<IScanFilter> fFilter;
  TKivFileTime fTimeStamp;
  bool fWholeTree = true;
};

// The options that concern listings, as an enumerator takes them.
THierarchicalEnumeratorOptions EnumeratorOptionsOf(const TGlobalOptions& pOptions);

// The settings of one scan of one root, copied from the options at its start. They never change, so readers of the tree
// need no lock. A refresh has a copy of the settings of its tree's scan.
class TScanConfiguration : public TInterfaced<IScanConfiguration> {
 public:
  // pRoot is nullptr for a root that is never scanned itself. Then the questions and reports of a scan must not be
  // called.
  TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions, TScanRun pScan = {});
  // The settings for a refresh of the tree that was made with these settings.
  TRef<TScanConfiguration> ForRefresh(TRef<ICancellationToken> pToken) const;
  // The settings of a scan that was loaded from a file.
  TScanConfiguration(TCustomRoot* pRoot, const TGlobalOptions& pOptions, const TLoadedScan& pLoaded,
                     TRef<ITopSizeList> pTopSizeList);

  TRef<ICancellationToken> GetCancellationToken() const override { return fScan.fToken; }
  std::unique_ptr<IEntryFilter> CreateEntryFilter() override;
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
  ITopSizeList* GetTopSizeList() const override { return fScan.fTopSizeList.get(); }
  TKivFileTime GetScanTimeStamp() const override { return fScan.fTimeStamp; }
  // The first folders bring enough work, so the pool can start threads as they are needed.
  bool WantsPreStartedThreads() const override { return false; }
  void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) override {
    fRoot->RecordError(pFolder, pEnumerator, pPartial);
  }
  // A refresh counts no exclusions, since the scan has already counted them.
  void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                    int64_t pExcluded) override {
    fRoot->CountScanned(pFolder, pFiles, pFolders, pBytes, fScan.fWholeTree ? pExcluded : 0);
  }
  bool IsOfWholeTree() const { return fScan.fWholeTree; }  // false for a refresh
  // Bits of THierarchicalEnumeratorOption.
  uint32_t GetEnumeratorOptions() const { return fEnumeratorOptions; }

 private:
  TCustomRoot* const fRoot;  // outlives every scan
  uint32_t fEnumeratorOptions;
  bool fFolderDateBasedOnFilesOnly;
  bool fKeepFiles;
  bool fDoExtensionsStatistics;
  bool fDoUsersStatistics;
  TDateType fFileAgesDateType;
  TRef<IFileAges> fFileAges;
  int32_t fLongPathLength;
  TColumn fShareBasis;
  TScanRun fScan;
};

}  // namespace Vantrel

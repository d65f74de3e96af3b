#pragma once

// Roots with a tree. The sources: `Root.cpp` has the life of a scan, `RootRefresh.cpp` refresh and removal,
// `RootErrors.cpp` errors and progress, `RootTopFiles.cpp` the largest files, `RootLoading.cpp` roots from files.

#include <atomic>
#include <condition_variable>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "model/roots/BaseRoot.h"
#include "model/roots/RootEntryFilter.h"
#include "model/statistics/TopSizeList.h"
#include "model/tree/CustomFolder.h"

namespace Vantrel {

class TScanConfiguration;

// A root with a tree that is filled by scans.
class TCustomRoot : public TBaseRoot {
 public:
  ~TCustomRoot() override;

  TRef<IFolderData> GetTopFolder() const override;
  TRef<IScanEngine> GetScanEngine() const override;
  std::vector<TScanError> GetErrors() const override;
  TScanProgress GetProgress() const override;
  TRef<IScanConfiguration> GetScanConfiguration() const override;
  void ForgetBranch(IFolderData& pFolder) override;
  void ForgetOwnEntries(IFolderData& pFolder) override;

  void Scan() override;
  bool RefreshFolder(IFolderData& pFolder, bool pRecursive) override;
  bool RemoveFolder(IFolderData& pFolder) override;
  void PauseScan(bool pPaused) override;
  void CancelScan() override;
  bool WaitForScan(int64_t pMilliseconds) override;
  int64_t GetScanDuration() const override { return fScanDuration.load(std::memory_order_relaxed); }
  int64_t GetLastScanNumberOfFiles() const override { return fLastScanNumberOfFiles.load(std::memory_order_relaxed); }
  TRef<ITopSizeList> GetTopSizeList() const override;
  void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) override {
    fErrorObservers.Subscribe(std::move(pObserver));
  }
  void Dispose() override;

  void SetScanFilter(TRef<IScanFilter> pFilter) override;
  TRef<IScanFilter> GetScanFilter() const override;
  std::vector<TExclusion> GetExclusions() const override;
  TStorageInformation GetStorageInformation() const override;
  TRef<IStorage> GetStorage() const override;
  TRef<IComparison> GetComparison() const override;
  void SetComparison(TRef<IComparison> pComparison) override;
  // Fills the root from a file instead of by a scan. The caller fills the tree through the returned top folder, then
  // hands over what the file says of the scan. After that the root is finished like a scanned one. For one thread,
  // while no other code knows the root.
  TRef<TCustomFolderData> BeginLoading();
  void EndLoading(const TLoadedScan& pScan);

  // An optional filter for files. Set before a scan.
  void SetExpression(TRef<IExpression> pExpression) { fExpression = std::move(pExpression); }
  // The path as typed, if it holds wildcards. The folder is scanned, but only files that match the last part are
  // included, in it and in all folders beneath it.
  const std::u16string& GetPathWithWildcards() const { return fPathWithWildcards; }

 protected:
  TCustomRoot(std::u16string pPath, std::u16string pPathWithWildcards, char16_t pDelimiter,
              TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner);

 private:
  friend class TScanConfiguration;

  // The common start of all scans: state, clock, tokens and engine. pWholeTree is false for a refresh.
  bool BeginScanning(bool pWholeTree);
  TRef<TScanConfiguration> Configuration() const;
  TRef<TScanConfiguration> ConfigurationOfNextScan(bool pWholeTree);
  void StartEngine();
  void PrepareScan(bool pWholeTree);
  // Part of a scan, on its worker: opens the path and makes the top folder, also where the path cannot be reached.
  TScanStart OpenTree() noexcept;
  TScanStart BeginTree();
  void FailOpening(uint32_t pCode) noexcept;
  bool IsCancelled() const;
  void FailRefresh(TCustomFolderData& pFolder, uint32_t pCode) noexcept;
  void EndScanning(bool pWholeTree) noexcept;
  void SetPaused(bool pPaused) REQUIRES(fLock);
  int64_t Elapsed() const REQUIRES(fLock);  // of a running scan
  void SetScanEnded();
  TStorageInformation AskStorage() const;
  TRef<IHierarchicalEnumerator> OpenPath(const TScanConfiguration& pConfiguration) const;
  void SetEndState(bool pWholeTree, bool pCancelled, IFolderData& pTop);
  void GiveUpTree();

  // Part of a refresh, on its worker. Returns the folder's listing, or nullptr when there is nothing to list.
  TRef<IHierarchicalEnumerator> BeginRefresh(TCustomFolderData& pFolder, bool pRecursive);
  struct TFoundFolder;
  TFoundFolder FindInStorage(TCustomFolderData& pFolder);
  void FindInListing(TFoundFolder& pFound, TCustomFolderData& pFolder, IHierarchicalEnumerator& pParent);

  template <class TIsMeant>
  void ForgetErrors(const TIsMeant& pIsMeant);
  void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial);
  void AddError(TScanError pError);
  void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes, int64_t pExcluded);
  // Sets the progress counters to the tree's totals minus pWithout.
  void CountTree(const TSizeValues& pWithout = {});
  std::vector<TExclusion> CurrentExclusions() const;
  void RefillTopSizeList();
  void FillTopSizeList(ITopSizeList& pList);
  // Works out the statistics of a loaded tree that has its files.
  void SumUpLoaded();

  // Fixed after construction, or set before a scan.
  const std::u16string fPathWithWildcards;
  const std::u16string fFileMask;  // the last part of fPathWithWildcards
  const TRef<IScanServices> fServices;
  const std::shared_ptr<const TGlobalOptions> fOptions;
  IScanRoots* const fOwner;  // the list that holds this root; nullptr outside a list
  TRef<IExpression> fExpression;

  std::atomic<bool> fTopSizeListHasGaps{false};  // files of the list left the tree, so others may belong there now

  // Guards structural changes of the whole tree. A scan, a removal and a disposal never run at the same time.
  TSlimReaderWriterLock fSynchronizer;

  // The configuration is read with every value of a row, so it has its own lock, which readers share.
  mutable TSlimReaderWriterLock fConfigurationLock;
  TRef<TScanConfiguration> fConfiguration GUARDED_BY(fConfigurationLock);

  mutable TCriticalSection fLock;
  std::condition_variable fScanEnded;
  bool fScanRunning GUARDED_BY(fLock) = false;
  bool fPathReached GUARDED_BY(fLock) = false;  // by the last scan
  TRef<TCancellationToken> fCancellationToken GUARDED_BY(fLock);
  TRef<TCustomFolderData> fFolderData GUARDED_BY(fLock);
  TRef<IScanEngine> fScanEngine GUARDED_BY(fLock);
  TRef<ITopSizeList> fTopSizeList GUARDED_BY(fLock);
  TRef<IScanFilter> fScanFilter GUARDED_BY(fLock);  // of the next scan
  std::vector<TScanError> fErrors GUARDED_BY(fLock);
  bool fCountsExclusions GUARDED_BY(fLock) = false;       // a scan of the whole path is running
  std::vector<TExclusion> fExclusions GUARDED_BY(fLock);  // of the last scan of the whole path
  std::u16string fLastScannedFolder GUARDED_BY(fLock);
  int64_t fScanStarted GUARDED_BY(fLock) = 0;
  std::optional<int64_t> fPausedSince GUARDED_BY(fLock);
  int64_t fPausedTime GUARDED_BY(fLock) = 0;  // of earlier pauses of this scan
  TStorageInformation fStorage GUARDED_BY(fLock);
  TRef<IComparison> fCompareData GUARDED_BY(fLock);

  // Progress. Workers write it once per folder; views poll it.
  std::atomic<int64_t> fTotalFilesFound{0};
  std::atomic<int64_t> fNumFolders{0};
  std::atomic<int64_t> fBytesFound{0};
  std::atomic<int64_t> fExcludedObjects{0};
  TRootExclusions fRootExclusions;
  std::atomic<int64_t> fErrorCount{0};
  mutable std::atomic<int64_t> fPrepared{0};
  mutable std::atomic<int64_t> fToPrepare{0};
  std::atomic<int64_t> fLastScannedFolderTick{0};
  std::atomic<int64_t> fScanDuration{0};
  std::atomic<int64_t> fLastScanNumberOfFiles{0};
  TObservable<IScanErrorObserver> fErrorObservers;
};

// A root on a file system.
class TCustomFileSystemRoot : public TCustomRoot {
 protected:
  using TCustomRoot::TCustomRoot;
};

// A drive, folder or share of Windows: backslashes, and letter case is ignored.
class TFileSystemRoot : public TCustomFileSystemRoot {
 public:
  TFileSystemRoot(std::u16string pPath, std::u16string pPathWithWildcards, TRef<IScanServices> pServices,
                  std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner);
};

// A folder of a Unix-like system: slashes, every character counts.
class TCustomUnixRoot : public TCustomFileSystemRoot {
 public:
  TCustomUnixRoot(std::u16string pPath, std::u16string pPathWithWildcards, TRef<IScanServices> pServices,
                  std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner);
};

}  // namespace Vantrel

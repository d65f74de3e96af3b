#pragma once

// Roots with a tree: scan, refresh, removal, errors, progress, disposal.

#include <atomic>
#include <condition_variable>
#include <memory>
#include <string>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "model/roots/RootEntryFilter.h"
#include "model/roots/RootInterfaces.h"
#include "model/statistics/TopSizeList.h"
#include "model/tree/CustomFolder.h"
#include "model/tree/Observable.h"
#include "model/tree/Tokens.h"

namespace Vantrel {

// What every root has: a path, a title, a state, observers and the tokens that tell of cancellation and disposal.
class TBaseRoot : public TInterfaced<IHierarchicalRoot> {
 public:
  std::u16string GetPath() const override { return fPath; }
  std::u16string GetTitle() const override;
  void SetTitle(std::u16string_view pTitle);
  char16_t GetPathDelimiter() const override { return fPathDelimiter; }
  TRootStates GetState() const override { return fState.load(std::memory_order_acquire); }
  TKivFileTime GetScanTimeStamp() const override { return {fScanTimeStamp.load(std::memory_order_relaxed)}; }
  TRef<IDisposeToken> GetDisposeToken() const override { return fDisposeToken; }
  void NotifyObservers(IHierarchicalObject& pObject, TChangeKind pKind) override;
  void SubscribeObserver(TRef<IHierarchicalObserver> pObserver) override { fObservers.Subscribe(std::move(pObserver)); }
  TMetaDataValue GetValue(TColumn pColumn) const override;

 protected:
  TBaseRoot(std::u16string pPath, char16_t pDelimiter);

  void IncludeState(TRootStates pBits) { fState.fetch_or(pBits, std::memory_order_acq_rel); }
  void ExcludeState(TRootStates pBits) { fState.fetch_and(~pBits, std::memory_order_acq_rel); }

  const std::u16string fPath;
  const char16_t fPathDelimiter;
  const TRef<TDisposeToken> fDisposeToken;
  std::atomic<int64_t> fScanTimeStamp{0};
  TObservable<IHierarchicalObserver> fObservers;

 private:
  std::atomic<TRootStates> fState{0};
  mutable TCriticalSection fTitleLock;
  std::u16string fTitle GUARDED_BY(fTitleLock);
};

}  // namespace Vantrel

namespace Vantrel {

// A root with a tree that is filled by scans.
class TScanConfiguration;

class TCustomRoot : public TBaseRoot {
 public:
  ~TCustomRoot() override;

  TRef<IFolderData> GetTopFolder() const override;
  TRef<IScanEngine> GetScanEngine() const override;
  std::vector<TScanError> GetErrors() const override;
  TScanProgress GetProgress() const override;
  IScanConfiguration& GetScanConfiguration() override;
  void ForgetBranch(IFolderData& pFolder) override;
  void ForgetOwnEntries(IFolderData& pFolder) override;

  void Scan() override;
  bool RefreshFolder(IFolderData& pFolder, bool pRecursive) override;
  bool RemoveFolder(IFolderData& pFolder) override;
  void CancelScan() override;
  bool WaitForScan(int64_t pMilliseconds) override;
  int64_t GetScanDuration() const override { return fScanDuration.load(std::memory_order_relaxed); }
  int64_t GetLastScanNumberOfFiles() const override { return fLastScanNumberOfFiles.load(std::memory_order_relaxed); }
  TRef<ITopSizeList> GetTopSizeList() const override;
  void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) override {
    fErrorObservers.Subscribe(std::move(pObserver));
  }
  void Dispose() override;

  void SetScanFilter(TRef<IScanFilter> pFilter) override { fScanFilter = std::move(pFilter); }
  TRef<IScanFilter> GetScanFilter() const override { return fScanFilter; }
  std::vector<TExclusion> GetExclusions() const override;
  TStorageInformation GetStorageInformation() const override;
  TRef<IComparison> GetComparison() const override;
  void SetComparison(TRef<IComparison> pComparison) override;
  // Fills the root from a file instead of by a scan: the tree through the top folder that this returns, then what the
  // file says of the scan, after which the root is finished like a scanned one. For one thread, while nobody else knows
  // the root.
  TRef<TCustomFolderData> BeginLoading();
  void EndLoading(const TLoadedScan& pScan);

  // An optional filter for files; set before a scan.
  void SetExpression(TRef<IExpression> pExpression) { fExpression = std::move(pExpression); }
  // The path as typed, when it holds wildcards: the folder is scanned, and of the files in it and beneath it only those
  // that match the last part are taken in.
  const std::u16string& GetPathWithWildcards() const { return fPathWithWildcards; }

 protected:
  TCustomRoot(std::u16string pPath, std::u16string pPathWithWildcards, char16_t pDelimiter,
              TRef<IScanServices> pServices, std::shared_ptr<const TGlobalOptions> pOptions, IScanRoots* pOwner);

 private:
  friend class TScanConfiguration;

  // What a scan of one kind or another has in common: its state, clock, tokens and engine.
  bool BeginScanning(bool pWholeTree);
  void PrepareScan(bool pWholeTree, TRef<TCancellationToken> pToken);
  void BeginTree();
  void FailScan(uint32_t pCode) noexcept;
  void FailRefresh(TCustomFolderData& pFolder, uint32_t pCode) noexcept;
  void EndScanning() noexcept;
  void SetScanEnded();
  void StartEngine();
  TStorageInformation AskStorage() const;
  TRef<IHierarchicalEnumerator> OpenFolder(IFolderData& pFolder);
  void GiveUpTree();
  template <class TIsMeant>
  void ForgetErrors(const TIsMeant& pIsMeant);
  void RefillTopSizeList();
  void OfferFiles(IFolderData& pFolder, ITopSizeList& pList);
  void SetTopSizeList(TRef<ITopSizeList> pList);
  void AddError(const TScanError& pError);
  void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial);
  void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes, int64_t pExcluded);
  uint32_t EnumeratorOptions() const;
  std::unique_ptr<IEntryFilter> CreateEntryFilter();

  // Fixed after construction, or set before a scan.
  const std::u16string fPathWithWildcards;
  const std::u16string fFileMask;  // the last part of fPathWithWildcards
  const TRef<IScanServices> fServices;
  const std::shared_ptr<const TGlobalOptions> fOptions;
  IScanRoots* const fOwner;  // the list that holds this root; nullptr when there is none
  TRef<IExpression> fExpression;
  TRef<IScanFilter> fScanFilter;

  // Set at a scan's start, fixed while it runs.
  TRef<TScanConfiguration> fConfiguration;
  std::atomic<bool> fTopSizeListHasGaps{false};  // some of its files left the tree: others may belong there now

  // Guards structural changes of the whole tree: a scan, a removal and a disposal never run beside each other.
  TSlimReaderWriterLock fSynchronizer;

  mutable TCriticalSection fLock;
  std::condition_variable fScanEnded;
  bool fScanRunning GUARDED_BY(fLock) = false;
  TRef<TCancellationToken> fCancellationToken GUARDED_BY(fLock);
  TRef<TCustomFolderData> fFolderData GUARDED_BY(fLock);
  TRef<IScanEngine> fScanEngine GUARDED_BY(fLock);
  std::vector<TScanError> fErrors GUARDED_BY(fLock);
  std::u16string fLastScannedFolder GUARDED_BY(fLock);
  int64_t fScanStarted GUARDED_BY(fLock) = 0;
  TStorageInformation fStorage GUARDED_BY(fLock);
  TRef<IComparison> fCompareData GUARDED_BY(fLock);
  TRef<ITopSizeList> fTopSizeList GUARDED_BY(fLock);

  // Progress: written by workers once per folder, polled by whoever shows it.
  std::atomic<int64_t> fTotalFilesFound{0};
  std::atomic<int64_t> fNumFolders{0};
  std::atomic<int64_t> fBytesFound{0};
  std::atomic<int64_t> fExcludedObjects{0};
  TRootExclusions fRootExclusions;
  std::atomic<int64_t> fErrorCount{0};
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

// A drive, folder or share of Windows: backslashes, letter case does not count.
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

#pragma once

// The interfaces of roots, their settings, engines, observers, errors and progress.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "model/roots/ScanFilter.h"
#include "model/statistics/TopSizeList.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "model/tree/TreeChanges.h"

namespace Vantrel {

class IScanRoots;
class IStorage;

// Something that was met while scanning and could not be read.
struct TScanError {
  TRef<IHierarchicalObject> fObject;  // the folder's node
  std::u16string fPath;
  uint32_t fCode = 0;  // the error code of the system that was scanned
  TEnumeratorError fKind = TEnumeratorError::eeOther;
  bool fPartial = false;   // some entries were listed before the error
  std::u16string fText{};  // what the system that was scanned calls the error; the root fills it in where it is empty
};

// Told of every error as it is recorded, on the worker's thread.
class IScanErrorObserver : public IInterface {
 public:
  virtual void ErrorRecorded(const TScanError& pError) = 0;
};

// A list of observers that may change while it is being told something.
template <class TObserver>
class IObservable : public IInterface {
 public:
  virtual void Subscribe(TRef<TObserver> pObserver) = 0;
  virtual void Unsubscribe(TObserver* pObserver) = 0;
};

// The scan settings of a root, as the engine and its jobs read them. Fixed while a scan runs; any thread.
class IScanConfiguration : public IInterface {
 public:
  virtual TRef<ICancellationToken> GetCancellationToken() const = 0;
  // A judge of what the scan takes in, for one of its threads; nullptr when it takes in everything. What is left out is
  // counted as excluded.
  virtual std::unique_ptr<IEntryFilter> CreateEntryFilter() = 0;
  // False for a folder that the root has given up in the meantime (removed, or its root disposed).
  virtual bool IsFolderToBeScanned(IFolderData& pFolder) = 0;
  virtual bool GetFolderDateBasedOnFilesOnly() const = 0;
  virtual bool GetKeepFiles() const = 0;  // whether files stay in the tree as nodes
  virtual bool GetDoExtensionsStatistics() const = 0;
  virtual bool GetDoUsersStatistics() const = 0;
  virtual TDateType GetFileAgesDateType() const = 0;
  virtual IFileAges* GetFileAges() const = 0;
  virtual int32_t GetLongPathLength() const = 0;
  virtual TColumn GetShareBasis() const = 0;          // mdSize or mdAllocated: what shares are shares of
  virtual ITopSizeList* GetTopSizeList() const = 0;   // nullptr when none is kept
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // "now" for file ages: one moment for the whole scan
  // One root may ask to be scanned by one thread only, or for threads to be started ahead of the work.
  virtual bool IsSingleThreaded() const { return false; }
  virtual bool WantsPreStartedThreads() const { return false; }

  virtual void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) = 0;
  // Progress, told once per folder: what its listing brought.
  virtual void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                            int64_t pExcluded) = 0;
};

// Scans one root once.
class IScanEngine : public IInterface {
 public:
  // Queues a folder with all beneath it. The enumerator stands before its first entry.
  virtual void AddScanJob(TRef<IFolderData> pFolder, TRef<IHierarchicalEnumerator> pEnumerator) = 0;
  // Queues another look at a folder that was scanned. The worker first asks pOpen for the folder's listing; nullptr
  // means that there is nothing to list. Recursive: pOpen has emptied the folder, and it is scanned with all beneath
  // it. Else its files are counted anew, folders that are new are scanned, folders that are gone are removed; known
  // ones are left alone.
  virtual void AddRefreshJob(TRef<IFolderData> pFolder, bool pRecursive,
                             std::function<TRef<IHierarchicalEnumerator>()> pOpen) = 0;
  virtual bool IsScanning() const = 0;
  // "Threads: 2 of max 8", or "No worker threadpool active".
  virtual std::u16string GetStatusText() const = 0;
  // Waits for all jobs to end, then for the threads.
  virtual void Dispose() = 0;
};

// Bits of a root's state.
enum TRootState : uint32_t {
  rsScanning = 1 << 0,
  rsFinished = 1 << 1,   // a scan of the whole path ran to its end
  rsCancelled = 1 << 2,  // a scan or a refresh was stopped, and what it left out has not been scanned since
  rsHasErrors = 1 << 3,
  rsShowsPreviousState = 1 << 4,  // an earlier state from the history
  rsIsXMLImport = 1 << 5,
  rsDisposed = 1 << 6,
  rsPathNotFound = 1 << 7,
  rsIsPartialImport = 1 << 8,  // loaded from a file that left folders of its scan out
};
using TRootStates = uint32_t;

// Counters of the tree, cheap to poll. They only ever grow during a scan. A refresh begins with the tree without the
// branch that it looks at. What was excluded is that of the last scan of the whole path.
struct TScanProgress {
  int64_t fFiles = 0;
  int64_t fFolders = 0;
  int64_t fBytes = 0;
  int64_t fExcludedObjects = 0;
  int64_t fErrors = 0;
  std::u16string fLastScannedFolder;
};

// What is known of the storage that a root lies on, as of its scan. Sizes in bytes; 0 or empty where it is not known.
struct TStorageInformation {
  std::u16string fMountPoint;  // "/", "/home", "C:\"; not in scan files
  std::u16string fLabel;       // volume label on Windows, the device on Linux; not in scan files
  std::u16string fFileSystem;
  int64_t fBytesPerCluster = 0;
  int64_t fTotalBytes = 0;
  int64_t fFreeBytes = 0;
};

// What a file says of a scan besides its tree.
struct TLoadedScan {
  TKivFileTime fScanTimeStamp;
  std::u16string fTitle;
  TStorageInformation fStorage;
  int64_t fExcludedObjects = 0;
  bool fWasCancelled = false;
  bool fIsFullExport = true;  // the file holds every folder of the scan
  TRef<IScanFilter> fFilter;  // nullptr when there was none
  TDateType fFileAgesDateType = TDateType::dtNone;
  TRef<IFileAges> fFileAges;  // nullptr when the file holds no ages
  bool fHasExtensions = false;
  bool fHasUsers = false;
  std::vector<TScanError> fErrors;
  std::optional<std::vector<TTopSizeEntry>> fTopFiles;  // not set when the root kept no list
};

// An earlier state of a root's tree. It is found by path, so it stays right when the tree changes. Fixed once made; any
// thread.
//
// The tree itself holds what is there now and nothing else. A caller that shows what has gone adds FindGone of each
// folder to the folder's own FindSubFolders. Of the rows of FindGone, FindSubFolders gives what was beneath them.
class IComparison : public IInterface {
 public:
  // Whether the folder was there; for a "[Files]" node, whether its folder had files.
  virtual bool WasThere(const IFolderData& pFolder) const = 0;
  // What the folder, or the files of a "[Files]" node, held then; zeros for what was not there.
  virtual TSizeValues EarlierValues(const IFolderData& pFolder) const = 0;
  // Rows for what was directly in a folder and is not there at this moment, in no particular order. They are made for
  // the caller, have state fsIsDummyForComparison and no values of their own; the columns of change work. They are not
  // in the tree: nothing counts them, and refreshing or removing one does nothing.
  virtual std::vector<TRef<IFolderData>> FindGone(IFolderData& pFolder) const = 0;
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // of the earlier scan
  // Whether the earlier scan kept its files.
  virtual bool KnowsFiles() const = 0;
  // Those that were directly in the folder, or are of a "[Files]" node, then; nullptr when there were none.
  virtual TRef<const TFileTable> EarlierFiles(const IFolderData& pFolder) const = 0;
};

// One scanned path with its tree.
class IHierarchicalRoot : public IMetaDataFormatter {
 public:
  virtual std::u16string GetPath() const = 0;   // absolute
  virtual std::u16string GetTitle() const = 0;  // the path, with its wildcards when it has any; or what was set
  virtual char16_t GetPathDelimiter() const = 0;
  virtual TRootStates GetState() const = 0;
  virtual TRef<IFolderData> GetTopFolder() const = 0;     // nullptr before the first scan and after disposal
  virtual TRef<IScanEngine> GetScanEngine() const = 0;    // of the last scan, if any
  virtual std::vector<TScanError> GetErrors() const = 0;  // a copy, in the order in which they were met
  virtual TScanProgress GetProgress() const = 0;
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // when the tree's scan began; not set before the first
  virtual TRef<IDisposeToken> GetDisposeToken() const = 0;
  // The settings that the tree was made with. They never change: the next scan brings new ones.
  virtual TRef<IScanConfiguration> GetScanConfiguration() const = 0;
  // What the path lies on; for a loaded scan a storage that cannot be opened.
  virtual TRef<IStorage> GetStorage() const = 0;
  // Tells of all changes from now on; see TChangeQueues::Subscribe.
  virtual TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {}) = 0;
  // For the nodes of the tree: where they tell of their changes.
  virtual TChangeQueues& GetChangeQueues() = 0;
  // A folder is about to lose all beneath it: its errors and its largest files leave the root's lists. For a "[Files]"
  // node these are the files of its folder.
  virtual void ForgetBranch(IFolderData& pFolder) = 0;
  // The same for the folder's own listing and the files directly in it, which are about to be looked at again.
  virtual void ForgetOwnEntries(IFolderData& pFolder) = 0;

  // What the root's scans take in; nullptr for everything. Takes effect with the next scan; none may be running.
  virtual void SetScanFilter(TRef<IScanFilter> pFilter) = 0;
  virtual TRef<IScanFilter> GetScanFilter() const = 0;
  // What the last scan of the whole path left out, by reason: the filter's reasons, then the root's own.
  virtual std::vector<TExclusion> GetExclusions() const = 0;

  // Asked of the system when a scan has ended, or as the file has it.
  virtual TStorageInformation GetStorageInformation() const = 0;

  // What the root is compared with, nullptr for nothing; a scan ends it. Set where no scan runs, and read by any
  // thread.
  virtual TRef<IComparison> GetComparison() const = 0;
  virtual void SetComparison(TRef<IComparison> pComparison) = 0;

  // Starts a scan of the whole path on threads of its own and returns; an earlier scan's tree is given up first. The
  // options are taken as they are at this moment. EInvalidOperation when a scan is running. A path that cannot be
  // opened, and a scan for which there is no thread or no memory, ends at once with rsPathNotFound and one error.
  virtual void Scan() = 0;
  // Scans a branch again, or, when not recursive, looks at the folder's own entries only; a "[Files]" node stands for
  // these. Returns at once: a worker opens the folder, with the options of the tree's scan. A folder that is gone
  // leaves the tree, and the subscribers are told of its removal. Refused with false when no scan has finished, one is
  // running, the root shows an earlier state, or the node is in no tree; for the first and third with a line in the
  // debug log.
  virtual bool RefreshFolder(IFolderData& pFolder, bool pRecursive) = 0;
  // Takes a folder, or the files that a "[Files]" node stands for, with all its totals out of the tree. False while a
  // scan is running and for a node that is the top folder or in no tree.
  virtual bool RemoveFolder(IFolderData& pFolder) = 0;
  // Asks a running scan to stop at its next folder; it still ends through the usual way, with rsCancelled.
  virtual void CancelScan() = 0;
  // Waits for the end of the scan, at most so many milliseconds. True when no scan is running.
  virtual bool WaitForScan(int64_t pMilliseconds) = 0;
  // How long the last finished scan took, in milliseconds; 0 for a loaded root, since no file says it.
  virtual int64_t GetScanDuration() const = 0;
  // Files of the tree before the last scan of the whole path, for progress; 0 when there was none.
  virtual int64_t GetLastScanNumberOfFiles() const = 0;
  // The root's list of its largest files; nullptr when none is kept. The next scan makes another.
  virtual TRef<ITopSizeList> GetTopSizeList() const = 0;
  // The observer is held until the root is disposed.
  virtual void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) = 0;
  // Tears the tree down. Final; a running scan is cancelled and waited for.
  virtual void Dispose() = 0;
};

// What the roots need of the floor above them: kinds of storage, and engines.
class IScanServices : public IInterface {
 public:
  // The kind of storage that serves a path, typed or a root's. EUnknownProtocol when there is none.
  virtual TRef<IStorage> FindStorage(std::u16string_view pPath) = 0;
  // What a loaded scan lies on, which cannot be opened. The delimiter is that of its paths.
  virtual TRef<IStorage> GetLoadedScanStorage(char16_t pPathDelimiter) = 0;
  // An engine for one scan; the callback comes once, from a worker, when all jobs are done.
  virtual TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration,
                                             int32_t pPriority, std::function<void()> pOnAllDone) = 0;
};

// The list of open roots.
class IScanRoots : public IInterface {
 public:
  // Adds a root for a path as typed, not scanned yet. EInvalidOperation when the list is full, EUnknownProtocol when no
  // kind of storage serves the path. A path that is in the list already gives the root that is there.
  virtual TRef<IHierarchicalRoot> CreateRoot(std::u16string_view pPath) = 0;
  // A path as typed in the form that its root carries. EUnknownProtocol as for CreateRoot.
  virtual std::u16string AbsolutePath(std::u16string_view pPath) const = 0;
  // The root for the path, its scan started.
  virtual TRef<IHierarchicalRoot> Scan(std::u16string_view pPath) = 0;
  // A root that is not scanned but loaded, not in the list yet; the delimiter tells what kind of root it is. The path
  // is taken as it is.
  virtual TRef<IHierarchicalRoot> CreateRootForLoading(std::u16string_view pPath, char16_t pDelimiter) = 0;
  // Puts such a root into the list. EInvalidOperation when the list is full.
  virtual void AddLoaded(TRef<IHierarchicalRoot> pRoot) = 0;
  // All local fixed drives (Windows) or all mounted file systems with storage behind them (Linux).
  virtual std::vector<TRef<IHierarchicalRoot>> ScanAllDrives() = 0;
  virtual std::vector<std::u16string> GetScannedPaths() const = 0;  // of all roots, in the order of their opening
  // Roots whose path is the given one or holds it.
  virtual std::vector<TRef<IHierarchicalRoot>> FindRootsHolding(std::u16string_view pPath) const = 0;
  virtual std::vector<TRef<IHierarchicalRoot>> GetRoots() const = 0;
  virtual int32_t CountActiveScans() const = 0;
  // The root whose top folder has all roots' top folders as children; made on first use.
  virtual TRef<IHierarchicalRoot> GetVirtualRoot() = 0;
  // Scans the recycle bin beneath each finished root again: its contents change behind the program's back.
  virtual void RefreshRecycleBinFolders() = 0;
  // Takes the root out of the list and disposes it.
  virtual void Remove(IHierarchicalRoot& pRoot) = 0;
  // Disposes all roots.
  virtual void Dispose() = 0;
};

}  // namespace Vantrel

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

// A folder that a scan could not read, or not completely.
struct TScanError {
  TRef<IHierarchicalObject> fObject;  // the folder's node
  std::u16string fPath;
  uint32_t fCode = 0;  // the error code of the system that was scanned
  TEnumeratorError fKind = TEnumeratorError::eeOther;
  bool fPartial = false;   // some entries were listed before the error
  std::u16string fText{};  // the error in the words of the scanned system; the root fills it in when empty
};

// Receives every error when it is recorded, on the worker's thread.
class IScanErrorObserver : public IInterface {
 public:
  virtual void ErrorRecorded(const TScanError& pError) = 0;
};

// A list of observers that may change during a notification.
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
  // Creates an entry filter for one of the scan's threads. nullptr when the scan includes everything. Entries that it
  // leaves out are counted as excluded.
  virtual std::unique_ptr<IEntryFilter> CreateEntryFilter() = 0;
  // False for a folder that the root no longer wants: it was removed, or its root was disposed.
  virtual bool IsFolderToBeScanned(IFolderData& pFolder) = 0;
  virtual bool GetFolderDateBasedOnFilesOnly() const = 0;
  virtual bool GetKeepFiles() const = 0;  // whether files stay in the tree as nodes
  virtual bool GetDoExtensionsStatistics() const = 0;
  virtual bool GetDoUsersStatistics() const = 0;
  virtual TDateType GetFileAgesDateType() const = 0;
  virtual IFileAges* GetFileAges() const = 0;
  virtual int32_t GetLongPathLength() const = 0;
  virtual TColumn GetShareBasis() const = 0;          // mdSize or mdAllocated: the size that percentages refer to
  virtual ITopSizeList* GetTopSizeList() const = 0;   // nullptr when none is kept
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // "now" for file ages: the same moment for the whole scan
  // A root may ask for a scan by one thread only, or for threads to be started ahead of the work.
  virtual bool IsSingleThreaded() const { return false; }
  virtual bool WantsPreStartedThreads() const { return false; }

  virtual void RecordError(IFolderData& pFolder, const IHierarchicalEnumerator& pEnumerator, bool pPartial) = 0;
  // Adds what one folder's listing found to the progress. Called once per folder.
  virtual void CountScanned(IFolderData& pFolder, int64_t pFiles, int64_t pFolders, int64_t pBytes,
                            int64_t pExcluded) = 0;
};

// Where a scan begins: the top folder's node and its listing, before the first entry. Without a listing there is
// nothing to scan.
struct TScanStart {
  TRef<IFolderData> fFolder;
  TRef<IHierarchicalEnumerator> fListing;
};

// A folder that a worker is opening or listing, and for how many milliseconds it was seen to do so.
struct TListedFolder {
  TRef<IHierarchicalElement> fFolder;  // nullptr: there is none
  int64_t fElapsed = 0;
};

// Scans one root once.
class IScanEngine : public IInterface {
 public:
  // Queues a scan. The worker first calls pOpen, which opens the path and must not throw. Cancelling interrupts it.
  virtual void AddScanJob(std::function<TScanStart()> pOpen) = 0;
  // Queues a refresh of a folder that was scanned. The worker first calls pOpen for the folder's listing; nullptr means
  // that there is nothing to list. If recursive, pOpen has emptied the folder, and it is scanned with all beneath it.
  // Otherwise its files are counted anew, new folders are scanned, gone folders are removed, and known folders stay
  // unchanged.
  virtual void AddRefreshJob(TRef<IFolderData> pFolder, bool pRecursive,
                             std::function<TRef<IHierarchicalEnumerator>()> pOpen) = 0;
  virtual bool IsScanning() const = 0;
  // Holds the workers before their next folder, or lets them go on. False when there is nothing to hold yet.
  virtual bool SetPaused(bool pPaused) = 0;
  // The folder that a worker has been inside the longest. The time counts from the first call that finds it there, so
  // it is right for a caller that polls. Any thread.
  virtual TListedFolder GetLongestListed() = 0;
  // "Threads: 2 of max 8", or "No worker threadpool active".
  virtual std::u16string GetStatusText() const = 0;
  // Waits for all jobs to end, then for the threads.
  virtual void Dispose() = 0;
};

// Bits of a root's state.
enum TRootState : uint32_t {
  rsScanning = 1 << 0,
  rsFinished = 1 << 1,   // a scan of the whole path ran to its end
  rsCancelled = 1 << 2,  // a scan or a refresh was stopped, and the rest has not been scanned since
  rsHasErrors = 1 << 3,
  rsShowsPreviousState = 1 << 4,  // shows an earlier state from the history
  rsIsXMLImport = 1 << 5,
  rsDisposed = 1 << 6,
  rsPathNotFound = 1 << 7,
  rsIsPartialImport = 1 << 8,  // loaded from a file that does not hold all folders of its scan
  rsPaused = 1 << 9,           // a scan is running and holds
};
using TRootStates = uint32_t;

// Counters of the tree, cheap to poll. They only grow during a scan. A refresh begins with the tree's totals without
// the refreshed branch. Exclusions are those of the last scan of the whole path.
struct TScanProgress {
  int64_t fFiles = 0;
  int64_t fFolders = 0;
  int64_t fBytes = 0;
  int64_t fExcludedObjects = 0;
  int64_t fErrors = 0;
  // Some storages read an index before the first folder: how many of its parts are read, of how many.
  int64_t fPrepared = 0;
  int64_t fToPrepare = 0;
  int64_t fElapsed = 0;  // milliseconds of the last scan so far, without pauses
  // The folder that a worker has been inside the longest, and for how many milliseconds as seen by the callers. Empty
  // when there is none, or while the path itself is being opened.
  std::u16string fLongestListed;
  int64_t fLongestListedElapsed = 0;
  std::u16string fLastScannedFolder;
};

// What is known about a root's storage, as of its scan. Sizes are in bytes; 0 or empty when unknown.
struct TStorageInformation {
  std::u16string fMountPoint;  // "/", "/home", "C:\"; not in scan files
  std::u16string fLabel;       // volume label on Windows, the device on Linux; not in scan files
  std::u16string fFileSystem;
  int64_t fBytesPerCluster = 0;
  int64_t fTotalBytes = 0;
  int64_t fFreeBytes = 0;
  int64_t fUsedBytes = 0;      // by all users; not in scan files, as the next two
  int64_t fReservedBytes = 0;  // neither in use nor free for this user
  // Of deleted files that programs hold open. Only known if the root's path is where the storage begins.
  int64_t fDeletedBytes = 0;
  // How the scan read the storage, as sentences for the report. Empty for the ordinary way; not in scan files.
  std::vector<std::u16string> fNotes{};
};

// What a file tells about a scan besides its tree.
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
  // The file holds every file: statistics and the largest files are worked out from them, as the options say.
  bool fKeepsFiles = false;
  bool fHasExtensions = false;
  bool fHasUsers = false;
  std::vector<TScanError> fErrors;
  std::optional<std::vector<TTopSizeEntry>> fTopFiles;  // not set when the root kept no list
};

// An earlier state of a root's tree. It is looked up by path, so it stays right when the tree changes. Immutable; any
// thread.
//
// The tree itself holds only what is there now. A caller that shows what has gone adds each folder's FindGone to the
// folder's own FindSubFolders. FindSubFolders of a row from FindGone gives what was beneath it.
class IComparison : public IInterface {
 public:
  // Whether the folder was there. For a "[Files]" node, whether its folder had files.
  virtual bool WasThere(const IFolderData& pFolder) const = 0;
  // The earlier values of a folder, or of the files of a "[Files]" node. Zeros if it was not there.
  virtual TSizeValues EarlierValues(const IFolderData& pFolder) const = 0;
  // Rows for what was directly in a folder and is gone now, in no particular order. They are made for the caller. They
  // have the state fsIsDummyForComparison and no values of their own, but their columns of change work. They are not in
  // the tree: no totals include them, and refreshing or removing one does nothing.
  virtual std::vector<TRef<IFolderData>> FindGone(IFolderData& pFolder) const = 0;
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // of the earlier scan
  // Whether the earlier scan kept its files.
  virtual bool KnowsFiles() const = 0;
  // The earlier files directly in the folder, or of a "[Files]" node. nullptr when there were none.
  virtual TRef<const TFileTable> EarlierFiles(const IFolderData& pFolder) const = 0;
};

// One scanned path with its tree.
class IHierarchicalRoot : public IMetaDataFormatter {
 public:
  virtual std::u16string GetPath() const = 0;   // absolute
  virtual std::u16string GetTitle() const = 0;  // the set title, or else the path with its wildcards
  virtual char16_t GetPathDelimiter() const = 0;
  virtual TRootStates GetState() const = 0;
  // nullptr before the first scan, until a scan has opened its path, and after disposal.
  virtual TRef<IFolderData> GetTopFolder() const = 0;
  virtual TRef<IScanEngine> GetScanEngine() const = 0;    // of the last scan, if any
  virtual std::vector<TScanError> GetErrors() const = 0;  // a copy, in the order of their discovery
  virtual TScanProgress GetProgress() const = 0;
  virtual TKivFileTime GetScanTimeStamp() const = 0;  // when the tree's scan began; not set before the first
  virtual TRef<IDisposeToken> GetDisposeToken() const = 0;
  // The settings of the tree's scan. They never change; the next scan has new ones.
  virtual TRef<IScanConfiguration> GetScanConfiguration() const = 0;
  // The storage that the path lies on. A loaded scan has a storage that cannot be opened.
  virtual TRef<IStorage> GetStorage() const = 0;
  // Reports all changes from now on; see TChangeQueues::Subscribe.
  virtual TRef<ITreeSubscription> Subscribe(std::function<void()> pOnFirstChange = {}) = 0;
  // The queues to which the tree's nodes report their changes.
  virtual TChangeQueues& GetChangeQueues() = 0;
  // A folder is about to lose all beneath it. Removes its errors and its largest files from the root's lists. For a
  // "[Files]" node, removes the files of its folder.
  virtual void ForgetBranch(IFolderData& pFolder) = 0;
  // The same for the folder's own listing and its direct files, which are about to be listed again.
  virtual void ForgetOwnEntries(IFolderData& pFolder) = 0;

  // Sets the filter of the root's scans; nullptr includes everything. Takes effect with the next scan. No scan may be
  // running.
  virtual void SetScanFilter(TRef<IScanFilter> pFilter) = 0;
  virtual TRef<IScanFilter> GetScanFilter() const = 0;
  // The entries that the last scan of the whole path left out, by reason: the filter's reasons, then the root's own.
  virtual std::vector<TExclusion> GetExclusions() const = 0;

  // Read from the system at the end of a scan, or from the file.
  virtual TStorageInformation GetStorageInformation() const = 0;

  // The state that the root is compared with, or nullptr. A scan ends the comparison. Set while no scan runs; read by
  // any thread.
  virtual TRef<IComparison> GetComparison() const = 0;
  virtual void SetComparison(TRef<IComparison> pComparison) = 0;

  // Starts a scan of the whole path on its own threads and returns. The tree of an earlier scan is disposed first. A
  // worker opens the path and makes the new top folder, so there is none until then. The scan uses the options of this
  // moment. EInvalidOperation when a scan is running. If the path cannot be opened, or there is no thread or no memory,
  // the scan ends with rsPathNotFound and one error.
  virtual void Scan() = 0;
  // Scans a branch again. If not recursive, lists only the folder's own entries; a "[Files]" node stands for these.
  // Returns at once. A worker opens the folder, with the options of the tree's scan. A folder that is gone leaves the
  // tree, and subscribers receive its removal. Returns false when no scan has finished, one is running, the root shows
  // an earlier state, or the node is in no tree. The first and third refusal write a line to the debug log.
  virtual bool RefreshFolder(IFolderData& pFolder, bool pRecursive) = 0;
  // Removes a folder, or the files of a "[Files]" node, with all totals from the tree. False while a scan is running,
  // and for a node that is the top folder or in no tree.
  virtual bool RemoveFolder(IFolderData& pFolder) = 0;
  // Lets a running scan hold at its next folders, or go on. Cancelling ends a paused scan, too. No effect when no scan
  // is running.
  virtual void PauseScan(bool pPaused) = 0;
  // Asks a running scan to stop at its next folder. The scan then ends in the usual way, with rsCancelled.
  virtual void CancelScan() = 0;
  // Waits for the end of the scan, at most pMilliseconds. True when no scan is running.
  virtual bool WaitForScan(int64_t pMilliseconds) = 0;
  // The duration of the last finished scan in milliseconds, without pauses. 0 for a loaded root, since files do not
  // hold it.
  virtual int64_t GetScanDuration() const = 0;
  // The tree's number of files before the last scan of the whole path, for progress. 0 when there was no tree.
  virtual int64_t GetLastScanNumberOfFiles() const = 0;
  // The root's list of its largest files; nullptr when none is kept. Each scan makes a new list.
  virtual TRef<ITopSizeList> GetTopSizeList() const = 0;
  // The observer is held until the root is disposed.
  virtual void SubscribeErrorObserver(TRef<IScanErrorObserver> pObserver) = 0;
  // Disposes the tree. Final. Cancels a running scan and waits for its end.
  virtual void Dispose() = 0;
};

// What the roots need from the floor above them: kinds of storage, and engines.
class IScanServices : public IInterface {
 public:
  // The kind of storage for a path as typed or a root's path. EUnknownProtocol when there is none.
  virtual TRef<IStorage> FindStorage(std::u16string_view pPath) = 0;
  // The storage of a loaded scan, which cannot be opened. The delimiter is that of its paths.
  virtual TRef<IStorage> GetLoadedScanStorage(char16_t pPathDelimiter) = 0;
  // Creates an engine for one scan. A worker calls the callback once, when all jobs are done.
  virtual TRef<IScanEngine> CreateScanEngine(int32_t pThreads, TRef<IScanConfiguration> pConfiguration,
                                             int32_t pPriority, std::function<void()> pOnAllDone) = 0;
};

// The list of open roots.
class IScanRoots : public IInterface {
 public:
  // Adds a root for a path as typed, without scanning it. A path that is already in the list gives its existing root.
  // EInvalidOperation when the list is full. EUnknownProtocol when no kind of storage serves the path.
  virtual TRef<IHierarchicalRoot> CreateRoot(std::u16string_view pPath) = 0;
  // The root's form of a path as typed. EUnknownProtocol as for CreateRoot.
  virtual std::u16string AbsolutePath(std::u16string_view pPath) const = 0;
  // Finds or adds the root for the path and starts its scan.
  virtual TRef<IHierarchicalRoot> Scan(std::u16string_view pPath) = 0;
  // Creates a root that is loaded instead of scanned, outside the list. The delimiter decides the kind of root. The
  // path is used unchanged.
  virtual TRef<IHierarchicalRoot> CreateRootForLoading(std::u16string_view pPath, char16_t pDelimiter) = 0;
  // Adds such a root to the list. EInvalidOperation when the list is full.
  virtual void AddLoaded(TRef<IHierarchicalRoot> pRoot) = 0;
  // Scans all local fixed drives (Windows) or all mounted file systems with storage (Linux).
  virtual std::vector<TRef<IHierarchicalRoot>> ScanAllDrives() = 0;
  virtual std::vector<std::u16string> GetScannedPaths() const = 0;  // of all roots, in the order of their opening
  // Roots whose path is the given one or a folder above it.
  virtual std::vector<TRef<IHierarchicalRoot>> FindRootsHolding(std::u16string_view pPath) const = 0;
  virtual std::vector<TRef<IHierarchicalRoot>> GetRoots() const = 0;
  virtual int32_t CountActiveScans() const = 0;
  // The root whose top folder has all roots' top folders as children. Created on first use.
  virtual TRef<IHierarchicalRoot> GetVirtualRoot() = 0;
  // Scans the recycle bin beneath each finished root again, since other programs change its contents.
  virtual void RefreshRecycleBinFolders() = 0;
  // Removes the root from the list and disposes it.
  virtual void Remove(IHierarchicalRoot& pRoot) = 0;
  // Disposes all roots.
  virtual void Dispose() = 0;
};

}  // namespace Vantrel

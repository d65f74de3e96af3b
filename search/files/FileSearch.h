#pragma once

// The search for files: on storages and in scanned trees, on a pool of threads.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/roots/ScanFilter.h"
#include "model/roots/Storage.h"
#include "scan/engine/ThreadPool.h"
#include "search/files/FoundItem.h"
#include "search/query/AdaptedExpression.h"

namespace Vantrel::Search {

struct TFileSearchSettings {
  // Adapted to the abilities of all targets.
  TAdaptedExpression fExpression;
  int32_t fThreads = 1;
  int32_t fPriority = 3;
  // As a scan uses them: links, mounts, privileges.
  THierarchicalEnumeratorOptions fEnumeratorOptions = 0;
  // What the search takes in at all; nullptr for everything. It belongs to this search. Does not apply to trees.
  TRef<IScanFilter> fFilter{};
  // The search ends when it has found this many items; 0: no limit.
  int64_t fMostFound = 0;
  ThreadPool::TWorkerThreadPool::TSettings fPool{};  // for tests
};

// What could not be searched.
struct TSearchError {
  std::u16string fPath;
  uint32_t fCode = 0;
  std::u16string fText;
  bool fIsTarget = false;   // the path that was to be searched
  bool fIsPartial = false;  // a folder of which some entries were seen
};

struct TSearchProgress {
  int64_t fFiles = 0;  // looked at
  int64_t fFolders = 0;
  int64_t fFound = 0;
  int64_t fErrors = 0;
  std::u16string fLastFolder;
};

class TSearchRun;

// One search. The targets are added first, then Start is called once. All other calls are for any thread.
//
// Each folder is matched against the conditions while it is listed, and is then one of the folders that wait; workers
// share them as those of a scan do. If the conditions read contents, a folder's files are matched after its listing, in
// slices that other workers can take. Found items are handed over after each folder. Their order depends on the
// threads; SortFoundItems makes it the same every time.
//
// The searched folder itself is not found, only what is in it. A path that is a file is matched itself. A folder on a
// storage has no size, since what is beneath it is not added up.
class TFileSearch final {
 public:
  explicit TFileSearch(TFileSearchSettings pSettings);
  // Cancels and waits.
  ~TFileSearch();
  TFileSearch(const TFileSearch&) = delete;
  TFileSearch& operator=(const TFileSearch&) = delete;

  // Adds a root's path, which need not have been scanned. The root's own filter, from a path with wildcards, applies.
  void AddPath(const IHierarchicalRoot& pRoot);
  // Adds a root's tree, which may be growing meanwhile. A root without a tree, such as before its scan has opened its
  // path, has nothing to find. With a storage, files are opened by their paths.
  void AddTree(TRef<IHierarchicalRoot> pRoot, TRef<IStorage> pStorage = nullptr);
  // If no thread can be started, every target is an error.
  void Start();

  // The search ends soon; what was found stays. May be called again when a worker hangs in the system.
  void Cancel();
  bool WasCancelled() const;
  // Whether the limit of found items ended the search.
  bool HasFoundEnough() const;
  // Workers stop at the next folder, or in the file that they read, until the search goes on or is cancelled.
  void SetPaused(bool pPaused);
  // Waits for the end, at most pMilliseconds. True when the search has ended.
  bool WaitForEnd(int64_t pMilliseconds);

  // The items found since the last call.
  std::vector<TFoundItem> TakeFound();
  TSearchProgress GetProgress() const;
  // So far, in the order of their discovery.
  std::vector<TSearchError> GetErrors() const;
  // What to tell the user at the end, such as that a regular expression gave up.
  std::vector<std::u16string> GetWarnings() const;

 private:
  const std::unique_ptr<TSearchRun> fRun;
  std::vector<TRef<ThreadPool::IWorkItem>> fJobs;  // one for each target, until Start
};

}  // namespace Vantrel::Search

#pragma once

// The work of a search: on folders of a storage, on the files of one folder, on branches of a tree.

#include "model/roots/Storage.h"
#include "scan/engine/ThreadPool.h"
#include "search/files/SearchRun.h"

namespace Vantrel::Search {

// The first job of a target. It opens the path on its worker, and makes further jobs when other workers need work. The
// run must outlive the jobs.
TRef<ThreadPool::IWorkItem> CreatePathJob(TSearchRun& pRun, const IHierarchicalRoot& pRoot);
// nullptr when the root has no tree.
TRef<ThreadPool::IWorkItem> CreateTreeJob(TSearchRun& pRun, TRef<IHierarchicalRoot> pRoot, TRef<IStorage> pStorage);

}  // namespace Vantrel::Search

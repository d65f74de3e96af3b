#pragma once

// The work on one folder. A job lists it, adds its children to the tree, and queues or scans them. It also refreshes a
// folder.

#include <functional>
#include <memory>
#include <vector>

#include "model/tree/CustomFolder.h"
#include "scan/engine/OpenFolder.h"
#include "scan/engine/ScanEngine.h"
#include "scan/engine/ThreadPool.h"

namespace Vantrel::ScanEngine {

enum class TScanMode : uint8_t {
  smNew,     // the folder is empty; the job fills it and all beneath it
  smRefresh  // the folder was scanned before; the job looks at its own entries again
};

// Scans one folder, and those folders beneath it that it does not give to other workers.
//
// A folder is listed to its end before any of its sub-folders is opened. Sub-folders wait on the job's own list. So
// depth costs no stack, no buffers and no open handles. When a sub-folder's turn comes, the job decides whether it
// becomes a job of its own. By then the load of the other workers is known.
class TScanJob : public ThreadPool::TBasicWorkItem {
 public:
  // pParent is the parent's open folder, of which this job is a part. nullptr where a scan or a refresh begins.
  TScanJob(TScanEngine& pEngine, TRef<TCustomFolderData> pFromFolder, TRef<IHierarchicalEnumerator> pEnumerator,
           TScanMode pMode, TRef<TOpenFolder> pParent = nullptr);
  // Sets the function that opens the folder on the worker when the job begins. The folder may be unknown until then.
  void SetOpen(std::function<TScanStart()> pOpen) { fOpen = std::move(pOpen); }

 protected:
  // Throws nothing. An error ends the listing of one folder and is added to the root's error list.
  void Execute() override;

 private:
  // A sub-folder that waits to be scanned, its parent, and its parent's finished enumerator, which opens it.
  struct TWaiting {
    TRef<TCustomFolderData> fFolder;
    TRef<TOpenFolder> fParent;
    TRef<IHierarchicalEnumerator> fListing;
    uint64_t fEntryId = 0;
  };

  // False when there is nothing to scan. The folder is then not a part of its parent any more.
  bool Begin();
  void ScanAll();
  bool OpenFolder();
  bool TakeAccumulator();
  void ScanWaiting();
  TRef<IHierarchicalEnumerator> Open(const TWaiting& pWaiting);
  bool ShouldQueue() const;
  bool Queue(TWaiting& pWaiting);
  // pEnumerator is nullptr if the folder could not be opened.
  void ScanFolder(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator, TRef<TOpenFolder> pParent);

  TFileGroupContents List(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator);
  void ListEntries(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator);
  void AddFolderEntry(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator);
  void MakeRoomToWait(TCustomFolderData& pFolder);

  void TakeIn(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator, const TFileGroupContents& pFiles,
              TRef<TOpenFolder> pParent) noexcept;
  int32_t LetChildrenWait(IHierarchicalEnumerator* pEnumerator);
  void ReportListing(TCustomFolderData& pFolder, const IHierarchicalEnumerator* pEnumerator);
  void PassUpSometimes(TOpenFolder* pFolder);
  void EndFolder(TCustomFolderData& pFolder);

  void RefreshFolder();
  std::vector<TRef<IFolderData>> KeepNewChildren();
  void TakeInRefresh(const TFileGroupContents& pFiles, const std::vector<TRef<IFolderData>>& pGone) noexcept;

  TScanEngine& fEngine;
  TRef<TCustomFolderData> fFromFolder;
  TRef<TOpenFolder> fParent;
  TRef<IHierarchicalEnumerator> fEnumerator;
  std::function<TScanStart()> fOpen;
  TWorkplace* fPlace = nullptr;  // while it runs; may stay nullptr
  IScanConfiguration& fConfiguration;
  ThreadPool::TWorkerThreadPool& fThreadPool;
  const bool fFolderDateBasedOnFilesOnly;
  const TScanMode fMode;

  std::unique_ptr<TFolderAccumulator> fFiles;
  std::vector<TWaiting> fWaiting;  // taken from the back to scan, depth first; given away from the front
  size_t fFirstWaiting = 0;
  // These values belong to the folder being listed.
  std::vector<TRef<TCustomFolderData>> fChildren;  // those to be entered are marked fsScanning
  std::vector<uint64_t> fChildIds;                 // by which the storage knows the children
  TRef<TOpenFolder> fOpened;                       // the folder, when it has sub-folders to be entered
  int64_t fExcluded = 0;
  uint32_t fFailure = 0;  // code of the error that ended the listing; 0 if the enumerator reports it
};

}  // namespace Vantrel::ScanEngine

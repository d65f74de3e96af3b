#pragma once

// The work on one folder: listing, children into the tree, queue or recurse, non-recursive refresh.

#include <functional>
#include <memory>
#include <vector>

#include "model/tree/CustomFolder.h"
#include "scan/engine/ScanEngine.h"
#include "scan/engine/ThreadPool.h"

namespace Vantrel::ScanEngine {

enum class TScanMode : uint8_t {
  smNew,     // the folder is empty and is filled with all beneath it
  smRefresh  // the folder was scanned before; its own entries are looked at again
};

// Scans one folder, and of what lies beneath it as much as is not better left to other workers.
//
// A folder is listed to its end before any of its sub-folders is opened, and sub-folders wait on a list of their own,
// so depth costs neither stack, nor buffers, nor open handles. Whether a waiting sub-folder becomes a job of its own or
// is scanned here is decided when its turn comes, when it is known how hungry the other workers are.
class TScanJob : public ThreadPool::TBasicWorkItem {
 public:
  TScanJob(TScanEngine& pEngine, TRef<TCustomFolderData> pFromFolder, TRef<IHierarchicalEnumerator> pEnumerator,
           TScanMode pMode);
  // Where the folder's enumerator comes from when the job begins, on its worker; nullptr: nothing is to be listed.
  void SetOpen(std::function<TRef<IHierarchicalEnumerator>()> pOpen) { fOpen = std::move(pOpen); }

 protected:
  // Throws nothing: whatever goes wrong ends the listing of one folder, which then stands on the root's error list.
  void Execute() override;

 private:
  // A sub-folder that waits to be scanned, and the finished enumerator of its parent, which opens it.
  struct TWaiting {
    TRef<TCustomFolderData> fFolder;
    TRef<IHierarchicalEnumerator> fParent;
  };

  bool OpenFolder();
  bool TakeAccumulator();
  void ScanWaiting();
  TRef<IHierarchicalEnumerator> Open(const TWaiting& pWaiting);
  bool ShouldQueue() const;
  bool Queue(TWaiting& pWaiting);
  // The enumerator may be nullptr: the folder could not be opened.
  void ScanFolder(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator);

  TFileGroupContents List(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator);
  void ListEntries(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator);
  void AddFolderEntry(TCustomFolderData& pFolder, IHierarchicalEnumerator& pEnumerator);
  void MakeRoomToWait();

  void TakeIn(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator,
              const TFileGroupContents& pFiles) noexcept;
  void EndListing(TCustomFolderData& pFolder, IHierarchicalEnumerator* pEnumerator);
  void EndFolder(TCustomFolderData& pFolder);

  void RefreshFolder();
  std::vector<TRef<IFolderData>> KeepNewChildren();
  void TakeInRefresh(const TFileGroupContents& pFiles, const std::vector<TRef<IFolderData>>& pGone) noexcept;

  TScanEngine& fEngine;
  const TRef<TCustomFolderData> fFromFolder;
  TRef<IHierarchicalEnumerator> fEnumerator;
  std::function<TRef<IHierarchicalEnumerator>()> fOpen;
  IScanConfiguration& fConfiguration;
  ThreadPool::TWorkerThreadPool& fThreadPool;
  const bool fFolderDateBasedOnFilesOnly;
  const TScanMode fMode;

  std::unique_ptr<TFolderAccumulator> fFiles;
  std::vector<TWaiting> fWaiting;  // scanned from the back, depth first; given away from the front
  size_t fFirstWaiting = 0;
  // Of the folder being listed.
  std::vector<TRef<TCustomFolderData>> fChildren;  // those to be entered are marked fsScanning
  int64_t fExcluded = 0;
  uint32_t fFailure = 0;  // the code of what ended the listing, unless the enumerator tells it
};

}  // namespace Vantrel::ScanEngine

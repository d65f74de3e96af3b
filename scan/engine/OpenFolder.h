#pragma once

// A folder whose branch is being scanned, and the way of its totals to the folders above.
//
// A listing is added to its folder alone. When all beneath a folder is done, its totals go one step up, to its parent.
// The work is therefore in proportion to the number of folders, and not to their depth. The job that finishes a
// folder's last sub-folder makes the step; it may be another job than the one that listed the folder.
//
// Views want totals that grow meanwhile. So each worker passes up, from time to time, what the folders above its place
// lack (PassNewsUp). Each open folder remembers what its parent has received, so nothing is counted twice.
//
// What a reader of a running tree sees: a folder's totals only grow, and include nothing that is not beneath it. They
// may lack what was counted beneath it last, so a child's totals may be above its parent's for a moment. When the scan
// has ended, cancelled or not, every folder holds exactly the sum of what is beneath it.

#include <atomic>
#include <memory>

#include "model/tree/CustomFolder.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::ScanEngine {

class TOpenFolder : public TInterfaced<IInterface> {
 public:
  explicit TOpenFolder(TRef<TCustomFolderData> pFolder) : fFolder(std::move(pFolder)) {}

  // Opens the folder for so many sub-folders, before any of them is scanned. It is then one unfinished part of pParent.
  // The folder where a scan or a refresh began has no open parent. Its totals go to all its ancestors.
  void Open(TRef<TOpenFolder> pParent, int32_t pParts);
  // All that the folder holds now is in its ancestors already.
  void SetAllPassed();

  // One of the folder's sub-folders is done, and its totals are in the folder. After the last one, the folder's totals
  // go to its parent, whose part is then done, and so on. Does nothing for nullptr.
  static void EndPart(TRef<TOpenFolder> pFolder) noexcept;
  // Passes up what the parents of this folder and of all open folders above it lack. The calling job holds an
  // unfinished part of this folder. If there is no memory for this, the news wait until the folders are done.
  void PassNewsUp() noexcept;
  // The number of folders above this one.
  int32_t Depth() const { return fDepth; }

 private:
  bool PassOwnNewsUp();
  void PassRestUp();

  const TRef<TCustomFolderData> fFolder;
  TRef<TOpenFolder> fParent;  // until the folder is done
  int32_t fDepth = 0;
  std::atomic<int32_t> fParts{0};  // unfinished ones
  TCriticalSection fLock;
  std::unique_ptr<TFolderContribution> fPassed GUARDED_BY(fLock);  // what the parent has; nullptr: nothing yet
};

}  // namespace Vantrel::ScanEngine

#pragma once

// Which folders the workers of a scan are inside, for those who wait for it.

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "platform/threads/CriticalSection.h"

namespace Vantrel::ScanEngine {

// The folder that one job is opening or listing. It costs a job one store when it begins a folder and one exchange when
// it ends it: no lock, and no look at a clock. The times come from those who ask.
//
// A reader borrows the folder for the moment in which it takes a reference. If the job ends the folder just then, it
// waits for that moment. So the job's own reference keeps the node alive until the reader has one.
class TWorkplace {
 public:
  // Called by the job. It holds a reference to the folder until Leave.
  void Enter(IFolderData& pFolder) { fFolder.store(&pFolder, std::memory_order_release); }
  void Leave();
  // Called by a reader. nullptr between two folders.
  TRef<IFolderData> GetFolder();

 private:
  std::atomic<IFolderData*> fFolder = nullptr;
};

// A job inside a folder, from here to the end of the block.
class TInsideFolder {
 public:
  // pPlace may be nullptr.
  TInsideFolder(TWorkplace* pPlace, IFolderData& pFolder) : fPlace(pPlace) {
    if (fPlace) fPlace->Enter(pFolder);
  }
  ~TInsideFolder() {
    if (fPlace) fPlace->Leave();
  }
  TInsideFolder(const TInsideFolder&) = delete;
  TInsideFolder& operator=(const TInsideFolder&) = delete;

 private:
  TWorkplace* const fPlace;
};

// The places of all jobs of a scan, and how long each has been inside its folder.
class TWorkplaces {
 public:
  // A place for one job. nullptr without memory for it; the job does without. Any thread, as for the next two.
  TWorkplace* Take();
  void Give(TWorkplace* pPlace);
  // The folder that was seen in one place for the longest time.
  TListedFolder GetLongest(int64_t pNow);

 private:
  struct TSeen {
    std::unique_ptr<TWorkplace> fPlace;
    bool fIsTaken = false;
    // What the last reader saw. Only compared: a reference would keep the tree alive as long as the engine.
    const IFolderData* fFolder = nullptr;
    int64_t fSince = 0;  // milliseconds
  };

  TCriticalSection fLock;
  std::vector<TSeen> fPlaces GUARDED_BY(fLock);
};

}  // namespace Vantrel::ScanEngine

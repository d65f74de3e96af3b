#include "scan/engine/Workplaces.h"

#include <algorithm>
#include <new>
#include <thread>

namespace Vantrel::ScanEngine {

void TWorkplace::Leave() {
  // The address of a node is never null, so the exchange fails only while a reader has the folder.
  while (fFolder.exchange(nullptr, std::memory_order_acquire) == nullptr) std::this_thread::yield();
}

TRef<IFolderData> TWorkplace::GetFolder() {
  IFolderData* const borrowed = fFolder.exchange(nullptr, std::memory_order_acquire);
  if (borrowed == nullptr) return nullptr;
  TRef<IFolderData> folder(borrowed);
  fFolder.store(borrowed, std::memory_order_release);
  return folder;
}

TWorkplace* TWorkplaces::Take() {
  TCriticalSectionLock lock(fLock);
  auto free = std::find_if(fPlaces.begin(), fPlaces.end(), [](const TSeen& pSeen) { return !pSeen.fIsTaken; });
  if (free == fPlaces.end()) {
    try {
      fPlaces.push_back({std::make_unique<TWorkplace>()});
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    free = fPlaces.end() - 1;
  }
  free->fIsTaken = true;
  return free->fPlace.get();
}

void TWorkplaces::Give(TWorkplace* pPlace) {
  TCriticalSectionLock lock(fLock);
  for (TSeen& seen : fPlaces)
    if (seen.fPlace.get() == pPlace) seen.fIsTaken = false;
}

TListedFolder TWorkplaces::GetLongest(int64_t pNow) {
  TListedFolder longest;
  TCriticalSectionLock lock(fLock);
  for (TSeen& seen : fPlaces) {
    TRef<IFolderData> folder = seen.fIsTaken ? seen.fPlace->GetFolder() : nullptr;
    // No folder is scanned twice, so the same one has been there all the time.
    if (folder.get() != seen.fFolder) seen.fSince = pNow;
    seen.fFolder = folder.get();
    if (!folder || (longest.fFolder && pNow - seen.fSince <= longest.fElapsed)) continue;
    longest = {std::move(folder), pNow - seen.fSince};
  }
  return longest;
}

}  // namespace Vantrel::ScanEngine

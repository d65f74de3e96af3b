#include "scan/engine/OpenFolder.h"

#include <new>
#include <utility>

#include "platform/system/MemoryReserve.h"

namespace Vantrel::ScanEngine {

void TOpenFolder::Open(TRef<TOpenFolder> pParent, int32_t pParts) {
  if (pParent) {
    fDepth = pParent->fDepth + 1;
  } else {
    for (const TCustomFolderData* node = fFolder->ParentFolder(); node; node = node->ParentFolder()) ++fDepth;
  }
  fParent = std::move(pParent);
  fParts.store(pParts, std::memory_order_relaxed);
}

void TOpenFolder::SetAllPassed() {
  TCriticalSectionLock lock(fLock);
  fPassed = std::make_unique<TFolderContribution>(fFolder->Snapshot());
}

// A loop, since a chain of folders may end with its last one. The folder is released without its parent.
void TOpenFolder::EndPart(TRef<TOpenFolder> pFolder) noexcept {
  TReserveUse reserve;
  while (pFolder && pFolder->fParts.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    pFolder->PassRestUp();
    pFolder = std::exchange(pFolder->fParent, nullptr);
  }
}

// No other thread changes the folder's totals any more.
void TOpenFolder::PassRestUp() {
  TCriticalSectionLock lock(fLock);
  if (fPassed)
    fFolder->PassUp(fFolder->Contribution().Since(*fPassed), !fParent, true);
  else
    fFolder->PassUp(fFolder->Contribution(), !fParent, true);
  fPassed = nullptr;
}

void TOpenFolder::PassNewsUp() noexcept {
  for (TOpenFolder* open = this; open; open = open->fParent.get())
    if (!open->PassOwnNewsUp()) break;
  TReserveUse reserve;
  fFolder->TellChangeUpwards();
}

// Other jobs may add to the folder meanwhile. What the snapshot misses, wholly or in one of its parts, is news again
// the next time. False when memory ran out; nothing was passed then.
bool TOpenFolder::PassOwnNewsUp() {
  if (!fFolder->ParentFolder()) return true;
  TCriticalSectionLock lock(fLock);
  std::unique_ptr<TFolderContribution> now;
  TFolderContribution news;
  try {
    now = std::make_unique<TFolderContribution>(fFolder->Snapshot());
    news = fPassed ? now->Since(*fPassed) : *now;
  } catch (const std::bad_alloc&) {
    return false;
  }
  TReserveUse reserve;
  fFolder->PassUp(news, !fParent, false);
  fPassed = std::move(now);
  return true;
}

}  // namespace Vantrel::ScanEngine

#include "platform/system/MemoryReserve.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {

namespace {

// Pieces are smaller than the size that the C library maps separately. A freed piece then serves many small requests,
// even under a limit on address space. Adjacent free pieces merge for a large request.
constexpr size_t kPieceBytes = 64 * 1024;
constexpr size_t kPieces = 16;

struct TPieces {
  TCriticalSection fLock;
  std::array<void*, kPieces> fMemory GUARDED_BY(fLock) = {};
  int fHolders GUARDED_BY(fLock) = 0;
};

TPieces gPieces;
std::atomic<bool> gIsUsed{false};  // some pieces are missing
thread_local int tUses = 0;

void FillUp() {
  TCriticalSectionLock lock(gPieces.fLock);
  if (gPieces.fHolders == 0) return;
  for (void*& piece : gPieces.fMemory)
    if (!piece && !(piece = std::malloc(kPieceBytes))) return;
  gIsUsed.store(false, std::memory_order_relaxed);
}

bool GiveUpPiece() {
  TCriticalSectionLock lock(gPieces.fLock);
  for (void*& piece : gPieces.fMemory) {
    if (!piece) continue;
    std::free(std::exchange(piece, nullptr));
    gIsUsed.store(true, std::memory_order_relaxed);
    return true;
  }
  return false;
}

void OnNoMemory() {
  if (tUses == 0 || !GiveUpPiece()) throw std::bad_alloc();
}

}  // namespace

TMemoryReserve::TMemoryReserve() noexcept {
  std::set_new_handler(OnNoMemory);
  {
    TCriticalSectionLock lock(gPieces.fLock);
    ++gPieces.fHolders;
  }
  FillUp();
}

TMemoryReserve::~TMemoryReserve() {
  TCriticalSectionLock lock(gPieces.fLock);
  if (--gPieces.fHolders > 0) return;
  for (void*& piece : gPieces.fMemory) std::free(std::exchange(piece, nullptr));
}

TReserveUse::TReserveUse() noexcept {
  ++tUses;
}

TReserveUse::~TReserveUse() {
  if (--tUses == 0 && gIsUsed.load(std::memory_order_relaxed)) FillUp();
}

void MakeRoomOrThrow() {
  const std::new_handler handler = std::get_new_handler();
  if (!handler) throw std::bad_alloc();
  handler();
}

}  // namespace Vantrel

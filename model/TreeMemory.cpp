#include "model/TreeMemory.h"

#include <atomic>
#include <cstdint>
#include <new>

#include "platform/System.h"

namespace Kiv {

#if defined(__SANITIZE_ADDRESS__)

// The address sanitizer watches pieces that it knows of one by one.
void* AllocateTreeMemory(size_t pBytes) { return ::operator new(pBytes); }
void FreeTreeMemory(void* pPiece) noexcept { ::operator delete(pPiece); }
TTreeMemoryOfThread::~TTreeMemoryOfThread() = default;

#else

namespace {

constexpr size_t kBlockBytes = size_t{2} << 20;  // also the alignment, by which a piece finds its block
constexpr size_t kAlignment = 8;
// Larger pieces get a block of their own, so that little is left over at a block's end.
constexpr size_t kLargestPiece = kBlockBytes / 8;

struct TBlock {
  // Pieces cut off and not freed. While the block is being cut, it counts more than there can ever be: its thread then
  // counts what it cuts without an atomic step, and puts the number right when it is done with the block.
  static constexpr uint64_t kBeingCut = uint64_t{1} << 40;
  std::atomic<uint64_t> fPieces{kBeingCut};
};

constexpr size_t kHeaderBytes = (sizeof(TBlock) + kAlignment - 1) / kAlignment * kAlignment;

TBlock* NewBlock(size_t pBytes) {
  void* memory = ::operator new(pBytes, std::align_val_t(kBlockBytes));
  AdviseHugePages(memory, pBytes);
  return new (memory) TBlock;
}

void Drop(TBlock* pBlock, uint64_t pPieces) noexcept {
  if (pBlock->fPieces.fetch_sub(pPieces, std::memory_order_acq_rel) != pPieces) return;
  pBlock->~TBlock();
  ::operator delete(pBlock, std::align_val_t(kBlockBytes));
}

// The block that a thread is cutting.
class TCutter {
 public:
  ~TCutter() { Retire(); }

  void* Cut(size_t pBytes) {
    if (!fBlock || fUsed + pBytes > kBlockBytes) {
      TBlock* next = NewBlock(kBlockBytes);
      Retire();
      fBlock = next;
      fUsed = kHeaderBytes;
    }
    void* piece = reinterpret_cast<std::byte*>(fBlock) + fUsed;
    fUsed += pBytes;
    ++fCut;
    return piece;
  }

 private:
  void Retire() noexcept {
    if (fBlock) Drop(fBlock, TBlock::kBeingCut - fCut);
    fBlock = nullptr;
    fCut = 0;
  }

  TBlock* fBlock = nullptr;
  size_t fUsed = 0;
  uint64_t fCut = 0;
};

// A plain pointer: with mingw a thread's objects may be destroyed after the memory that they lie in is gone.
thread_local TCutter* tCutter = nullptr;

}  // namespace

void* AllocateTreeMemory(size_t pBytes) {
  const size_t bytes = (pBytes + kAlignment - 1) / kAlignment * kAlignment;
  if (bytes <= kLargestPiece) {
    if (!tCutter) tCutter = new TCutter;
    return tCutter->Cut(bytes);
  }
  TBlock* block = NewBlock(kHeaderBytes + bytes);
  block->fPieces.store(1, std::memory_order_relaxed);
  return reinterpret_cast<std::byte*>(block) + kHeaderBytes;
}

void FreeTreeMemory(void* pPiece) noexcept {
  if (pPiece) Drop(reinterpret_cast<TBlock*>(reinterpret_cast<uintptr_t>(pPiece) & ~(kBlockBytes - 1)), 1);
}

TTreeMemoryOfThread::~TTreeMemoryOfThread() {
  delete tCutter;
  tCutter = nullptr;
}

#endif

}  // namespace Kiv

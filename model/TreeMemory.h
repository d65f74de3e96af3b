#pragma once

#include <cstddef>

namespace Kiv {

// Memory for what a tree is made of: nodes, names, tables of files. A scan makes these by the million and gives them up
// together, so they are cut off one after the other from blocks of 2 MiB, each thread from a block of its own: no search,
// no lock, no header per piece, and the system hands the memory out in huge pages where it can. Asking for it page by page
// took 5 % of a scan's time.
//
// A piece may be freed by any thread. Its space is not used again; the whole block goes when its last piece is gone. A tree
// of which branches are scanned again and again may therefore hold up to about twice what it needs, until all that a block
// once held has been replaced.

// At least so many bytes, aligned to 8. Throws std::bad_alloc.
void* AllocateTreeMemory(size_t pBytes);
// nullptr is allowed.
void FreeTreeMemory(void* pPiece) noexcept;

// Stands on the stack of a thread that comes and goes, below all that makes nodes: lets go of the block that the thread was
// cutting, which could otherwise never be given back.
class TTreeMemoryOfThread {
 public:
  TTreeMemoryOfThread() = default;
  ~TTreeMemoryOfThread();
  TTreeMemoryOfThread(const TTreeMemoryOfThread&) = delete;
  TTreeMemoryOfThread& operator=(const TTreeMemoryOfThread&) = delete;
};

// Gives a class the tree's memory: struct TNode : TInTreeMemory.
struct TInTreeMemory {
  static void* operator new(size_t pBytes) { return AllocateTreeMemory(pBytes); }
  static void* operator new(size_t, void* pPlace) noexcept { return pPlace; }
  static void operator delete(void* pPiece) noexcept { FreeTreeMemory(pPiece); }
};

}  // namespace Kiv

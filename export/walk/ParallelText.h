#pragma once

// Pieces of text made on several threads, handed on in their order; `HierarchicalExport` walks with it.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel::Exporting {

// A piece of an export's output.
struct TRowText {
  std::string fBytes;
  std::vector<size_t> fEnds;  // of the rows in it, where the export is one of lines

  void Clear() {
    fBytes.clear();
    fEnds.clear();
  }
};

// Makes pieces of text on several threads and hands them on in the order in which they were asked for, on the thread
// that asks. That thread makes pieces too while it would have to wait; no other thread is started for a single piece.
// Holds a few pieces per thread at most.
//
// What the making of a piece throws comes out where the piece would be handed on. For one asking thread.
class TParallelText {
 public:
  using TMake = std::function<void(TRowText&)>;        // fills a piece, which is empty; on any thread
  using TTake = std::function<bool(const TRowText&)>;  // false ends it all: no further piece is made or handed on

  // At most as many threads work as told, the asking one included.
  TParallelText(int pThreads, TTake pTake);
  // What has not been handed on is dropped.
  ~TParallelText();
  TParallelText(const TParallelText&) = delete;
  TParallelText& operator=(const TParallelText&) = delete;

  // The next piece, to be made. All three return false once pTake has done so.
  bool Add(TMake pMake);
  // The next piece, which is there; comes back empty.
  bool Add(TRowText& pText);
  // Returns when all pieces have been handed on.
  bool Finish();

 private:
  struct TPiece {
    TMake fMake;
    TRowText fText;
    std::exception_ptr fError;
    bool fDone = false;  // guarded by fLock until it is set
  };

  std::unique_ptr<TPiece> NewPiece();
  bool HandOn(size_t pMostLeft);
  bool IsDone(const TPiece& pPiece);
  TPiece* NextWaiting();
  void MakePiece(TPiece& pPiece);
  void StartThread();
  void Execute();

  const size_t fMostThreads;
  const TTake fTake;
  // Of the asking thread alone.
  std::deque<std::unique_ptr<TPiece>> fPieces;  // in their order
  std::vector<std::unique_ptr<TPiece>> fSpare;  // their memory serves again
  bool fStopped = false;

  TCriticalSection fLock;
  std::condition_variable fPieceWaits;
  std::condition_variable fPieceDone;
  std::deque<TPiece*> fWaiting GUARDED_BY(fLock);
  bool fEnd GUARDED_BY(fLock) = false;
  std::vector<std::thread> fThreads;  // last: they use what is above
};

}  // namespace Vantrel::Exporting

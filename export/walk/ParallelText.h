#pragma once

// Makes pieces of text on several threads and hands them on in order. `HierarchicalExport` uses it for its walk.

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

// One piece of an export's output.
struct TRowText {
  std::string fBytes;
  std::vector<size_t> fEnds;  // the ends of the rows in it, if the export is made of lines

  void Clear() {
    fBytes.clear();
    fEnds.clear();
  }
};

// Makes pieces of text on several threads. It hands them on in the order of the requests, on the requesting thread.
// When that thread would have to wait, it makes pieces too. No thread is started for a single piece. At most a few
// pieces per thread are kept.
//
// An exception from making a piece is thrown when the piece would be handed on. One requesting thread.
class TParallelText {
 public:
  using TMake = std::function<void(TRowText&)>;        // fills an empty piece, on any thread
  using TTake = std::function<bool(const TRowText&)>;  // if it returns false, no further piece is made or handed on

  // At most pThreads threads work, the requesting one included.
  TParallelText(int pThreads, TTake pTake);
  // Drops the pieces that have not been handed on.
  ~TParallelText();
  TParallelText(const TParallelText&) = delete;
  TParallelText& operator=(const TParallelText&) = delete;

  // Adds the next piece, which pMake will fill. This call and the next two return false once pTake has done so.
  bool Add(TMake pMake);
  // Adds the next piece, already made. pText comes back empty.
  bool Add(TRowText& pText);
  // Returns after all pieces have been handed on.
  bool Finish();

 private:
  struct TPiece {
    TMake fMake;
    TRowText fText;
    std::exception_ptr fError;
    bool fDone = false;  // guarded by fLock until set
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
  // Used only by the requesting thread.
  std::deque<std::unique_ptr<TPiece>> fPieces;  // in order
  std::vector<std::unique_ptr<TPiece>> fSpare;  // kept to reuse their memory
  bool fStopped = false;

  TCriticalSection fLock;
  std::condition_variable fPieceWaits;
  std::condition_variable fPieceDone;
  std::deque<TPiece*> fWaiting GUARDED_BY(fLock);
  bool fEnd GUARDED_BY(fLock) = false;
  std::vector<std::thread> fThreads;  // the last member, because the threads use those above
};

}  // namespace Vantrel::Exporting

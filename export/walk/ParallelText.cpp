#include "export/walk/ParallelText.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace Vantrel::Exporting {

namespace {

constexpr size_t kPiecesPerThread = 4;  // keeps threads busy while one piece takes longer than the others

}  // namespace

TParallelText::TParallelText(int pThreads, TTake pTake)
    : fMostThreads(static_cast<size_t>(std::max(1, pThreads))), fTake(std::move(pTake)) {}

TParallelText::~TParallelText() {
  {
    TCriticalSectionLock lock(fLock);
    fWaiting.clear();
    fEnd = true;
  }
  fPieceWaits.notify_all();
  for (std::thread& thread : fThreads) thread.join();
}

bool TParallelText::Add(TMake pMake) {
  if (fStopped) return false;
  std::unique_ptr<TPiece> piece = NewPiece();
  piece->fMake = std::move(pMake);
  size_t waiting = 0;
  {
    TCriticalSectionLock lock(fLock);
    fWaiting.push_back(piece.get());
    waiting = fWaiting.size();
  }
  fPieces.push_back(std::move(piece));
  if (waiting > 1 && fThreads.size() + 1 < fMostThreads) StartThread();
  fPieceWaits.notify_one();
  return HandOn(fMostThreads * kPiecesPerThread);
}

bool TParallelText::Add(TRowText& pText) {
  if (fStopped) return false;
  std::unique_ptr<TPiece> piece = NewPiece();
  std::swap(piece->fText, pText);
  piece->fDone = true;
  fPieces.push_back(std::move(piece));
  return HandOn(fMostThreads * kPiecesPerThread);
}

std::unique_ptr<TParallelText::TPiece> TParallelText::NewPiece() {
  if (fSpare.empty()) return std::make_unique<TPiece>();
  std::unique_ptr<TPiece> piece = std::move(fSpare.back());
  fSpare.pop_back();
  return piece;
}

bool TParallelText::Finish() {
  return HandOn(0);
}

// Hands on the finished pieces at the front, and waits until at most pMostLeft pieces are left.
bool TParallelText::HandOn(size_t pMostLeft) {
  while (!fStopped && !fPieces.empty()) {
    TPiece& first = *fPieces.front();
    if (!IsDone(first)) {
      if (fPieces.size() <= pMostLeft) return true;
      if (TPiece* piece = NextWaiting()) {
        MakePiece(*piece);
        continue;
      }
      TCriticalSectionLock lock(fLock);
      while (!first.fDone) lock.Wait(fPieceDone);
    }
    if (first.fError) std::rethrow_exception(first.fError);
    fStopped = !fTake(first.fText);
    first.fText.Clear();
    first.fDone = false;
    fSpare.push_back(std::move(fPieces.front()));
    fPieces.pop_front();
  }
  return !fStopped;
}

bool TParallelText::IsDone(const TPiece& pPiece) {
  TCriticalSectionLock lock(fLock);
  return pPiece.fDone;
}

TParallelText::TPiece* TParallelText::NextWaiting() {
  TCriticalSectionLock lock(fLock);
  if (fWaiting.empty()) return nullptr;
  TPiece* piece = fWaiting.front();
  fWaiting.pop_front();
  return piece;
}

void TParallelText::MakePiece(TPiece& pPiece) {
  try {
    pPiece.fMake(pPiece.fText);
  } catch (...) {
    pPiece.fError = std::current_exception();
  }
  pPiece.fMake = nullptr;  // objects that it refers to may be gone before this piece is handed on
  {
    TCriticalSectionLock lock(fLock);
    pPiece.fDone = true;
  }
  fPieceDone.notify_one();
}

// Starts a thread if the system allows it. If not, the running threads do all the work.
void TParallelText::StartThread() {
  try {
    fThreads.emplace_back([this] { Execute(); });
  } catch (const std::system_error&) {
  }
}

void TParallelText::Execute() {
  for (;;) {
    TPiece* piece = nullptr;
    {
      TCriticalSectionLock lock(fLock);
      while (fWaiting.empty() && !fEnd) lock.Wait(fPieceWaits);
      if (fWaiting.empty()) return;
      piece = fWaiting.front();
      fWaiting.pop_front();
    }
    MakePiece(*piece);
  }
}

}  // namespace Vantrel::Exporting

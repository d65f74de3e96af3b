#pragma once

// The state of one treemap on display: its settings, its latest picture, and the computation of the next one.

#include <functional>
#include <memory>

#include "platform/threads/CriticalSection.h"
#include "presentation/treemap/TreemapWorker.h"

namespace Vantrel::Treemap {

// A treemap that follows its size, settings and data. A change starts a computation on a pool of threads; until it is
// done, the previous picture stays. Only the newest request's picture is ever shown.
//
// One thread uses the chart. The callback for a new picture is called on that thread if the pool's synchronizer is set,
// else on a worker.
class TCustomTreemapChart {
 public:
  TCustomTreemapChart(ThreadPool::TWorkerThreadPool& pPool, std::function<void()> pOnPicture);
  // Cancels the running computation. A callback that has begun on a worker may still be running afterwards.
  ~TCustomTreemapChart();
  TCustomTreemapChart(const TCustomTreemapChart&) = delete;
  TCustomTreemapChart& operator=(const TCustomTreemapChart&) = delete;

  // Each of these invalidates the picture and requests a new one, unless nothing changed.
  void SetBounds(int32_t pWidth, int32_t pHeight);
  void SetSettings(TTreemapSettings pSettings);  // the size stays
  // What is shown, and in which colours. nullptr shows nothing.
  void SetPresenter(TRef<const ITreemapPresenter> pPresenter);
  // The data have changed.
  void Invalidate();

  // With tmfIsPainting and tmfCacheInvalid as they are at the moment.
  TTreemapFlags GetFlags() const;
  // The latest picture; nullptr before the first.
  std::shared_ptr<const TTreemapPicture> GetPicture() const;
  // The innermost element of the latest picture at a position, and its depth; None and -1 where there is none.
  TTreemapElementID GetIDByPosition(int32_t pX, int32_t pY) const;
  int32_t GetLayerByPosition(int32_t pX, int32_t pY) const;

 private:
  // Shared with the running work, which may outlive the chart.
  struct TState {
    mutable TCriticalSection fLock;
    std::function<void()> fOnPicture GUARDED_BY(fLock);
    TRef<ICancellationToken> fToken GUARDED_BY(fLock);  // of the newest request
    std::shared_ptr<const TTreemapPicture> fPicture GUARDED_BY(fLock);
    bool fIsPainting GUARDED_BY(fLock) = false;
    bool fIsInvalid GUARDED_BY(fLock) = false;
  };

  TRef<ICancellationToken> RequestNewToken();
  static void TakePicture(TState& pState, TTreemapWorkItem& pWork);

  ThreadPool::TWorkerThreadPool& fPool;
  const std::shared_ptr<TState> fState = std::make_shared<TState>();
  TTreemapSettings fSettings;
  TRef<const ITreemapPresenter> fPresenter;
};

}  // namespace Vantrel::Treemap

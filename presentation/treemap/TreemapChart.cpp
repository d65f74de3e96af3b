#include "presentation/treemap/TreemapChart.h"

#include "model/tree/Tokens.h"

namespace Vantrel::Treemap {

TCustomTreemapChart::TCustomTreemapChart(ThreadPool::TWorkerThreadPool& pPool, std::function<void()> pOnPicture)
    : fPool(pPool) {
  TCriticalSectionLock lock(fState->fLock);
  fState->fOnPicture = std::move(pOnPicture);
  fSettings.fWidth = 0;
  fSettings.fHeight = 0;
}

TCustomTreemapChart::~TCustomTreemapChart() {
  TCriticalSectionLock lock(fState->fLock);
  fState->fOnPicture = nullptr;
  if (fState->fToken) fState->fToken->Cancel();
  fState->fToken = nullptr;
}

void TCustomTreemapChart::SetBounds(int32_t pWidth, int32_t pHeight) {
  if (pWidth == fSettings.fWidth && pHeight == fSettings.fHeight) return;
  fSettings.fWidth = pWidth;
  fSettings.fHeight = pHeight;
  Invalidate();
}

void TCustomTreemapChart::SetSettings(TTreemapSettings pSettings) {
  pSettings.fWidth = fSettings.fWidth;
  pSettings.fHeight = fSettings.fHeight;
  pSettings.fPhong.OnChange = nullptr;  // a worker gets a copy
  fSettings = std::move(pSettings);
  Invalidate();
}

void TCustomTreemapChart::SetPresenter(TRef<const ITreemapPresenter> pPresenter) {
  fPresenter = std::move(pPresenter);
  Invalidate();
}

// Without tmfTerminateOutdatedWorker an outdated computation runs to its end, and its picture is dropped.
TRef<ICancellationToken> TCustomTreemapChart::RequestNewToken() {
  TRef<ICancellationToken> token = MakeRef<TCancellationToken>();
  TCriticalSectionLock lock(fState->fLock);
  if (fState->fToken && fSettings.fFlags.Has(TTreemapFlag::tmfTerminateOutdatedWorker)) fState->fToken->Cancel();
  fState->fToken = token;
  fState->fIsPainting = true;
  fState->fIsInvalid = true;
  return token;
}

void TCustomTreemapChart::Invalidate() {
  const TRef<ICancellationToken> token = RequestNewToken();
  if (!fPresenter) {
    TCriticalSectionLock lock(fState->fLock);
    fState->fIsPainting = false;
    fState->fPicture = nullptr;
    return;
  }
  auto work = MakeRef<TTreemapWorkItem>(fPresenter, fSettings, token);
  work->SetOnWorkDone(
      [state = fState](ThreadPool::TBasicWorkItem& pWork) {
        TakePicture(*state, static_cast<TTreemapWorkItem&>(pWork));
      },
      true);
  if (fSettings.fFlags.Has(TTreemapFlag::tmfPaintConcurrent))
    fPool.AddWorkItem(std::move(work));
  else
    work->Run();
}

void TCustomTreemapChart::TakePicture(TState& pState, TTreemapWorkItem& pWork) {
  std::function<void()> onPicture;
  {
    TCriticalSectionLock lock(pState.fLock);
    if (pState.fToken != pWork.GetToken()) return;
    pState.fIsPainting = false;
    if (!pWork.GetPicture()) return;  // it failed, such as for lack of memory; the previous picture stays
    pState.fPicture = pWork.GetPicture();
    pState.fIsInvalid = false;
    onPicture = pState.fOnPicture;
  }
  if (onPicture) onPicture();
}

TTreemapFlags TCustomTreemapChart::GetFlags() const {
  TTreemapFlags flags = fSettings.fFlags;
  TCriticalSectionLock lock(fState->fLock);
  flags.Set(TTreemapFlag::tmfIsPainting, fState->fIsPainting);
  flags.Set(TTreemapFlag::tmfCacheInvalid, fState->fIsInvalid);
  return flags;
}

std::shared_ptr<const TTreemapPicture> TCustomTreemapChart::GetPicture() const {
  TCriticalSectionLock lock(fState->fLock);
  return fState->fPicture;
}

TTreemapElementID TCustomTreemapChart::GetIDByPosition(int32_t pX, int32_t pY) const {
  const std::shared_ptr<const TTreemapPicture> picture = GetPicture();
  return picture ? picture->GetIDByPosition(pX, pY) : TTreemapElementID::None;
}

int32_t TCustomTreemapChart::GetLayerByPosition(int32_t pX, int32_t pY) const {
  const std::shared_ptr<const TTreemapPicture> picture = GetPicture();
  return picture ? picture->GetLayerByPosition(pX, pY) : -1;
}

}  // namespace Vantrel::Treemap

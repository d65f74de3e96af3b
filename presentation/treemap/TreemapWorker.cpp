#include "presentation/treemap/TreemapWorker.h"

#include <algorithm>

#include "platform/system/System.h"
#include "presentation/treemap/ParallelWork.h"
#include "presentation/treemap/TreemapBuilder.h"
#include "presentation/treemap/TreemapCaptions.h"
#include "presentation/treemap/TreemapPainter.h"

namespace Vantrel::Treemap {

std::shared_ptr<const TTreemapPicture> ComputeTreemap(const ITreemapPresenter& pPresenter,
                                                      const TTreemapSettings& pSettings,
                                                      const ICancellationIndicator* pToken) {
  auto picture = std::make_shared<TTreemapPicture>();
  if (pSettings.fFlags.Has(TTreemapFlag::tmfLegend)) picture->fLegend = pPresenter.GetLegend();
  if (pSettings.fWidth <= 0 || pSettings.fHeight <= 0) return picture;
  picture->fWidth = pSettings.fWidth;
  picture->fHeight = pSettings.fHeight;
  const int threads = pSettings.fThreads > 0 ? pSettings.fThreads : ProcessorCount();
  TTreemapBuilder(pPresenter, pSettings, threads, pToken).Build(*picture);
  if (IsCancelled(pToken)) return nullptr;
  PaintTiles(*picture, pSettings, threads, pToken);
  if (IsCancelled(pToken)) return nullptr;
  AddCaptions(*picture, pSettings, pPresenter.GetValueColumn());
  return picture;
}

TTreemapWorkItem::TTreemapWorkItem(TRef<const ITreemapPresenter> pPresenter, TTreemapSettings pSettings,
                                   TRef<ICancellationIndicator> pToken)
    : TBasicWorkItem(std::move(pToken)), fPresenter(std::move(pPresenter)), fSettings(std::move(pSettings)) {}

void TTreemapWorkItem::Execute() {
  if (!IsCancelled()) fPicture = ComputeTreemap(*fPresenter, fSettings, fCancellationToken.get());
}

std::u16string TTreemapWorkItem::CalculateHint(const TTreemapPicture& pPicture, uint32_t pTile,
                                               const TValueFormat& pFormat) {
  std::u16string hint = pPicture.CreateElement(pTile)->GetHint(pFormat);
  const TTreemapTile& tile = pPicture.fTiles[pTile];
  if (tile.fKind != TTreemapTileKind::tkRest) return hint;
  return hint + u"\nHere: " + FormatValue(TColumn::mdItems, static_cast<int64_t>(tile.fItem), pFormat) +
         (tile.fItem == 1 ? u" small item" : u" small items");
}

}  // namespace Vantrel::Treemap

#pragma once

// Computes treemaps: at once, or as a work item of a pool; tooltips.

#include <cstdint>
#include <memory>
#include <string>

#include "presentation/treemap/TreemapPicture.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "presentation/treemap/TreemapTypes.h"
#include "scan/engine/ThreadPool.h"

namespace Vantrel::Treemap {

// Computes a treemap. At most pSettings.fThreads threads work, the calling one included. Returns nullptr when the token
// was cancelled meanwhile; without a token that cannot happen.
std::shared_ptr<const TTreemapPicture> ComputeTreemap(const ITreemapPresenter& pPresenter,
                                                      const TTreemapSettings& pSettings,
                                                      const ICancellationIndicator* pToken = nullptr);

// Computes a treemap on a worker of a pool. It ends early when its token is cancelled.
class TTreemapWorkItem : public ThreadPool::TBasicWorkItem {
 public:
  TTreemapWorkItem(TRef<const ITreemapPresenter> pPresenter, TTreemapSettings pSettings,
                   TRef<ICancellationIndicator> pToken);

  // The picture, for the callback of SetOnWorkDone. nullptr when the work ended early or failed.
  const std::shared_ptr<const TTreemapPicture>& GetPicture() const { return fPicture; }
  const TRef<ICancellationIndicator>& GetToken() const { return fCancellationToken; }

  // The tooltip of a tile: lines about its element. For the rest of a folder, also how many children that is.
  static std::u16string CalculateHint(const TTreemapPicture& pPicture, uint32_t pTile, const TValueFormat& pFormat);

 protected:
  void Execute() override;

 private:
  const TRef<const ITreemapPresenter> fPresenter;
  const TTreemapSettings fSettings;
  std::shared_ptr<const TTreemapPicture> fPicture;
};

}  // namespace Vantrel::Treemap

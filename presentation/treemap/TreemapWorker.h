#pragma once

// Computes treemaps: at once, or as a work item of a pool.

#include <memory>
#include <string>

#include "presentation/treemap/TreemapPicture.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "presentation/treemap/TreemapTypes.h"
#include "scan/engine/ThreadPool.h"

namespace Vantrel::Treemap {

// Computes a treemap. At most pSettings.fThreads threads work, the calling one included. nullptr when the token was
// cancelled meanwhile; nullptr as token means that it never is.
std::shared_ptr<const TTreemapPicture> ComputeTreemap(const ITreemapPresenter& pPresenter,
                                                      const TTreemapSettings& pSettings,
                                                      const ICancellationIndicator* pToken);

// Computes a treemap on a worker of a pool. Set the callback with SetOnWorkDone.
class TTreemapWorkItem : public ThreadPool::TBasicWorkItem {
 public:
  TTreemapWorkItem(TRef<const ITreemapPresenter> pPresenter, TTreemapSettings pSettings,
                   TRef<ICancellationIndicator> pToken);

  // The picture, once the work is done. nullptr when the token was outdated before.
  std::shared_ptr<const TTreemapPicture> GetPicture() const { return fPicture; }

  // The tooltip of a tile: its element's lines. For the rest of a folder also how many children are in it. Empty when
  // the element is gone.
  static std::u16string CalculateHint(const TTreemapPicture& pPicture, uint32_t pTile, const TValueFormat& pFormat);

 protected:
  void Execute() override;

 private:
  const TRef<const ITreemapPresenter> fPresenter;
  const TTreemapSettings fSettings;
  std::shared_ptr<const TTreemapPicture> fPicture;
};

}  // namespace Vantrel::Treemap

#pragma once

// Builds the tiles of a treemap, level by level.

#include <cstdint>
#include <memory>
#include <vector>

#include "presentation/treemap/SquarifiedLayout.h"
#include "presentation/treemap/TreemapPicture.h"

namespace Vantrel::Treemap {

// Builds the tiles of one picture.
//
// The elements of one level are opened and laid out in parallel, in groups whose results are joined in their order. So
// the picture does not depend on the number of threads. Only elements that are large enough to show something inside
// are opened. So the time grows with what is drawn.
//
// Of an opened element, all children are read for the sum of their values. Only those that are large enough for a tile
// are put in order. All others together are the last entry of the layout, the rest.
class TTreemapBuilder {
 public:
  TTreemapBuilder(const ITreemapPresenter& pPresenter, const TTreemapSettings& pSettings, int pThreads,
                  const ICancellationIndicator* pToken);

  // Sets the picture's tiles, branches and rows. They are incomplete when the token was cancelled meanwhile.
  void Build(TTreemapPicture& pPicture);

  // What the children of an element share: its rectangle without frame and heading. pLayer is the element's.
  static TTreemapRect InnerOf(const TTreemapRect& pRect, int32_t pLayer, const TTreemapSettings& pSettings);
  // The height of a heading in pixels.
  static int32_t HeadingHeight(const TTreemapSettings& pSettings);
  // Whether an element of this rectangle has a heading when it is opened.
  static bool HasHeading(const TTreemapRect& pRect, int32_t pLayer, const TTreemapSettings& pSettings);

 private:
  // One thread's memory, kept from one element to the next.
  struct TWorker {
    explicit TWorker(const TTreemapColoring& pColoring) : fColors(pColoring) {}
    TColorLookup fColors;
    std::vector<TTreemapChild> fChildren;
    std::vector<TElementEntry> fEntries;
    std::vector<TLayoutRow> fLayoutRows;
  };
  // What a group of opened elements adds to the picture. Indices of tiles and rows count from the group's first.
  struct TGroup {
    std::vector<TTreemapTile> fTiles;
    std::vector<TTreemapRow> fRows;
    std::vector<TTreemapBranch> fBranches;
  };

  void AddTop(TTreemapPicture& pPicture);
  bool IsToBeOpened(const TTreemapTile& pTile, size_t pChildren) const;
  void Open(const TTreemapPicture& pPicture, uint32_t pTile, TWorker& pWorker, TGroup& pGroup) const;
  uint32_t FillEntries(const ITreemapContainer& pContainer, const TTreemapRect& pInner, TWorker& pWorker) const;
  void AddTiles(const TTreemapTile& pParent, TTreemapBranch& pBranch, uint32_t pRestCount, const TWorker& pWorker,
                TGroup& pGroup) const;
  void Join(std::vector<TGroup>& pGroups, TTreemapPicture& pPicture) const;
  void SetLooks(TTreemapPicture& pPicture, size_t pFirst);

  const ITreemapPresenter& fPresenter;
  const TTreemapSettings& fSettings;
  const int fThreads;
  const ICancellationIndicator* const fToken;
  const double fSmallest;                          // pixels of a tile
  std::vector<std::unique_ptr<TWorker>> fWorkers;  // by thread
  std::vector<uint32_t> fOpen;                     // tiles of the last level that are to be opened
};

}  // namespace Vantrel::Treemap

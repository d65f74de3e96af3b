#include "presentation/treemap/TreemapBuilder.h"

#include <algorithm>
#include <limits>
#include <span>

#include "presentation/treemap/ParallelWork.h"

namespace Vantrel::Treemap {

namespace {

constexpr uint32_t kRestItem = 0xFFFFFFFF;  // of the entry that stands for all small children

// Saturates, as the sum of a rest may be beyond 64 bits.
int64_t ToValue(double pValue) {
  constexpr double kMost = 9.2e18;
  return pValue >= kMost ? std::numeric_limits<int64_t>::max() : static_cast<int64_t>(pValue);
}

// Largest first, then by name. Names are compared in a second step, among equal values only. A name is far from its
// neighbours in memory, so looking at it during the whole sort would take most of the time.
void SortChildren(const ITreemapContainer& pContainer, std::span<TTreemapChild> pChildren) {
  std::sort(pChildren.begin(), pChildren.end(),
            [](const TTreemapChild& pA, const TTreemapChild& pB) { return pA.fValue > pB.fValue; });
  for (auto begin = pChildren.begin(); begin != pChildren.end();) {
    const auto end = std::find_if(begin, pChildren.end(),
                                  [begin](const TTreemapChild& pChild) { return pChild.fValue != begin->fValue; });
    if (end - begin > 1)
      std::sort(begin, end, [&](const TTreemapChild& pA, const TTreemapChild& pB) {
        return pContainer.ComesBefore(pA.fItem, pB.fItem);
      });
    begin = end;
  }
}

}  // namespace

TTreemapBuilder::TTreemapBuilder(const ITreemapPresenter& pPresenter, const TTreemapSettings& pSettings, int pThreads,
                                 const ICancellationIndicator* pToken)
    : fPresenter(pPresenter),
      fSettings(pSettings),
      fThreads(pThreads),
      fToken(pToken),
      fSmallest(std::max(pSettings.fSmallestTile, 1)) {
  for (int i = 0; i < fThreads; ++i) fWorkers.push_back(std::make_unique<TWorker>(fPresenter.GetColoring()));
}

int32_t TTreemapBuilder::HeadingHeight(const TTreemapSettings& pSettings) {
  return TextSizeOf(pSettings) * 3 / 2;
}

bool TTreemapBuilder::HasHeading(const TTreemapRect& pRect, int32_t pLayer, const TTreemapSettings& pSettings) {
  const TTreemapFlag flag = pLayer == 0 ? TTreemapFlag::tmfShowRoot : TTreemapFlag::tmfShowNonLeafCaptions;
  return pSettings.fFlags.Has(flag) && pRect.Width() >= 5 * TextSizeOf(pSettings) &&
         pRect.Height() >= 4 * HeadingHeight(pSettings);
}

TTreemapRect TTreemapBuilder::InnerOf(const TTreemapRect& pRect, int32_t pLayer, const TTreemapSettings& pSettings) {
  // Frames are as thick as the strokes of letters. Small folders have none, since it would take too much of them.
  const int32_t textSize = TextSizeOf(pSettings);
  const TTreemapFlag flag = pLayer == 0 ? TTreemapFlag::tmfShowRoot : TTreemapFlag::tmfParents;
  const bool hasFrame = pSettings.fFlags.Has(flag) && std::min(pRect.Width(), pRect.Height()) >= 3 * textSize;
  const int32_t frame = hasFrame ? std::max(textSize / 12, 1) : 0;
  TTreemapRect inner{pRect.fLeft + frame, pRect.fTop + frame, pRect.fRight - frame, pRect.fBottom - frame};
  if (HasHeading(pRect, pLayer, pSettings)) inner.fTop = pRect.fTop + HeadingHeight(pSettings);
  return inner;
}

void TTreemapBuilder::Build(TTreemapPicture& pPicture) {
  AddTop(pPicture);
  while (!fOpen.empty() && !IsCancelled(fToken)) {
    constexpr size_t kGroup = 16;
    std::vector<TGroup> groups((fOpen.size() + kGroup - 1) / kGroup);
    ForEachStep(fThreads, groups.size(), fToken, [&](size_t pStep, size_t pThread) {
      const size_t end = std::min(fOpen.size(), (pStep + 1) * kGroup);
      for (size_t i = pStep * kGroup; i < end && !IsCancelled(fToken); ++i)
        Open(pPicture, fOpen[i], *fWorkers[pThread], groups[pStep]);
    });
    const size_t first = pPicture.fTiles.size();
    Join(groups, pPicture);
    SetLooks(pPicture, first);
  }
}

void TTreemapBuilder::AddTop(TTreemapPicture& pPicture) {
  pPicture.fTop = fPresenter.GetTop(fSettings);
  std::vector<TTreemapChild>& children = fWorkers[0]->fChildren;
  pPicture.fTop->AppendChildren(children);
  TTreemapTile top;
  top.fRect = {0, 0, fSettings.fWidth, fSettings.fHeight};
  top.fValue = children.at(0).fValue;
  top.fItem = children[0].fItem;
  const TTreemapLook look = pPicture.fTop->GetLook(top.fItem, 0, fWorkers[0]->fColors);
  top.fID = look.fID;
  top.fColor = top.fValue > 0 ? look.fColor : ColorOfFrame(0, fSettings.fDark);
  pPicture.fTiles.push_back(top);
  if (IsToBeOpened(top, look.fChildren)) fOpen.push_back(0);
}

// Two tiles must fit, or opening it would show nothing new. Of a small element with very many children, hardly one is
// large enough. Reading them all to find it would take a time that grows with the tree.
bool TTreemapBuilder::IsToBeOpened(const TTreemapTile& pTile, size_t pChildren) const {
  constexpr double kLargeElement = 64;        // smallest tiles
  constexpr double kMostChildrenOfTile = 32;  // in a small element
  if (pChildren == 0 || pTile.fLayer >= fSettings.fMostLayers) return false;
  const TTreemapRect inner = InnerOf(pTile.fRect, pTile.fLayer, fSettings);
  if (inner.IsEmpty()) return false;
  const double tiles = static_cast<double>(inner.Area()) / fSmallest;
  return tiles >= 2 && (tiles >= kLargeElement || static_cast<double>(pChildren) <= kMostChildrenOfTile * tiles);
}

void TTreemapBuilder::Open(const TTreemapPicture& pPicture, uint32_t pTile, TWorker& pWorker, TGroup& pGroup) const {
  const TTreemapTile& tile = pPicture.fTiles[pTile];
  const ITreemapContainer& parent =
      tile.fParent == kNoTile ? *pPicture.fTop : *pPicture.fBranches[pPicture.fTiles[tile.fParent].fBranch].fContainer;
  TTreemapBranch branch;
  branch.fContainer = parent.Open(tile.fItem);
  if (!branch.fContainer) return;
  branch.fTile = pTile;
  branch.fInner = InnerOf(tile.fRect, tile.fLayer, fSettings);
  const uint32_t rest = FillEntries(*branch.fContainer, branch.fInner, pWorker);
  if (pWorker.fEntries.empty()) return;
  if (tile.fParent != kNoTile) {
    branch.fCushion = pPicture.fBranches[pPicture.fTiles[tile.fParent].fBranch].fCushion;
    AddRidge(branch.fCushion, tile.fRect, RidgeHeight(fSettings, tile.fLayer));
  }
  pWorker.fLayoutRows.clear();
  LayOut(branch.fInner, fSettings.fFlags.Has(TTreemapFlag::tmfKeepOrientation), pWorker.fEntries, pWorker.fLayoutRows);
  AddTiles(tile, branch, rest, pWorker, pGroup);
  if (branch.fTileCount > 0) pGroup.fBranches.push_back(std::move(branch));
}

// Makes the entries of the layout: the children that are large enough for a tile, largest first, then the rest. Returns
// how many children the rest stands for. Leaves no entry when no child is large enough.
uint32_t TTreemapBuilder::FillEntries(const ITreemapContainer& pContainer, const TTreemapRect& pInner,
                                      TWorker& pWorker) const {
  std::vector<TTreemapChild>& children = pWorker.fChildren;
  children.clear();
  pWorker.fEntries.clear();
  pContainer.AppendChildren(children);
  double sum = 0;  // of many sizes near 2^63
  for (const TTreemapChild& child : children) sum += static_cast<double>(std::max<int64_t>(child.fValue, 0));
  if (!(sum > 0)) return 0;
  const double smallest = fSmallest * sum / static_cast<double>(pInner.Area());
  const auto end = std::partition(children.begin(), children.end(), [smallest](const TTreemapChild& pChild) {
    return pChild.fValue > 0 && static_cast<double>(pChild.fValue) >= smallest;
  });
  if (end == children.begin()) return 0;
  SortChildren(pContainer, {children.begin(), end});
  pWorker.fEntries.reserve(static_cast<size_t>(end - children.begin()) + 1);
  const auto addEntry = [&](double pValue, uint32_t pItem) {
    TElementEntry& entry = pWorker.fEntries.emplace_back();
    entry.fValue = pValue;
    entry.fItem = pItem;
  };
  for (auto child = children.begin(); child != end; ++child) addEntry(static_cast<double>(child->fValue), child->fItem);
  double rest = 0;
  uint32_t count = 0;
  for (auto child = end; child != children.end(); ++child) {
    if (child->fValue <= 0) continue;
    rest += static_cast<double>(child->fValue);
    ++count;
  }
  if (count > 0) addEntry(rest, kRestItem);
  return count;
}

void TTreemapBuilder::AddTiles(const TTreemapTile& pParent, TTreemapBranch& pBranch, uint32_t pRestCount,
                               const TWorker& pWorker, TGroup& pGroup) const {
  pBranch.fFirstTile = static_cast<uint32_t>(pGroup.fTiles.size());
  pBranch.fFirstRow = static_cast<uint32_t>(pGroup.fRows.size());
  for (const TLayoutRow& row : pWorker.fLayoutRows) {
    const auto first = static_cast<uint32_t>(pGroup.fTiles.size());
    for (size_t i = row.fFirst; i < row.fFirst + row.fCount; ++i) {
      const TElementEntry& entry = pWorker.fEntries[i];
      if (entry.fRect.IsEmpty()) continue;
      TTreemapTile& tile = pGroup.fTiles.emplace_back();
      tile.fValue = ToValue(entry.fValue);
      tile.fRect = entry.fRect;
      tile.fParent = pBranch.fTile;
      tile.fLayer = pParent.fLayer + 1;
      tile.fItem = entry.fItem;
      if (entry.fItem != kRestItem) continue;
      tile.fItem = pRestCount;
      tile.fKind = TTreemapTileKind::tkRest;
      tile.fID = pParent.fID;
      tile.fColor = pParent.fColor;
    }
    const auto count = static_cast<uint32_t>(pGroup.fTiles.size()) - first;
    if (count > 0) pGroup.fRows.push_back({first, count, row.fLeft, row.fTop, row.fIsColumn});
  }
  pBranch.fTileCount = static_cast<uint32_t>(pGroup.fTiles.size()) - pBranch.fFirstTile;
  pBranch.fRowCount = static_cast<uint32_t>(pGroup.fRows.size()) - pBranch.fFirstRow;
}

// Adds the results of a level to the picture.
void TTreemapBuilder::Join(std::vector<TGroup>& pGroups, TTreemapPicture& pPicture) const {
  size_t tiles = pPicture.fTiles.size();
  for (const TGroup& group : pGroups) tiles += group.fTiles.size();
  pPicture.fTiles.reserve(tiles);
  for (TGroup& group : pGroups) {
    const auto firstTile = static_cast<uint32_t>(pPicture.fTiles.size());
    const auto firstRow = static_cast<uint32_t>(pPicture.fRows.size());
    pPicture.fTiles.insert(pPicture.fTiles.end(), group.fTiles.begin(), group.fTiles.end());
    for (TTreemapRow& row : group.fRows) {
      row.fFirstTile += firstTile;
      pPicture.fRows.push_back(row);
    }
    for (TTreemapBranch& branch : group.fBranches) {
      branch.fFirstTile += firstTile;
      branch.fFirstRow += firstRow;
      TTreemapTile& tile = pPicture.fTiles[branch.fTile];
      tile.fBranch = static_cast<uint32_t>(pPicture.fBranches.size());
      tile.fKind = TTreemapTileKind::tkBranch;
      pPicture.fBranches.push_back(std::move(branch));
    }
    group = {};
  }
}

// Sets identifier and colour of the new tiles, and finds those that are to be opened next.
void TTreemapBuilder::SetLooks(TTreemapPicture& pPicture, size_t pFirst) {
  constexpr size_t kGroup = 1024;
  const size_t count = pPicture.fTiles.size() - pFirst;
  std::vector<std::vector<uint32_t>> open((count + kGroup - 1) / kGroup);
  ForEachStep(fThreads, open.size(), fToken, [&](size_t pStep, size_t pThread) {
    const size_t end = std::min(pPicture.fTiles.size(), pFirst + (pStep + 1) * kGroup);
    for (size_t i = pFirst + pStep * kGroup; i < end; ++i) {
      TTreemapTile& tile = pPicture.fTiles[i];
      if (tile.fKind == TTreemapTileKind::tkRest) continue;
      const TTreemapBranch& parent = pPicture.fBranches[pPicture.fTiles[tile.fParent].fBranch];
      const TTreemapLook look = parent.fContainer->GetLook(tile.fItem, tile.fLayer, fWorkers[pThread]->fColors);
      tile.fID = look.fID;
      tile.fColor = look.fColor;
      if (look.fIsFreeSpace) tile.fKind = TTreemapTileKind::tkFreeSpace;
      if (IsToBeOpened(tile, look.fChildren)) open[pStep].push_back(static_cast<uint32_t>(i));
    }
  });
  fOpen.clear();
  for (const std::vector<uint32_t>& tiles : open) fOpen.insert(fOpen.end(), tiles.begin(), tiles.end());
}

}  // namespace Vantrel::Treemap

// Whole pictures of trees of numbers: invariants, hit-testing, hard cases, cancellation, and the chart that follows its
// size.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <set>

#include "model/tree/Tokens.h"
#include "platform/system/Errors.h"
#include "presentation/treemap/SampleData.h"
#include "presentation/treemap/TreemapChart.h"
#include "presentation/treemap/TreemapPicture.h"
#include "tests/presentation/treemap/TestTree.h"
#include "tests/support/MemoryEnumerator.h"

namespace Vantrel::Treemap {
namespace {

using namespace Testing;
using Vantrel::Testing::TGate;

TTreemapSettings SettingsOf(int32_t pWidth, int32_t pHeight) {
  TTreemapSettings settings;
  settings.fWidth = pWidth;
  settings.fHeight = pHeight;
  settings.fThreads = 2;
  return settings;
}

// The innermost tile of each pixel, by painting all tiles over each other in their order.
std::vector<uint32_t> InnermostTiles(const TTreemapPicture& pPicture) {
  std::vector<uint32_t> tiles(static_cast<size_t>(pPicture.fWidth) * static_cast<size_t>(pPicture.fHeight), kNoTile);
  for (uint32_t i = 0; i < pPicture.fTiles.size(); ++i) {
    const TTreemapRect& rect = pPicture.fTiles[i].fRect;
    for (int32_t y = rect.fTop; y < rect.fBottom; ++y)
      std::fill_n(tiles.begin() + y * pPicture.fWidth + rect.fLeft, rect.Width(), i);
  }
  return tiles;
}

bool IsInside(const TTreemapRect& pInner, const TTreemapRect& pOuter) {
  return pInner.fLeft >= pOuter.fLeft && pInner.fTop >= pOuter.fTop && pInner.fRight <= pOuter.fRight &&
         pInner.fBottom <= pOuter.fBottom && !pInner.IsEmpty();
}

// The children of each opened tile fill its inner rectangle without gap or overlap, in proportion to their values, and
// what has no tile of its own is in the rest.
void CheckBranches(const TTreemapPicture& pPicture, const TTreemapSettings& pSettings) {
  std::vector<uint32_t> owner(static_cast<size_t>(pPicture.fWidth) * static_cast<size_t>(pPicture.fHeight), kNoTile);
  for (uint32_t i = 0; i < pPicture.fBranches.size(); ++i) {
    const TTreemapBranch& branch = pPicture.fBranches[i];
    const auto& container = static_cast<const TTestContainer&>(*branch.fContainer);
    ASSERT_TRUE(IsInside(branch.fInner, pPicture.fTiles[branch.fTile].fRect));
    double sum = 0;
    for (uint32_t item = 0; item < container.Count(); ++item) sum += static_cast<double>(container.Node(item).fValue);
    const double perPixel = sum / static_cast<double>(branch.fInner.Area());
    const auto checkTile = [&](const TTreemapTile& pTile, double pValue) {
      const double width = pTile.fRect.Width();
      const double height = pTile.fRect.Height();
      EXPECT_NEAR(static_cast<double>(pTile.fRect.Area()), pValue / perPixel, width + height + 1);
    };
    std::set<uint32_t> shown;
    int64_t covered = 0;
    double rest = 0;
    uint32_t restCount = 0;
    for (uint32_t t = branch.fFirstTile; t < branch.fFirstTile + branch.fTileCount; ++t) {
      const TTreemapTile& tile = pPicture.fTiles[t];
      ASSERT_EQ(tile.fParent, branch.fTile);
      ASSERT_EQ(tile.fLayer, pPicture.fTiles[branch.fTile].fLayer + 1);
      ASSERT_TRUE(IsInside(tile.fRect, branch.fInner));
      covered += tile.fRect.Area();
      for (int32_t y = tile.fRect.fTop; y < tile.fRect.fBottom; ++y) {
        for (int32_t x = tile.fRect.fLeft; x < tile.fRect.fRight; ++x) {
          uint32_t& pixel = owner[static_cast<size_t>(y * pPicture.fWidth + x)];
          ASSERT_NE(pixel, i) << "two children share pixel " << x << ", " << y;
          pixel = i;
        }
      }
      if (tile.fKind == TTreemapTileKind::tkRest) {
        rest = static_cast<double>(tile.fValue);
        restCount = tile.fItem;
        EXPECT_EQ(tile.fID, pPicture.fTiles[branch.fTile].fID);
      } else {
        shown.insert(tile.fItem);
        ASSERT_EQ(tile.fValue, container.Node(tile.fItem).fValue);
      }
      checkTile(tile, static_cast<double>(tile.fValue));
    }
    ASSERT_EQ(covered, branch.fInner.Area()) << "some pixels belong to no child";
    double small = 0;
    uint32_t smallCount = 0;
    for (uint32_t item = 0; item < container.Count(); ++item) {
      const auto value = static_cast<double>(container.Node(item).fValue);
      if (value > 0 && value < pSettings.fSmallestTile * perPixel) {
        small += value;
        ++smallCount;
        EXPECT_FALSE(shown.contains(item));
      } else if (value >= 64 * perPixel) {
        EXPECT_TRUE(shown.contains(item)) << "a child of 64 pixels has no tile";
      }
    }
    EXPECT_TRUE(restCount == 0 || (restCount == smallCount && rest == small)) << restCount << " of " << smallCount;
    EXPECT_TRUE(small < 64 * perPixel || restCount > 0) << "a rest of 64 pixels has no tile";
  }
}

TEST(TreemapPicture, KeepsItsInvariantsOnRandomTrees) {
  size_t tiles = 0;
  size_t rests = 0;
  for (uint32_t seed = 0; seed < 40; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    TTestNode top;
    FillRandomly(top, random, 5);
    top.fValue = 1000;
    TTreemapSettings settings =
        SettingsOf(static_cast<int32_t>(1 + random() % 500), static_cast<int32_t>(1 + random() % 400));
    settings.fSmallestTile = static_cast<int32_t>(1 + random() % 12);
    settings.fRenderMode = TTreemapRenderMode::rmFlat;
    settings.fFlags.Set(TTreemapFlag::tmfKeepOrientation, seed % 5 == 0);
    settings.fFlags.Set(TTreemapFlag::tmfParents, seed % 2 == 0);
    settings.fFlags.Set(TTreemapFlag::tmfShowNonLeafCaptions, seed % 3 == 0);
    settings.fDark = seed % 2 == 0;
    const auto picture = ComputeTreemap(*MakeRef<TTestPresenter>(top), settings);
    CheckBranches(*picture, settings);
    const std::vector<uint32_t> innermost = InnermostTiles(*picture);
    for (int32_t y = 0; y < picture->fHeight; ++y) {
      for (int32_t x = 0; x < picture->fWidth; ++x) {
        const auto pixel = static_cast<size_t>(y * picture->fWidth + x);
        const uint32_t tile = innermost[pixel];
        ASSERT_EQ(picture->GetTileByPosition(x, y), tile) << "at " << x << ", " << y;
        const TTreemapTile& expected = picture->fTiles[tile];
        const TColor color = expected.fKind == TTreemapTileKind::tkBranch
                                 ? ColorOfFrame(expected.fLayer, settings.fDark)
                                 : expected.fColor;
        ASSERT_EQ(picture->fPixels[pixel], 0xFF000000 | color) << "at " << x << ", " << y;
      }
    }
    tiles += picture->fTiles.size();
    rests += static_cast<size_t>(std::count_if(picture->fTiles.begin(), picture->fTiles.end(), [](const auto& pTile) {
      return pTile.fKind == TTreemapTileKind::tkRest;
    }));
  }
  EXPECT_GT(tiles, 1000u) << "the trees are too small for this test";
  EXPECT_GT(rests, 20u) << "the trees have too few small elements for this test";
}

TEST(TreemapPicture, DoesNotDependOnTheNumberOfThreads) {
  std::mt19937 random(5);
  TTestNode top;
  for (int i = 0; i < 60; ++i) {
    TTestNode& child = top.Add(0);
    FillRandomly(child, random, 5);
    for (const auto& grandchild : child.fChildren) child.fValue += grandchild->fValue;
  }
  top.fValue = 1;
  TTreemapSettings settings = SettingsOf(900, 600);
  settings.fThreads = 1;
  const auto one = ComputeTreemap(*MakeRef<TTestPresenter>(top), settings);
  settings.fThreads = 5;
  const auto five = ComputeTreemap(*MakeRef<TTestPresenter>(top), settings);
  EXPECT_GT(one->fTiles.size(), 500u);
  EXPECT_EQ(one->fPixels, five->fPixels);
  ASSERT_EQ(one->fTiles.size(), five->fTiles.size());
  for (size_t i = 0; i < one->fTiles.size(); ++i) {
    ASSERT_EQ(one->fTiles[i].fID, five->fTiles[i].fID);
    ASSERT_EQ(one->fTiles[i].fRect, five->fTiles[i].fRect);
  }
}

TEST(TreemapPicture, SurvivesHardCases) {
  const auto compute = [](const TTestNode& pTop, TTreemapSettings pSettings) {
    const auto picture = ComputeTreemap(*MakeRef<TTestPresenter>(pTop), pSettings);
    EXPECT_EQ(picture->fPixels.size(),
              static_cast<size_t>(std::max(picture->fWidth, 0)) * static_cast<size_t>(std::max(picture->fHeight, 0)));
    CheckBranches(*picture, pSettings);
    return picture;
  };
  TTestNode million;
  million.fValue = 1;
  for (int i = 0; i < 1'000'000; ++i) million.Add(i == 77 ? 99'999 * 1'000'000LL : 1'000'000);
  // One file has half of the space, the others less than a pixel each.
  const auto crowded = compute(million, SettingsOf(300, 200));
  ASSERT_EQ(crowded->fTiles.size(), 3u);
  EXPECT_EQ(crowded->fTiles[1].fItem, 77u);
  EXPECT_EQ(crowded->fTiles[2].fItem, 999'999u);
  EXPECT_EQ(crowded->fTiles[2].fValue, 999'999 * 1'000'000LL);

  TTestNode giant;
  giant.fValue = INT64_MAX;
  for (int i = 0; i < 3; ++i) giant.Add(INT64_MAX);
  giant.Add(-5);
  giant.Add((1LL << 53) + 1);
  const auto huge = compute(giant, SettingsOf(300, 200));
  ASSERT_GE(huge->fTiles.size(), 4u);
  EXPECT_NEAR(static_cast<double>(huge->fTiles[1].fRect.Area()), 300 * 180 / 3.0, 2000);

  TTestNode empty;
  for (int i = 0; i < 5; ++i) empty.Add(0);
  EXPECT_EQ(compute(empty, SettingsOf(300, 200))->fTiles.size(), 1u) << "values of 0 draw nothing";

  TTestNode one;
  one.fValue = 7;
  one.Add(7);
  for (const auto& [width, height] : {std::pair(1, 1), {0, 100}, {100, 0}, {-3, 5}, {1, 300}, {3000, 1}, {40, 40}}) {
    const auto picture = compute(one, SettingsOf(width, height));
    EXPECT_EQ(picture->fTiles.empty(), width <= 0 || height <= 0);
    EXPECT_EQ(picture->GetLayerByPosition(0, 0) >= 0, width > 0 && height > 0);
    EXPECT_EQ(picture->GetIDByPosition(width, 0), TTreemapElementID::None);
  }

  const std::unique_ptr<TTestNode> chain = TTestNode::Chain(10'000, 1);
  TTreemapSettings settings = SettingsOf(300, 200);
  settings.fFlags = {};
  EXPECT_EQ(compute(*chain, settings)->fTiles.back().fLayer, 256);
  settings.fMostLayers = 20'000;
  const auto deep = ComputeTreemap(*MakeRef<TTestPresenter>(*chain), settings);
  EXPECT_EQ(deep->GetLayerByPosition(299, 199), 10'000);
}

// Opening stops with the cancellation, and so does everything after it.
TEST(TreemapPicture, EndsEarlyWhenCancelled) {
  TTestNode top;
  top.fValue = 1;
  for (int i = 0; i < 500; ++i) {
    TTestNode& child = top.Add(10);
    for (int k = 0; k < 3; ++k) child.Add(1);
  }
  const TRef<ICancellationToken> token = MakeRef<TCancellationToken>();
  const auto presenter = MakeRef<TTestPresenter>(top);
  std::once_flag once;
  std::atomic<int> opened{0};  // when the cancellation was told
  presenter->fWatch->fOnOpen = [&] {
    if (presenter->fWatch->fOpened < 100) return;
    std::call_once(once, [&] {
      token->Cancel();
      opened = presenter->fWatch->fOpened.load();
    });
  };
  EXPECT_EQ(ComputeTreemap(*presenter, SettingsOf(900, 600), token.get()), nullptr);
  EXPECT_GE(opened, 100);
  EXPECT_LE(presenter->fWatch->fOpened, opened + 1) << "the second thread may have begun one";
}

// While the first picture is computed, the size changes fifty times. Only the first and the last request cost anything,
// unless outdated work is to run to its end. In both cases only the last one's picture is shown.
TEST(TreemapChart, LeavesNoWorkBehindWhenItIsResized) {
  TTestNode top;
  top.fValue = 1;
  for (int i = 0; i < 50; ++i) top.Add(i);
  for (const bool terminates : {true, false}) {
    const auto presenter = MakeRef<TTestPresenter>(top);
    TGate gate;
    presenter->fWatch->fOnTop = [&] { gate.Pass(); };
    ThreadPool::TWorkerThreadPool pool({});
    std::atomic<int> pictures{0};
    TCustomTreemapChart chart(pool, [&] { ++pictures; });
    TTreemapSettings settings;
    settings.fFlags.Set(TTreemapFlag::tmfTerminateOutdatedWorker, terminates);
    chart.SetSettings(settings);
    chart.SetBounds(300, 200);
    chart.SetPresenter(presenter);
    gate.WaitUntilReached();
    for (int i = 1; i <= 50; ++i) chart.SetBounds(300 + i, 200);
    EXPECT_TRUE(chart.GetFlags().Has(TTreemapFlag::tmfIsPainting));
    EXPECT_TRUE(chart.GetFlags().Has(TTreemapFlag::tmfCacheInvalid));
    gate.Open();
    while (pool.GetWorkItemsCount() > 0) std::this_thread::yield();
    EXPECT_EQ(presenter->fWatch->fTops, terminates ? 2 : 51) << "requests that were computed";
    EXPECT_EQ(pictures, 1) << "outdated pictures were shown";
    ASSERT_NE(chart.GetPicture(), nullptr);
    EXPECT_EQ(chart.GetPicture()->fWidth, 350);
    EXPECT_FALSE(chart.GetFlags().Has(TTreemapFlag::tmfIsPainting));
    EXPECT_FALSE(chart.GetFlags().Has(TTreemapFlag::tmfCacheInvalid));
    EXPECT_EQ(chart.GetLayerByPosition(349, 199), 0) << "the frame";
    EXPECT_EQ(chart.GetIDByPosition(175, 100), chart.GetPicture()->GetIDByPosition(175, 100));

    // Without the pool the picture is there at once; without data there is none.
    settings.fFlags.Set(TTreemapFlag::tmfPaintConcurrent, false);
    chart.SetSettings(settings);
    EXPECT_EQ(pictures, 2);
    chart.SetPresenter(nullptr);
    EXPECT_EQ(chart.GetPicture(), nullptr);
  }
}

TEST(TreemapPicture, ShowsTheDemonstrationTree) {
  int64_t megabytes = 0;
  int32_t children = 0;
  for (size_t i = 0; i < TSampleData::Count(); ++i) {
    megabytes += TSampleData::GetSampleData(i).fSize;
    children += TSampleData::GetSampleChildCount(i);
    EXPECT_EQ(TSampleData::GetSampleImageIndex(i) == 0, TSampleData::GetSampleChildCount(i) > 0);
  }
  EXPECT_EQ(children + 1, static_cast<int32_t>(TSampleData::Count()));
  EXPECT_THROW(TSampleData::GetSampleData(TSampleData::Count()), EInvalidArgumentValue);
  const auto picture = ComputeTreemap(*MakeRef<TSampleData>(), SettingsOf(1000, 700));
  EXPECT_EQ(picture->fTiles[0].fValue, megabytes << 20);
  const auto rests = std::count_if(picture->fTiles.begin(), picture->fTiles.end(),
                                   [](const auto& pTile) { return pTile.fKind == TTreemapTileKind::tkRest; });
  EXPECT_EQ(picture->fTiles.size() - static_cast<size_t>(rests), TSampleData::Count());
}

}  // namespace
}  // namespace Vantrel::Treemap

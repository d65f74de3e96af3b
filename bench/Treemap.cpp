// Measures treemaps: computing them, resizing them, and finding tiles.

// Builds trees in memory and computes their treemaps on all processors. Prints medians; exit code 1 when a target is
// missed.
//
//   treemap            a million tiles, a tree of ten million files, a folder of a million files
//
// The folders of the large tree share one table of files, since only the number of files matters.

#include <fmt/format.h>

#include <random>
#include <string>
#include <vector>

#include "bench/Timing.h"
#include "model/options/GlobalOptions.h"
#include "model/roots/ScanRoots.h"
#include "model/tree/CustomFolder.h"
#include "platform/system/System.h"
#include "presentation/treemap/SampleData.h"
#include "presentation/treemap/TreemapChart.h"
#include "scan/engine/ScanServices.h"

using namespace Vantrel;
using namespace Vantrel::Treemap;

namespace {

constexpr int kRounds = 7;

std::u16string NameOf(int64_t pNumber) {
  static const char* const extensions[] = {"jpg", "txt", "so", "zip", "cpp", "mp4", "dat"};
  const std::string name = fmt::format("file{:08}.{}", pNumber, extensions[pNumber % 7]);
  return std::u16string(name.begin(), name.end());
}

// Files of 50 to 150 KB.
TFileGroupContents Files(int64_t pCount) {
  std::mt19937 random(1);
  TFileTableBuilder table;
  TFileGroupContents files;
  for (int64_t i = 0; i < pCount; ++i) {
    TEntryValues values;
    values.fSize = values.fAllocated = 50'000 + static_cast<int64_t>(random() % 100'000);
    values.fLastChangeDate = TKivFileTime::FromUnix(1'500'000'000 + i, 0);
    table.Add(NameOf(i), values, kNoKey);
    files.fValues += TBasicSizeValues{values.fSize, values.fAllocated, 1};
  }
  files.fFiles = table.Build();
  return files;
}

class TTree {
 public:
  TTree() : fRoots(CreateScanRoots(ScanEngine::CreateScanServices(), std::make_shared<TGlobalOptions>())) {
    fTop = MakeRef<TFolderData>(fRoots->CreateRoot(u"/"), u"/");
  }
  ~TTree() {
    fTop->Dispose();
    fRoots->Dispose();
  }

  // Folders of folders that hold the files; with pOuter 1 only one level of folders.
  void Fill(int pOuter, int pInner, const TFileGroupContents& pFiles) {
    for (const auto& outer : pOuter > 1 ? AddFolders(*fTop, pOuter) : std::vector<TRef<TCustomFolderData>>{fTop})
      for (const auto& inner : AddFolders(*outer, pInner)) inner->AddFiles(pFiles);
  }

  TRef<ITreemapPresenter> Present() const { return MakeRef<TTreeMapChartBasePresenter>(fTop, TTreeMapOptions{}); }

  TRef<TFolderData> fTop;

 private:
  static std::vector<TRef<TCustomFolderData>> AddFolders(TCustomFolderData& pParent, int pCount) {
    std::vector<TRef<TCustomFolderData>> folders;
    for (int i = 0; i < pCount; ++i) folders.push_back(pParent.MakeChild(NameOf(i), {}, kNoKey, false));
    pParent.AppendChildren(folders);
    return folders;
  }

  TRef<IScanRoots> fRoots;
};

TTreemapSettings Settings(int32_t pWidth, int32_t pHeight, int32_t pSmallest) {
  TTreemapSettings settings;
  settings.fWidth = pWidth;
  settings.fHeight = pHeight;
  settings.fSmallestTile = pSmallest;
  return settings;
}

struct TFigure {
  double fSeconds = 0;
  std::shared_ptr<const TTreemapPicture> fPicture;
};

TFigure Measure(const char* pWhat, const ITreemapPresenter& pPresenter, const TTreemapSettings& pSettings) {
  TFigure figure;
  std::vector<double> seconds;
  const double begin = Bench::ProcessorSeconds();
  for (int i = 0; i < kRounds; ++i)
    seconds.push_back(Bench::Seconds([&] { figure.fPicture = ComputeTreemap(pPresenter, pSettings); }));
  figure.fSeconds = Bench::Median(seconds);
  const auto [least, most] = std::minmax_element(seconds.begin(), seconds.end());
  const double processor = (Bench::ProcessorSeconds() - begin) / kRounds / std::min(ProcessorCount(), 2);
  fmt::print("{:<56} {:7.1f} ms ({:.1f} to {:.1f}); {:7.1f} ms of two processors; {} tiles\n", pWhat,
             figure.fSeconds * 1e3, *least * 1e3, *most * 1e3, processor * 1e3, figure.fPicture->fTiles.size());
  return figure;
}

bool Check(bool pMet, const std::string& pWhat) {
  fmt::print("{:<6} {}\n", pMet ? "met" : "MISSED", pWhat);
  return pMet;
}

double NanosecondsOfHit(const TTreemapPicture& pPicture) {
  constexpr int kHits = 1'000'000;
  std::mt19937 random(2);
  uint64_t sum = 0;
  const double begin = Bench::ProcessorSeconds();
  for (int i = 0; i < kHits; ++i)
    sum += pPicture.GetTileByPosition(static_cast<int32_t>(random() % static_cast<uint32_t>(pPicture.fWidth)),
                                      static_cast<int32_t>(random() % static_cast<uint32_t>(pPicture.fHeight)));
  const double seconds = Bench::ProcessorSeconds() - begin;
  if (sum == 0) fmt::print("no tile was hit\n");  // keeps the loop
  return seconds * 1e9 / kHits;
}

// The size of a window changes a hundred times, and a picture takes long. Returns how many pictures' time it took.
double CostOfResizing(const ITreemapPresenter& pPresenter, double pSecondsOfOne) {
  ThreadPool::TWorkerThreadPool pool({});
  TCustomTreemapChart chart(pool, {});
  chart.SetPresenter(TRef<const ITreemapPresenter>(&pPresenter));
  const double seconds = Bench::Seconds([&] {
    for (int32_t i = 0; i < 100; ++i) chart.SetBounds(3740 + i, 2160);
    while (pool.GetWorkItemsCount() > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  });
  return seconds / pSecondsOfOne;
}

// Pictures of a million tiles. Also gives the seconds for a smaller picture of the same tree.
bool MeasureMillionTiles(const TFileGroupContents& pThousand, double& pSmallTree) {
  bool met = true;
  TTree tree;
  tree.Fill(1, 1000, pThousand);
  const TRef<ITreemapPresenter> presenter = tree.Present();
  const TFigure million =
      Measure("1,000 x 1,000 files at 3840 x 2160, tiles from 1 pixel", *presenter, Settings(3840, 2160, 1));
  met &= Check(million.fPicture->fTiles.size() >= 1'000'000, "a million tiles");
  met &= Check(million.fSeconds < 0.5, "in under half a second");
  std::vector<uint32_t> pixels;
  Bench::Seconds([&] { pixels.assign(3840 * 2160, 1); });
  fmt::print("       writing that many pixels once takes {:.1f} ms\n",
             Bench::Seconds([&] { pixels.assign(3840 * 2160, 2); }) * 1e3);
  const TFigure small = Measure("the same at 1000 x 700", *presenter, Settings(1000, 700, 9));
  pSmallTree = small.fSeconds;
  const double hits = NanosecondsOfHit(*million.fPicture);
  const double fewer = NanosecondsOfHit(*small.fPicture);
  met &= Check(hits < 2000, fmt::format("finding a tile takes {:.0f} ns among {} tiles, {:.0f} ns among {}", hits,
                                        million.fPicture->fTiles.size(), fewer, small.fPicture->fTiles.size()));
  const double resizing = CostOfResizing(*presenter, million.fSeconds);
  met &= Check(resizing < 5, fmt::format("a hundred changes of the size cost as much as {:.1f} pictures", resizing));
  return met;
}

}  // namespace

int main() {
  fmt::print("{} processors\n", ProcessorCount());
  double smallTree = 0;
  const TFileGroupContents thousand = Files(1000);
  bool met = MeasureMillionTiles(thousand, smallTree);
  {
    TTree tree;
    tree.Fill(100, 100, thousand);
    const TFigure large = Measure("100 x 100 x 1,000 files at 1000 x 700", *tree.Present(), Settings(1000, 700, 9));
    met &= Check(large.fSeconds < 3 * smallTree, "ten times the files take at most three times as long");
  }
  {
    TTree tree;
    tree.fTop->AddFiles(Files(1'000'000));
    Measure("a folder of 1,000,000 files at 1000 x 700", *tree.Present(), Settings(1000, 700, 9));
    Measure("the same at 3840 x 2160, tiles from 1 pixel", *tree.Present(), Settings(3840, 2160, 1));
  }
  Measure("the demonstration tree at 1000 x 700", *MakeRef<TSampleData>(), Settings(1000, 700, 9));
  return met ? 0 : 1;
}

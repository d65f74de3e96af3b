// Treemaps of scanned trees and of their statistics: elements, identifiers, colours, captions, tooltips, and trees that
// change meanwhile.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <thread>

#include "model/roots/Comparison.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"
#include "presentation/treemap/SizeArrayPresenters.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "presentation/treemap/TreemapWorker.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"

namespace Vantrel::Treemap {
namespace {

using Vantrel::Testing::TGate;
using Vantrel::Testing::TMemoryRoot;
using Vantrel::Testing::TRandomTree;

struct TShown {
  int64_t fValue;
  TColor fColor;
  TTreemapElementID fID;
  uint32_t fTile;
};

// The tiles by the names on their way down.
std::map<std::string, TShown> Shown(const TTreemapPicture& pPicture) {
  std::map<std::string, TShown> shown;
  for (uint32_t i = 0; i < pPicture.fTiles.size(); ++i) {
    const TTreemapTile& tile = pPicture.fTiles[i];
    std::string path = ToUtf8(pPicture.GetCaption(i)) + (tile.fKind == TTreemapTileKind::tkRest ? "/rest" : "");
    for (uint32_t parent = tile.fParent; parent != kNoTile; parent = pPicture.fTiles[parent].fParent)
      path = ToUtf8(pPicture.GetCaption(parent)) + "/" + path;
    shown[path] = {tile.fValue, tile.fColor, tile.fID, i};
  }
  return shown;
}

std::shared_ptr<const TTreemapPicture> Compute(const ITreemapPresenter& pPresenter, TTreemapSettings pSettings = {}) {
  pSettings.fThreads = 2;
  return ComputeTreemap(pPresenter, pSettings);
}

std::shared_ptr<const TTreemapPicture> ComputeTree(IHierarchicalRoot& pRoot, const TTreeMapOptions& pOptions = {},
                                                   const TTreemapSettings& pSettings = {}) {
  return Compute(*MakeRef<TTreeMapChartBasePresenter>(pRoot.GetTopFolder(), pOptions), pSettings);
}

void FillMusic(TMemoryRoot& pRoot) {
  auto& music = pRoot.Top().AddFolder(u"music");
  music.AddFile(u"song.mp3", 4'000'000, 5'000'000);
  music.AddFile(u"cover.jpg", 1'000'000);
  music.AddFolder(u"old").AddFile(u"tape.WAV", 2'000'000);
  pRoot.Top().AddFile(u"strange", 3'000'000);
  for (int i = 0; i < 200; ++i) pRoot.Top().AddFile(FromUtf8("tiny" + std::to_string(i) + ".mp3"), 10);
}

std::vector<std::string> PathsOf(const std::map<std::string, TShown>& pShown) {
  std::vector<std::string> paths;
  for (const auto& [path, shown] : pShown) paths.push_back(path);
  return paths;
}

TEST(TreemapPresenters, ShowFoldersAndFilesWithoutTheFilesRow) {
  TMemoryRoot memory;
  FillMusic(memory);
  memory.Scan();
  const auto shown = Shown(*ComputeTree(memory.Root()));
  EXPECT_EQ(PathsOf(shown),
            (std::vector<std::string>{"/memory", "/memory/music", "/memory/music/cover.jpg", "/memory/music/old",
                                      "/memory/music/old/tape.WAV", "/memory/music/song.mp3", "/memory/strange"}));
  EXPECT_EQ(shown.at("/memory").fValue, 10'002'000);
  // The small files are in the areas, and would have a tile of their own if there was room for one pixel.
  TTreeMapOptions byCount;
  byCount.fValueColumn = TColumn::mdFiles;
  const auto counts = Shown(*ComputeTree(memory.Root(), byCount));
  EXPECT_EQ(counts.at("/memory/music").fValue, 3);
  EXPECT_EQ(counts.size(), 207u);

  TTreeMapOptions allocated;
  allocated.fValueColumn = TColumn::mdAllocated;
  EXPECT_EQ(Shown(*ComputeTree(memory.Root(), allocated)).at("/memory/music/song.mp3").fValue, 5'000'000);

  TTreemapSettings folders;
  folders.fFlags.Set(TTreemapFlag::tmfShowLeafs, false);
  EXPECT_EQ(PathsOf(Shown(*ComputeTree(memory.Root(), {}, folders))),
            (std::vector<std::string>{"/memory", "/memory/[Files]", "/memory/music", "/memory/music/[Files]",
                                      "/memory/music/old"}));

  // A second scan makes new nodes for the same names, and another picture size makes other tiles.
  memory.Scan();
  TTreemapSettings narrow;
  narrow.fWidth = 300;
  const auto again = Shown(*ComputeTree(memory.Root(), {}, narrow));
  for (const auto& [path, tile] : again) EXPECT_EQ(tile.fID, shown.at(path).fID) << path;
  // A picture of a branch gives its elements the identifiers that they have in the picture of the whole.
  const TRef<IFolderData> music = memory.Root().GetTopFolder()->FindSubFolders().at(0);
  ASSERT_EQ(music->GetObjectName(), u"music");
  const auto branch = Shown(*Compute(*MakeRef<TTreeMapChartBasePresenter>(music, TTreeMapOptions{})));
  EXPECT_EQ(branch.at("music/old/tape.WAV").fID, shown.at("/memory/music/old/tape.WAV").fID);
}

// The groups' numbers are those of their standard list: 0 audio, 2 images, 17 all others.
TEST(TreemapPresenters, ColorByTypeExtensionAgeAndDepth) {
  TMemoryRoot memory;
  FillMusic(memory);
  auto& old = *memory.Top().Find(u"music")->Find(u"old")->Find(u"tape.WAV");
  old.fValues.fLastChangeDate = Vantrel::Testing::DaysAgo(2000);
  memory.Top().Find(u"music")->Find(u"song.mp3")->fValues.fLastChangeDate = Vantrel::Testing::DaysAgo(3);
  memory.fOptions->FileAgesDateType = TDateType::dtLastChange;
  memory.Scan();
  const auto colors = [&](TTreemapColorScheme pScheme) {
    TTreeMapOptions options;
    options.fScheme = pScheme;
    return Shown(*ComputeTree(memory.Root(), options));
  };
  const auto types = colors(TTreemapColorScheme::csType);
  EXPECT_EQ(types.at("/memory/music/song.mp3").fColor, ColorOfFileTypeGroup(0, 18));
  EXPECT_EQ(types.at("/memory/music/old/tape.WAV").fColor, ColorOfFileTypeGroup(0, 18));
  EXPECT_EQ(types.at("/memory/music/old").fColor, ColorOfFileTypeGroup(0, 18)) << "one kind mixes to itself";
  EXPECT_EQ(types.at("/memory/music/cover.jpg").fColor, ColorOfFileTypeGroup(2, 18));
  EXPECT_EQ(types.at("/memory/strange").fColor, ColorOfFileTypeGroup(17, 18));
  // The folder's mixture: 6 parts audio (0x6DB649) and 1 part image (0xE69F00), as amounts of light.
  const auto mixed = [](double pA, double pB) {
    return static_cast<TColor>(std::sqrt((6 * pA * pA + pB * pB) / 7) + 0.5);
  };
  EXPECT_EQ(types.at("/memory/music").fColor, mixed(0x6D, 0xE6) << 16 | mixed(0xB6, 0x9F) << 8 | mixed(0x49, 0));

  const auto extensions = colors(TTreemapColorScheme::csExtension);
  EXPECT_EQ(extensions.at("/memory/music/old/tape.WAV").fColor, CommonColorPalette().GetColorForKey(u".wav"));
  const auto ages = colors(TTreemapColorScheme::csAge);
  EXPECT_EQ(ages.at("/memory/music/song.mp3").fColor, ColorOfAge(1, 7)) << "up to a week";
  EXPECT_EQ(ages.at("/memory/music/old").fColor, ColorOfAge(6, 7)) << "over two years";
  const auto depths = colors(TTreemapColorScheme::csDepth);
  EXPECT_EQ(depths.at("/memory/music/old/tape.WAV").fColor, ColorOfLayer(3));
  EXPECT_EQ(depths.at("/memory/strange").fColor, ColorOfLayer(1));
}

TEST(TreemapPresenters, ColorByGrowthAfterAComparison) {
  TMemoryRoot earlier;
  FillMusic(earlier);
  earlier.Top().AddFile(u"shrunk.txt", 9'000'000);
  earlier.Scan();
  TMemoryRoot memory;
  FillMusic(memory);
  memory.Top().AddFile(u"shrunk.txt", 3'000'000);
  memory.Top().AddFile(u"new.txt", 3'000'000);
  memory.Top().AddFolder(u"newer").AddFile(u"a.txt", 3'000'000);
  memory.Top().Find(u"music")->Find(u"song.mp3")->fValues.fSize = 8'000'000;
  memory.Scan();
  TTreeMapOptions options;
  options.fScheme = TTreemapColorScheme::csGrowth;
  EXPECT_EQ(Shown(*ComputeTree(memory.Root(), options)).at("/memory/new.txt").fColor, ColorOfGrowth(1, 1))
      << "without a comparison nothing has changed";
  memory.Root().SetComparison(MakeRef<TComparison>(memory.Root(), earlier.Root()));
  const auto shown = Shown(*ComputeTree(memory.Root(), options));
  EXPECT_EQ(shown.at("/memory/strange").fColor, ColorOfGrowth(1, 1));
  EXPECT_EQ(shown.at("/memory/shrunk.txt").fColor, ColorOfGrowth(3, 1));
  EXPECT_EQ(shown.at("/memory/music/song.mp3").fColor, ColorOfGrowth(1, 2));
  EXPECT_EQ(shown.at("/memory/new.txt").fColor, ColorOfGrowth(0, 1));
  EXPECT_EQ(shown.at("/memory/newer").fColor, ColorOfGrowth(0, 1));
  EXPECT_EQ(shown.at("/memory/newer/a.txt").fColor, ColorOfGrowth(0, 1));
  const auto picture = ComputeTree(memory.Root(), options);
  ASSERT_EQ(picture->fLegend.size(), 4u);
  EXPECT_EQ(picture->fLegend[3].fColor, ColorOfGrowth(0, 1));
}

TEST(TreemapPresenters, ShowStatisticsByGroupExtensionAndOwner) {
  TMemoryRoot memory;
  FillMusic(memory);
  memory.fOptions->CollectOwners = true;
  auto& song = *memory.Top().Find(u"music")->Find(u"song.mp3");
  song.fOwner = u"anna";
  song.fOwnerId = 1;
  memory.Scan();
  const TRef<IFolderData> top = memory.Root().GetTopFolder();
  const auto extensions = Compute(*MakeRef<TExtensionSizeArrayMapPresenter>(*top, TColumn::mdSize));
  const auto shown = Shown(*extensions);
  EXPECT_EQ(shown.at("/memory/Audio").fValue, 6'002'000);
  EXPECT_EQ(shown.at("/memory/Audio/.mp3").fValue, 4'002'000);
  EXPECT_EQ(shown.at("/memory/Audio/.wav").fValue, 2'000'000);
  EXPECT_EQ(shown.at("/memory/Miscellaneous Files/<no extension>").fValue, 3'000'000);
  EXPECT_EQ(shown.at("/memory/Images").fColor, ColorOfFileTypeGroup(2, 18));
  ASSERT_EQ(extensions->fLegend.size(), 3u);
  EXPECT_EQ(extensions->fLegend[0].fText, u"Audio");
  TValueFormat format;
  EXPECT_EQ(ToUtf8(TTreemapWorkItem::CalculateHint(*extensions, shown.at("/memory/Audio").fTile, format)),
            "Audio\nFiles containing music, sounds or playlists\nSize: 5.7 MB\nAllocated: 6.7 MB\nFiles: 202");
  const auto users = Shown(*Compute(*MakeRef<TUserSizeArrayMapPresenter>(*top, TColumn::mdSize)));
  EXPECT_EQ(users.at("/memory/anna").fValue, 4'000'000);
  EXPECT_EQ(users.at("/memory/<unknown owner>").fValue, 6'002'000);
}

TEST(TreemapPresenters, NameElementsInCaptionsAndTooltips) {
  TMemoryRoot memory;
  const std::u16string wide(255, u'\u7530');
  memory.Top().AddFile(wide + u".txt", 40'000'000);
  memory.Top().AddFile(u"line\nbreak\u202E\xD800.txt", 30'000'000);
  for (int i = 0; i < 2000; ++i) memory.Top().AddFile(FromUtf8(std::to_string(i)), 1'000);
  memory.Scan();
  const auto picture = ComputeTree(memory.Root());
  std::vector<std::string> texts;
  const Drawing::TEstimatedTextMeasure measure;
  for (const TTreemapCaption& caption : picture->fCaptions) {
    texts.push_back(ToUtf8(caption.fText));
    EXPECT_LE(measure.Width(caption.fText, caption.fTextSize), caption.fRect.Width()) << texts.back();
    const TTreemapRect& tile = picture->fTiles[caption.fTile].fRect;
    EXPECT_TRUE(caption.fRect.fLeft >= tile.fLeft && caption.fRect.fRight <= tile.fRight &&
                caption.fRect.fTop >= tile.fTop && caption.fRect.fBottom <= tile.fBottom)
        << texts.back();
  }
  ASSERT_EQ(texts.size(), 5u);
  EXPECT_EQ(texts[0], "/memory  68.7 MB");
  EXPECT_TRUE(texts[1].starts_with("\u7530\u7530\u7530\u7530\u7530") && texts[1].ends_with("\u2026")) << texts[1];
  EXPECT_EQ(texts[2], "38.1 MB");
  EXPECT_EQ(texts[3], "line\\nbreak\\u202E\\uD800.txt");

  const auto rest = std::find_if(picture->fTiles.begin(), picture->fTiles.end(),
                                 [](const auto& pTile) { return pTile.fKind == TTreemapTileKind::tkRest; });
  EXPECT_EQ(rest, picture->fTiles.end()) << "each file has nine pixels";
  TTreemapSettings small;
  small.fWidth = 200;
  small.fHeight = 150;
  const auto crowded = ComputeTree(memory.Root(), {}, small);
  const auto last = static_cast<uint32_t>(crowded->fTiles.size() - 1);
  ASSERT_EQ(crowded->fTiles[last].fKind, TTreemapTileKind::tkRest);
  EXPECT_EQ(crowded->GetIDByPosition(crowded->fTiles[last].fRect.fLeft, crowded->fTiles[last].fRect.fTop),
            crowded->fTiles[0].fID);
  EXPECT_EQ(crowded->GetLayerByPosition(crowded->fTiles[last].fRect.fLeft, crowded->fTiles[last].fRect.fTop), 0);
  const std::string hint = ToUtf8(TTreemapWorkItem::CalculateHint(*crowded, last, {}));
  EXPECT_TRUE(hint.starts_with("/memory\nSize: 68.7 MB\n") && hint.ends_with("\nHere: 2,000 small items")) << hint;
  EXPECT_EQ(crowded->FindTile(crowded->fTiles[1].fID), 1u);
}

// Pictures are computed while a scan fills the tree, and while the tree is taken apart.
TEST(TreemapPresenters, ReadATreeThatChanges) {
  TRandomTree random(11);
  TMemoryRoot memory;
  for (int i = 0; i < 40; ++i) random.AddFolder(memory.Top(), 4);
  TTreemapSettings settings;
  settings.fWidth = 400;
  settings.fHeight = 300;
  TGate gate;
  memory.Top().AddFolder(u"held").fGate = &gate;  // the scan does not end before the first picture
  memory.Begin();
  do {
    if (!memory.Root().GetTopFolder()) continue;
    const auto picture = ComputeTree(memory.Root(), {}, settings);
    EXPECT_EQ(picture->fPixels.size(), 400u * 300u);
    for (uint32_t i = 0; i < picture->fTiles.size(); i += 97) TTreemapWorkItem::CalculateHint(*picture, i, {});
    gate.Open();
  } while (!memory.Root().WaitForScan(0));
  const auto presenter = MakeRef<TTreeMapChartBasePresenter>(memory.Root().GetTopFolder(), TTreeMapOptions{});
  const auto before = Compute(*presenter, settings);
  std::thread disposal([&] { memory.Root().Dispose(); });
  for (int i = 0; i < 5; ++i) Compute(*presenter, settings);
  disposal.join();
  for (uint32_t i = 0; i < before->fTiles.size(); ++i) TTreemapWorkItem::CalculateHint(*before, i, {});
}

}  // namespace
}  // namespace Vantrel::Treemap

// The treemap and chart panes, with pointer and keys, over scans in memory.

#include <gtest/gtest.h>

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>

#include "presentation/treemap/FolderContainer.h"
#include "tests/support/MemoryRoot.h"
#include "tests/support/RandomTree.h"
#include "tests/support/TemporaryFolder.h"
#include "window/models/ShownText.h"
#include "window/panes/ChartPane.h"
#include "window/panes/TreemapPane.h"
#include "window/panes/TreemapView.h"

namespace Vantrel::Window {
namespace {

using namespace Testing;

constexpr int kPatience = 60'000;  // milliseconds; only there to end a hang

struct TPanes : ::testing::Test {
  TPanes() {
    TMemoryEntry& folder = fMemory.Top().AddFolder(u"folder");
    folder.AddFile(u"large.iso", 600'000);
    folder.AddFolder(u"deep").AddFile(u"inside.txt", 200'000);
    fMemory.Top().AddFile(u"<b>&.txt", 150'000);
    fMemory.Scan();
    fMap.resize(600, 400);
    fChart.resize(600, 400);
  }

  TRef<IFolderData> Folder(std::u16string_view pPath) {
    TRef<IFolderData> folder = fMemory.Root().GetTopFolder();
    for (size_t begin = 0; begin < pPath.size();) {
      const size_t end = std::min(pPath.find(u'/', begin), pPath.size());
      const std::u16string_view name = pPath.substr(begin, end - begin);
      TRef<IFolderData> found;
      for (const TRef<IFolderData>& child : folder->FindSubFolders())
        if (child->GetObjectName() == name) found = child;
      folder = found;
      begin = end + 1;
    }
    return folder;
  }

  TPlace Place(std::u16string_view pPath = {}) { return {&fMemory.Root(), Folder(pPath)}; }

  // Runs something, then waits until the treemap shows the picture that follows from it.
  template <class TCall>
  void Await(const TCall& pCall) {
    QSignalSpy shown(&fMap.View(), &TTreemapView::PictureShown);
    pCall();
    ASSERT_TRUE(shown.wait(kPatience));
  }
  void ShowMap() {
    fMap.show();
    Await([&] { fMap.ShowPlace(Place()); });
  }

  // The middle of a tile, by the path of what it stands for.
  QPoint Middle(std::u16string_view pPath) {
    const TTreemapView& view = fMap.View();
    const auto picture = view.GetPicture();
    for (uint32_t i = static_cast<uint32_t>(picture->fTiles.size()); i-- > 0;)
      if (const auto node = view.NodeOf(i); node && node->GetFullPath() == pPath)
        return picture->fTiles[i].fBranch == Treemap::kNoTile
                   ? view.AreaOf(i).center().toPoint()
                   : (view.AreaOf(i).topLeft() + QPointF(20, 8)).toPoint();  // in the heading
    ADD_FAILURE() << "no tile of " << ToQString(pPath).toStdString();
    return {};
  }

  QString Marked() {
    const auto node = fMap.View().NodeOf(fMap.View().GetMarkedTile());
    return node ? ToQString(node->GetFullPath()) : QString();
  }

  QString Shown() { return ToQString(fMap.GetShownFolder()->GetFullPath()); }

  TMemoryRoot fMemory;
  std::shared_ptr<TGlobalOptions> fOptions = std::make_shared<TGlobalOptions>();
  TTreemapPane fMap{fOptions};
  TChartPane fChart{fOptions};
};

TEST_F(TPanes, AClickChoosesAndTheChosenFolderIsMarked) {
  ShowMap();
  QSignalSpy chosen(&fMap, &TPane::PathChosen);
  QTest::mouseClick(&fMap.View(), Qt::LeftButton, {}, Middle(u"/memory/folder/large.iso"));
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(chosen[0][0].toString(), "/memory/folder/large.iso");
  EXPECT_EQ(Marked(), "/memory/folder/large.iso");
  // The tree goes to the file's folder in turn. The file stays marked, and the map stays where it is.
  fMap.ShowPlace(Place(u"folder"));
  EXPECT_EQ(Marked(), "/memory/folder/large.iso");
  fMap.ShowPlace(Place(u"folder/deep"));
  EXPECT_EQ(Marked(), "/memory/folder/deep");
  EXPECT_EQ(Shown(), "/memory");
}

TEST_F(TPanes, ZoomsInAndBack) {
  ShowMap();
  Await([&] { QTest::mouseDClick(&fMap.View(), Qt::LeftButton, {}, Middle(u"/memory/folder/deep/inside.txt")); });
  EXPECT_EQ(Shown(), "/memory/folder/deep") << "a double click goes to the folder of the file";
  Await([&] { fMap.ZoomOut(); });
  EXPECT_EQ(Shown(), "/memory/folder");
  Await([&] { fMap.ZoomBack(); });
  EXPECT_EQ(Shown(), "/memory/folder/deep");
  Await([&] { fMap.ZoomBack(); });
  EXPECT_EQ(Shown(), "/memory");

  // The wheel goes one level at a time, and needs a whole step.
  const auto wheel = [&](int pDelta, QPoint pAt) {
    QWheelEvent event(pAt, fMap.View().mapToGlobal(QPointF(pAt)), {}, {0, pDelta}, {}, {}, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&fMap.View(), &event);
  };
  const QPoint inside = Middle(u"/memory/folder/deep/inside.txt");
  wheel(60, inside);
  EXPECT_EQ(Shown(), "/memory");
  Await([&] { wheel(60, inside); });
  EXPECT_EQ(Shown(), "/memory/folder");
  Await([&] { wheel(-120, {5, 5}); });
  EXPECT_EQ(Shown(), "/memory");
  wheel(-120, {5, 5});
  EXPECT_EQ(Shown(), "/memory") << "there is nothing above the root";

  // Zoomed in, a folder outside brings the whole root back.
  Await([&] { fMap.ZoomTo(Folder(u"folder/deep")); });
  Await([&] { fMap.ShowPlace(Place(u"folder")); });
  EXPECT_EQ(Shown(), "/memory");
}

TEST_F(TPanes, KeysGoFromTileToTile) {
  ShowMap();
  QTest::mouseClick(&fMap.View(), Qt::LeftButton, {}, Middle(u"/memory/folder/large.iso"));
  const std::pair<Qt::Key, const char*> steps[] = {{Qt::Key_Right, "/memory/folder/deep"},
                                                   {Qt::Key_Right, "/memory/folder/deep"},
                                                   {Qt::Key_Down, "/memory/folder/deep/inside.txt"},
                                                   {Qt::Key_Down, "/memory/folder/deep/inside.txt"},
                                                   {Qt::Key_Up, "/memory/folder/deep"},
                                                   {Qt::Key_Up, "/memory/folder"},
                                                   {Qt::Key_Right, "/memory/<b>&.txt"},
                                                   {Qt::Key_Left, "/memory/folder"}};
  for (const auto& [key, path] : steps) {
    QTest::keyClick(&fMap.View(), key);
    EXPECT_EQ(Marked().toStdString(), path);
  }
  Await([&] { QTest::keyClick(&fMap.View(), Qt::Key_Return); });
  EXPECT_EQ(Shown(), "/memory/folder");
  Await([&] { QTest::keyClick(&fMap.View(), Qt::Key_Backspace); });
  EXPECT_EQ(Shown(), "/memory");
}

// Every position belongs to the tile that is drawn there; the legend below belongs to none.
TEST_F(TPanes, PositionsAndAreasAgree) {
  TRandomTree(7).Fill(fMemory.Top(), 4);
  fMemory.Scan();
  ShowMap();
  const TTreemapView& view = fMap.View();
  EXPECT_EQ(view.GetImage().size(), view.size() * view.devicePixelRatio());
  int tiles = 0;
  for (int y = 0; y < view.height(); ++y)
    for (int x = 0; x < view.width(); ++x) {
      const uint32_t tile = view.TileAt(QPointF(x + 0.5, y + 0.5));
      if (tile == Treemap::kNoTile) {
        ASSERT_GE(y, view.GetPicture()->fHeight) << x << "," << y;
        continue;
      }
      ++tiles;
      ASSERT_TRUE(view.AreaOf(tile).contains(QPointF(x + 0.5, y + 0.5))) << x << "," << y;
    }
  EXPECT_EQ(tiles, view.width() * view.GetPicture()->fHeight);
  EXPECT_GT(view.height(), view.GetPicture()->fHeight) << "there is a legend";
}

TEST_F(TPanes, FollowsARootThatChanges) {
  ShowMap();
  Await([&] { fMap.ZoomTo(Folder(u"folder/deep")); });
  fMemory.Root().RemoveFolder(*Folder(u"folder"));
  Await([&] { fMap.Refresh(); });
  EXPECT_EQ(Shown(), "/memory") << "the folder that was shown has gone";
  EXPECT_EQ(fMap.View().GetPicture()->fTiles.front().fValue, 150'000);
  // Many requests in a row lead to one picture of the last state.
  fMemory.Top().AddFile(u"new.bin", 50'000);
  fMemory.Scan();
  Await([&] {
    for (int i = 0; i < 50; ++i) fMap.Refresh();
  });
  if (fMap.View().GetPicture()->fTiles.front().fValue == 150'000) Await([] {});
  fMap.ShowPlace({});
  EXPECT_TRUE(fMap.View().GetImage().isNull());
  EXPECT_EQ(fMap.GetShownFolder(), nullptr);
  fMap.Refresh();
  fMap.ZoomOut();
  fMap.ZoomBack();
}

TEST_F(TPanes, PicturesAreSavedAndCopied) {
  ShowMap();
  const TTemporaryFolder folder;
  fMap.SaveToFile(folder.File("map.png"));
  fMap.SaveToFile(folder.File("map.svg"));
  const std::string bitmap = folder.Get("map.png");
  const QImage saved = QImage::fromData(reinterpret_cast<const uchar*>(bitmap.data()), static_cast<int>(bitmap.size()));
  ASSERT_EQ(saved.size(), fMap.View().GetImage().size());
  // The edges of letters drawn on another thread differ by some steps of a colour: each thread smooths its own.
  constexpr int kSteps = 16;
  for (int y = 0; y < saved.height(); ++y)
    for (int x = 0; x < saved.width(); ++x)
      for (const int shift : {0, 8, 16})
        ASSERT_NEAR(static_cast<int>(saved.pixel(x, y) >> shift & 0xFF),
                    static_cast<int>(fMap.View().GetImage().pixel(x, y) >> shift & 0xFF), kSteps)
            << x << "," << y << ": as it is shown";
  const std::string drawing = folder.Get("map.svg");
  EXPECT_NE(drawing.find("&lt;b&gt;&amp;.txt"), std::string::npos);
  EXPECT_NE(drawing.find("<title>/memory</title>"), std::string::npos);
  fMap.Copy();
  EXPECT_EQ(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), fMap.View().GetImage());
  EXPECT_THROW(fMap.SaveToFile(folder.File("missing/map.png")), EException);
}

// In a narrow pane the controls take several rows, and none is cut off or lies on another.
TEST_F(TPanes, ControlsFitANarrowPane) {
  for (QWidget* pane : std::initializer_list<QWidget*>{&fMap, &fChart}) {
    EXPECT_LT(pane->minimumSizeHint().width(), 300);
    pane->resize(320, 400);
    pane->show();
    QTest::qWait(0);
    QRect taken;
    for (QWidget* control : pane->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      if (!qobject_cast<QToolButton*>(control) && !qobject_cast<QComboBox*>(control)) continue;
      EXPECT_TRUE(pane->rect().contains(control->geometry())) << control->toolTip().toStdString();
      EXPECT_FALSE(taken.isValid() && taken.intersects(control->geometry())) << control->toolTip().toStdString();
      taken = control->geometry();
    }
  }
}

TEST_F(TPanes, HintsAreNeverReadAsMarks) {
  ShowMap();
  const QPoint at = Middle(u"/memory/<b>&.txt");
  QHelpEvent event(QEvent::ToolTip, at, fMap.View().mapToGlobal(at));
  QCoreApplication::sendEvent(&fMap.View(), &event);
  EXPECT_TRUE(QToolTip::text().contains("&lt;b&gt;&amp;.txt")) << QToolTip::text().toStdString();
  QToolTip::hideText();
}

TEST_F(TPanes, ChartsShowTheChosenFolder) {
  fChart.show();
  const auto await = [&](const auto& pCall) {
    QSignalSpy shown(&fChart, &TChartPane::ChartShown);
    pCall();
    ASSERT_TRUE(shown.wait(kPatience));
  };
  await([&] { fChart.ShowPlace(Place(u"folder")); });
  const auto keys = [&] {
    std::vector<std::pair<QString, qint64>> found;
    for (const Drawing::TSubject& subject : fChart.View().GetDrawing().fSubjects)
      found.emplace_back(ToQString(subject.fKey), subject.fValue);
    return found;
  };
  EXPECT_EQ(fChart.View().GetDrawing().fTitle, u"Folders of /memory/folder");
  const auto found = keys();
  EXPECT_NE(std::find(found.begin(), found.end(), std::pair<QString, qint64>("/memory/folder/deep", 200'000)),
            found.end());

  // A click on a part of the chart leads to the place in the tree.
  QSignalSpy chosen(&fChart, &TPane::PathChosen);
  TChartView& view = fChart.View();
  QPoint at;
  for (int y = 0; y < view.height() && at.isNull(); y += 3)
    for (int x = 0; x < view.width() && at.isNull(); x += 3)
      if (const Drawing::TSubject* subject = view.SubjectAt(QPointF(x, y)); subject && subject->fValue == 200'000)
        at = {x, y};
  ASSERT_FALSE(at.isNull());
  QTest::mouseClick(&view, Qt::LeftButton, {}, at);
  ASSERT_EQ(chosen.size(), 1);
  EXPECT_EQ(chosen[0][0].toString(), "/memory/folder/deep");

  for (int source = 1; source <= static_cast<int>(TChartPane::TSource::csHistory); ++source) {
    await([&] { fChart.SetSource(static_cast<TChartPane::TSource>(source)); });
    const bool isHistory = source == static_cast<int>(TChartPane::TSource::csHistory);
    EXPECT_EQ(fChart.View().HasDrawing(), !isHistory) << source << ": the history is empty";
  }
  await([&] { fChart.SetSource(TChartPane::TSource::csExtensions); });
  EXPECT_EQ(keys(), (std::vector<std::pair<QString, qint64>>{{".iso", 600'000}, {".txt", 200'000}}));
  const TTemporaryFolder folder;
  fChart.SaveToFile(folder.File("chart.png"));
  EXPECT_EQ(folder.Get("chart.png").substr(1, 3), "PNG");
  fChart.ShowPlace({});
  EXPECT_FALSE(fChart.View().HasDrawing());
}

}  // namespace
}  // namespace Vantrel::Window

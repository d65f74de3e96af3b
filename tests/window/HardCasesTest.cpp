// The window under strain: everything at once, targets that hang, damaged files, strange names.

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <fstream>
#include <random>

#include "automation/actions/FileExportAction.h"
#include "export/xml/OptionsFile.h"
#include "tests/support/MemoryServices.h"
#include "tests/window/UseCases.h"
#include "window/main/WindowSettings.h"
#include "window/models/Background.h"
#include "window/models/ContentsModel.h"
#include "window/panes/ContentsPane.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/SearchPane.h"

namespace Vantrel::Window {
namespace {

using namespace Testing;
using THardCases = TUseCases;

// A target that hangs: the window goes on, Stop works, and closing does not wait for ever.
TEST_F(THardCases, LivesWithATargetThatHangs) {
  TGate gate;
  const auto services = MakeRef<TMemoryServices>();
  services->fStorages[u"/memory"] = TMemoryStorage::Create();
  TMemoryEntry& folder = services->fStorages[u"/memory"]->Top().AddFolder(u"hangs");
  folder.AddFile(u"f", 1);
  folder.fGate = &gate;
  services->fStorages[u"/memory"]->Top().AddFile(u"seen", 7);
  fStart.fCreateRoots = [services](std::shared_ptr<const TGlobalOptions> pOptions) {
    return CreateScanRoots(services, std::move(pOptions));
  };
  Window().Session().Scan(u"/memory");
  gate.WaitUntilReached();
  ASSERT_TRUE(WaitFor([&] { return Action("stop").isEnabled() && Names(Root()).contains("hangs"); }));
  Window().Panes().setCurrentIndex(4);
  Action("figure1").trigger();
  for (const char* text : {"Resume", "Pause"}) {  // what the entry does next
    Action("pause").trigger();
    EXPECT_EQ(Action("pause").iconText(), text);
  }
  Action("stop").trigger();
  gate.Open();
  ASSERT_TRUE(WaitFor([&] { return (Tree().RootAt(Root())->GetState() & rsCancelled) != 0; }));
  EXPECT_TRUE(Names(Root()).contains("[Files]") || Names(Root()).contains("seen")) << "what was scanned is gone";
}

TEST_F(THardCases, ClosesWhileEverythingRuns) {
  ASSERT_TRUE(ScanData());
  for (int pane = 0; pane < Window().Panes().count(); ++pane) {
    Window().Panes().setCurrentIndex(pane);
    Action("again").trigger();
    Window().Session().Scan(DataPath() + u"/films");
    Window().Session().OpenScanFile(fOut.File("missing.xml"));
    Window().ExportAs(0, QString::fromStdU16String(fOut.File("x.xml")));
    Window().ExportAs(5, QString::fromStdU16String(fOut.File("x.png")));
    Window().Search().SetQuery(u"content:x");
    Window().Search().Start();
    Window().Duplicates().Start();
    QTest::qWait(pane * 3);
    Close();
  }
  Window();
}

// Work that waits for a thread outlives the window, and must look at nothing that went with it. A fault here is a crash
// only if freed memory is filled: MALLOC_PERTURB_=165 GLIBC_TUNABLES=glibc.malloc.tcache_count=0, as the test run sets.
TEST_F(THardCases, ClosesWhileEveryPaneWaitsForAThread) {
  ASSERT_TRUE(ScanData());
  TGate gate;
  for (int i = 0; i < ShortWork().maxThreadCount(); ++i) ShortWork().start([&gate] { gate.WaitUntilOpen(); });
  for (int pane = 0; pane < Window().Panes().count(); ++pane) Window().Panes().setCurrentIndex(pane);
  Close();
  gate.Open();
  EXPECT_TRUE(ShortWork().waitForDone(kLongestWait));
}

// What the command line asks for is written with the window open, which then closes; a message keeps it open.
TEST_F(THardCases, ClosesAfterTheExportsOfTheCommandLine) {
  for (const bool fails : {false, true}) {
    const std::u16string file = fails ? fOut.File("x.csv/below.csv") : fOut.File("x.csv");
    fStart.fPaths = {DataPath()};
    fStart.fOptions->CloseAfterExport = true;
    fStart.fOptions->Media(Exporting::TMediaType::mtCSV).fIncludeExpandedOnly = true;
    fStart.fQueueActions = [this, file](PostScanActions::TPostProcessActionHandler& pActions, IScanRoots&) {
      pActions.Add(std::make_unique<PostScanActions::TFileExportPostScanAction>(
          pActions, *fStart.fOptions, CommandLine::TExportFormat::efCSV, file,
          PostScanActions::TExportRun{"Vantrel", "0", false, false, [] { return false; }}));
      return pActions.ResolveRequirements();
    };
    if (fails) {
      ASSERT_TRUE(WaitFor([&] { return Complaint() != "no message"; }));
      QTest::qWait(50);
      EXPECT_TRUE(Window().isVisible()) << "the window closed over its message";
    } else {
      Window();
      EXPECT_TRUE(WaitFor([&] { return !Window().isVisible(); })) << "the window stays open";
      EXPECT_NE(Read("x.csv").find("films"), std::string::npos);
      EXPECT_EQ(Read("x.csv").find("old,"), std::string::npos) << "it is not expanded in the tree";
    }
    Close();
  }
}

// Scans, refreshes and a comparison go on while the user sorts, opens, closes and chooses.
TEST_F(THardCases, LivesThroughEverythingAtOnce) {
  for (int i = 0; i < 60; ++i) {
    const std::string folder = "many/d" + std::to_string(i);
    std::filesystem::create_directories(fData.Path() / folder);
    fData.Put(folder + "/f", std::string(i, 'x'));
  }
  ASSERT_TRUE(ScanData());
  Window().ExportAs(0, QString::fromStdU16String(fOut.File("old.xml")));
  ASSERT_TRUE(Written("old.xml"));
  TWindowSettings(QString::fromStdU16String(fSettings.Path().u16string()), false)
      .Set(QStringLiteral("showChanges"), QStringLiteral("both"));  // no question
  std::mt19937 random(11);
  for (int step = 0; step < 150; ++step) {
    const TRef<IHierarchicalRoot> root = Tree().rowCount() > 0 ? Tree().RootAt(Root()) : nullptr;
    switch (random() % 8) {
      case 0:
        Window().Session().Scan(DataPath());
        break;
      case 1:
        Action("refresh").trigger();
        break;
      case 2:
        if (root) Window().Session().Compare(root, fOut.File("old.xml"));
        break;
      case 3:
        Window().TreeView().sortByColumn(static_cast<int>(random() % 6), Qt::AscendingOrder);
        break;
      case 4:
        Window().TreeView().expandAll();
        break;
      case 5:
        if (random() % 6 == 0 && root) Window().Session().Close(root);
        break;
      case 6:
        Window().GoTo(QString::fromStdU16String(DataPath()) + QStringLiteral("/many/d7"));
        break;
      default:
        Window().Panes().setCurrentIndex(static_cast<int>(random() % Window().Panes().count()));
    }
    QTest::qWait(static_cast<int>(random() % 12));
    for (auto* box : Window().findChildren<QMessageBox*>()) box->close();
  }
  Window().Session().Scan(DataPath());
  ASSERT_TRUE(Settle());
  EXPECT_EQ(Root().siblingAtColumn(EntryColumnOf(TColumn::mdFiles)).data().toString(), "65");
}

TEST_F(THardCases, ShowsStrangeNamesHarmlessly) {
  std::filesystem::create_directories(fData.Path() / "odd");
  std::ofstream(fData.Path() / "odd/line\nbreak") << "1";
  std::ofstream(fData.Path() / "odd/\x1b[31mred") << "22";
  std::ofstream(fData.Path() / "odd/\xe2\x80\xaegpj.exe") << "333";
  if (!std::filesystem::exists(fData.Path() / "odd/line\nbreak")) GTEST_SKIP() << "the system knows no such names";
  ASSERT_TRUE(ScanData());
  ASSERT_TRUE(GoTo("/odd"));
  QAbstractItemModel& contents = Window().Contents().Model();
  ASSERT_TRUE(WaitFor([&] { return contents.rowCount() == 3; }));
  for (int row = 0; row < 3; ++row) {
    const QString name = contents.index(row, 0).data().toString();
    EXPECT_TRUE(name.contains(u'\\')) << name.toStdString();
    for (const QChar c : name) EXPECT_TRUE(c.isPrint() && c.unicode() != 0x202E) << name.toStdString();
  }
  Window().Contents().View().setCurrentIndex(contents.index(2, 0));
  Action("copyPath").trigger();
  EXPECT_TRUE(QApplication::clipboard()->text().endsWith("/odd/line\nbreak")) << "the copied path is not the real one";
}

// Two windows change different options in one file.
TEST_F(THardCases, KeepsWhatAnotherWindowChanged) {
  TWindowHarness other;
  other.fStart.fUserOptionsFile = fStart.fUserOptionsFile;
  TGlobalOptions mine = Window().Session().Options();
  TGlobalOptions its = other.Window().Session().Options();
  mine.MaximumThreads = 3;
  its.ChartItems = 5;
  Window().Session().SetOptions(mine);
  other.Window().Session().SetOptions(its);
  TGlobalOptions kept;
  Options::LoadOptionsFile(fStart.fUserOptionsFile, kept);
  EXPECT_EQ(kept.MaximumThreads, 3) << "the second window undid what the first one changed";
  EXPECT_EQ(kept.ChartItems, 5);
  other.Close();
}

TEST_F(THardCases, TellsOfADamagedScanFile) {
  ASSERT_TRUE(ScanData());
  Window().ExportAs(0, QString::fromStdU16String(fOut.File("good.xml")));
  ASSERT_TRUE(Written("good.xml"));
  const std::string good = Read("good.xml");
  const std::string damaged[] = {"", "no file of ours", good.substr(0, good.size() / 2)};
  for (const std::string& text : damaged) {
    fOut.Put("bad.xml", text);
    Window().Session().OpenScanFile(fOut.File("bad.xml"));
    ASSERT_TRUE(WaitFor([&] { return Complaint() != "no message"; })) << text.size();
    EXPECT_NE(Complaint().find("bad.xml"), std::string::npos) << Complaint();
    delete Window().findChild<QMessageBox*>("failure");
    EXPECT_EQ(Tree().rowCount(), 1) << "a damaged scan is shown";
  }
}

}  // namespace
}  // namespace Vantrel::Window
